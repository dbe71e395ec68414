#!/usr/bin/env python3
"""apply, export and check of veltrane-dsn: descriptions of many DSNs."""
import json
import unittest

from cli_harness import CliTest


def described(*entries):
    return json.dumps({"data_sources": entries})


def entry(name, **values):
    return {"name": name, "values": {"Server": "s", "Database": "d", **values}}


class Fleet(CliTest):
    def apply(self, text, *arguments, code=0, **more):
        result = self.check("apply", "-", "--json", *arguments, text=text, code=code, **more)
        return json.loads(result.stdout)

    def results(self, report):
        return {each["name"]: each["result"] for each in report["data_sources"]}

    def test_apply_is_idempotent_and_says_what_it_did(self):
        text = described(entry("a"), entry("b", Trace="1", UID="me"))
        report = self.apply(text)
        self.assertTrue(report["changed"])
        self.assertEqual(self.results(report), {"a": "added", "b": "added"})
        before = self.user_ini.read_bytes()
        report = self.apply(text)
        self.assertFalse(report["changed"])
        self.assertEqual(self.results(report), {"a": "unchanged", "b": "unchanged"})
        self.assertEqual(self.user_ini.read_bytes(), before)
        text = described({"name": "a", "state": "absent"}, entry("b", UID=None, Server="t"),
                         {"name": "never", "state": "absent"})
        self.assertTrue(self.apply(text, "--dry-run")["changed"])
        self.assertEqual(self.user_ini.read_bytes(), before)
        self.assertEqual(self.results(self.apply(text)),
                         {"a": "removed", "b": "changed", "never": "unchanged"})
        self.assertIsNone(self.section("a"))
        self.assertEqual(self.section("b"), {"Driver": "Veltrane", "Server": "t",
                                             "Database": "d", "Trace": "1"})
        self.apply(described(entry("b")), "--replace")
        self.assertNotIn("Trace", self.section("b"))

    def test_ini(self):
        self.check("apply", "-", text="; fleet\n[a]\nDriver=Veltrane\nServer=s\nDatabase=d\nX=1\n",
                   out="a: added\n")
        self.assertEqual(self.section("a")["X"], "1")
        self.check("apply", "-", text="stray\n[a]\n", code=2, err="before the first section")

    def test_a_dsn_that_fails_does_not_stop_the_others(self):
        report = self.apply(
            described(entry("a"), entry("bad[name"), entry("c", Server=""),
                      {**entry("d"), "driver": "Nobody"}, entry("e", Note="x" * 1000), entry("f")),
            code=1, err="4 of 6 DSNs failed")
        self.assertEqual(self.results(report), {
            "a": "added", "bad[name": "failed", "c": "failed", "d": "failed", "e": "failed",
            "f": "added"})
        for name in ("c", "d", "e"):
            self.assertIsNone(self.section(name))
        self.assertEqual(report["counts"]["failed"], 4)

    def test_a_wrong_description_is_found_before_anything_is_done(self):
        good = json.dumps(entry("a"))
        for text, message in (
                ('{"data_sources": [%s, {"name": "b", "values": {"PWD": "geheim}}]}' % good,
                 "not JSON"),
                ('[%s, {"name": "b", "values": {"Port": 5}}]' % good, "entry 2"),
                ('[%s, {"name": "b", "value": {}}]' % good, "unknown member"),
                ('[%s, {"name": "A"}]' % good, "twice"),
                ('[%s, {"name": "b", "state": "gone"}]' % good, "state"),
                ('{"a": 1}', "array")):
            result = self.check("apply", "-", text=text, code=2, err=message)
            self.assertNotIn("geheim", result.stderr)
        self.assertFalse(self.user_ini.exists())
        self.check("apply", str(self.folder / "no"), code=1, err="No such file")

    def test_an_export_applies_and_keeps_passwords(self):
        self.add("a", "-p", "Note=n")
        self.check("set", "a", "--pwd-stdin", text="geheim")
        self.user_ini.write_text(self.user_ini.read_text() + "[other]\nDriver=Other\n")
        exported = self.check("export").stdout
        self.assertNotIn("geheim", exported)
        self.assertNotIn("other", exported)
        self.assertFalse(self.apply(exported)["changed"])
        self.assertEqual(self.section("a")["PWD"], "geheim")
        self.assertNotIn("geheim", self.check("apply", "-", "--json", text=described(
            entry("a", PWD="geheim2"))).stdout)
        whole = self.check("export", "--show-secrets", out="geheim2").stdout
        self.check("remove", "a")
        self.apply(whole)
        self.assertEqual(self.section("a")["PWD"], "geheim2")

    def test_a_thousand_data_sources(self):
        text = described(*(entry(f"dsn{i}", Extra="1") for i in range(1000)))
        self.assertEqual(self.apply(text)["counts"]["added"], 1000)
        self.assertEqual(self.user_ini.read_text().count("Extra=1\n"), 1000)
        self.assertEqual(self.apply(text)["counts"]["unchanged"], 1000)


class Check(CliTest):
    def test_faults_come_with_their_repair(self):
        self.add("good")
        self.check("check", out="")
        self.user_ini.write_text(
            self.user_ini.read_text() + "[bad]\nDriver=Veltrane\nServer=\nUID=" + "u" * 300 +
            "\nNote=a ;b\n[lost]\nDriver=Nobody\nServer=s\nDatabase=d\n")
        result = self.check("check", code=1, out="It has no Server. Set it: veltrane-dsn set bad")
        for text in ("It has no Database", "The value of UID is longer", "The value of Note"):
            self.assertIn(text, result.stdout)
        self.assertNotIn("good:", result.stdout)
        self.check("check", "lost", code=1, out='The driver "Nobody" is not registered')
        self.check("check", "absent", code=3)
        report = json.loads(self.check("check", "bad", "--json", code=1).stdout)
        self.assertEqual(len(report["data_sources"][0]["faults"]), 4)


if __name__ == "__main__":
    unittest.main()
