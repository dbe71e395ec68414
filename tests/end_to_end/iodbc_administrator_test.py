#!/usr/bin/env python3
"""Adds, configures and removes a data source in iODBC's administrator, a program with a window that
opens the desktop editor."""
import time

import editor_harness
from editor_harness import wait_for

ADMINISTRATOR = "iODBC Data Source Administrator"
DRIVERS = "Choose an ODBC Driver"
CONFIRMATION = "Confirm action/operation on sales"
# Places in windows of 600 by 450 pixels.
ADD, REMOVE, CONFIGURE = (543, 67), (543, 107), (543, 146)
FIRST_SOURCE, FIRST_DRIVER, FINISH = (35, 88), (205, 57), (450, 426)


class IodbcAdministratorTest(editor_harness.DisplayTest):
    def start(self):
        (self.directory / "odbcinst.ini").write_text(
            "[ODBC Drivers]\nVeltrane=Installed\n\n"
            f"[Veltrane]\nDriver={self.library}\nSetup={self.library}\n")
        # iODBC uses this name as it is, not in the folder of the system's files.
        self.start_program(["iodbcadm-gtk"], ODBCINSTINI=str(self.directory / "odbcinst.ini"))

    def answer_so_far(self):
        return self.ini.read_text() if self.ini.exists() else "(no odbc.ini)"

    def click_until(self, condition, title, *places):
        """A window that has just opened can lose a click, so all clicks are repeated."""
        next_time = 0

        def click():
            nonlocal next_time
            window = self.find_window(title)
            if window and time.monotonic() > next_time:
                for x, y in places:
                    self.xdotool("mousemove", "--window", window, str(x), str(y), "click", "1")
                    time.sleep(0.1)
                next_time = time.monotonic() + 2
            return condition()

        wait_for(click, lambda: f"an effect of {places} in {title!r}\n{self.answer_so_far()}")

    def test_add_configure_remove(self):
        self.start()
        self.click_until(lambda: self.find_window(DRIVERS), ADMINISTRATOR, ADD)
        self.click_until(lambda: self.find_window("New data source"), DRIVERS, FIRST_DRIVER, FINISH)
        self.focus("New data source")
        for text in ("sales", "db1", "retail"):
            self.type(text)
            self.keys("Tab")
        self.keys("Return")
        wait_for(lambda: self.stored("sales"), "the new data source")
        self.assertEqual(self.ini.read_text(),
                         "[ODBC Data Sources]\nsales=Veltrane\n\n"
                         "[sales]\nDriver=Veltrane\nServer=db1\nDatabase=retail\n\n")

        self.click_until(lambda: self.find_window("Data source sales"), ADMINISTRATOR,
                         FIRST_SOURCE, CONFIGURE)
        self.focus("Data source sales")
        self.keys("Tab")
        self.type("db2")
        self.keys("Return")
        wait_for(lambda: self.stored("sales")["Server"] == "db2", self.answer_so_far)

        self.click_until(lambda: self.find_window(CONFIRMATION), ADMINISTRATOR,
                         FIRST_SOURCE, REMOVE)
        self.focus(CONFIRMATION)
        self.keys("alt+y")
        wait_for(lambda: self.stored("sales") is None, self.answer_so_far)
        self.assertEqual(self.ini.read_text(), "[ODBC Data Sources]\n\n")


if __name__ == "__main__":
    editor_harness.main("iodbcadm-gtk", "Xvfb", "xdotool")
