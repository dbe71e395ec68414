"""The blocks of a Markdown page, and the meaning of their info strings.

    ```sh                         commands that a test runs; they have to succeed
    ```sh exit=4                  the last of them has to end with this code
    ```sh types="secret"          on a terminal, where this line is typed as an answer
    ```sh norun="why"             commands that no test can run here, with the reason
    ```sh run-by="test"           commands that the named test runs
    ```text output                what the commands above it print; a line "..." stands for any lines
    ```text output unordered      the same if output and errors can be in another order
    ```json output                the same as JSON, in any layout
    ```text message               a message of the product, with "..." for variable parts
    ```json file=dsns.json        a file that the reader writes before going on

Table columns with the head "Message" list such texts too, as code. Commands in a comment that
begins with "<!-- before" create the situation that the page then shows.
"""
import re
import shlex

LITERAL = re.compile(r'"((?:[^"\\\n]|\\.)*)"')
LITERALS = re.compile(LITERAL.pattern.replace("((?:", "(?:(?:") + r"(?:\s*" +
                      LITERAL.pattern.replace("((?:", "(?:(?:") + ")*")
FENCE = re.compile(r"^(\s*)(```+|~~~+)\s*(.*?)\s*$")


class Block:
    def __init__(self, path, line, info):
        words = shlex.split(info)
        self.place = f"{path}:{line}"
        self.language = words[0] if words else ""
        self.flags = {word for word in words[1:] if "=" not in word}
        self.options = dict(word.split("=", 1) for word in words[1:] if "=" in word)
        self.lines = []

    @property
    def text(self):
        return "".join(line + "\n" for line in self.lines)


def read_blocks(path, name):
    """The fenced blocks; messages use the name."""
    blocks, fence, hidden = [], None, False
    with open(path, encoding="utf-8") as file:
        for number, line in enumerate(file.read().splitlines(), 1):
            match = FENCE.match(line)
            if fence and match and match[2].startswith(fence[2]) and not match[3]:
                fence = None
            elif fence:
                blocks[-1].lines.append(line[len(fence[1]):] if line[:len(fence[1])].isspace()
                                        else line)
            elif match:
                fence = match
                blocks.append(Block(name, number, match[3]))
            elif line == "<!-- before":
                hidden = True
                blocks.append(Block(name, number, "sh"))
            elif hidden:
                hidden = line != "-->"
                blocks[-1].lines += [line] if hidden else []
    if fence:
        raise ValueError(f"{name}: the last block has no end")
    return blocks


def read_messages(path):
    """The texts in table columns with the head "Message", each with its line."""
    column, messages = None, []
    with open(path, encoding="utf-8") as file:
        for number, line in enumerate(file.read().splitlines(), 1):
            cells = [cell.strip() for cell in line.split("|")[1:-1]]
            if not line.startswith("|"):
                column = None
            elif "Message" in cells:
                column = cells.index("Message")
            elif column is not None:
                messages += [(number, text) for text in re.findall(r"`([^`]+)`", cells[column])]
    return messages


def read_literals(folders):
    """The string literals in the folders' C++ sources, neighbours joined as by the compiler."""
    literals = []
    for path in (path for folder in folders for path in sorted(folder.glob("**/*"))):
        if path.suffix in (".cpp", ".h", ".inc"):
            for match in LITERALS.findall(path.read_text("utf-8")):
                text = "".join(LITERAL.findall(match))
                literals.append(re.sub(r"\\(.)", r"\1", text))
    return literals


def matches(expected, actual):
    """True if the lines are the expected ones; "..." matches any number of lines.

    Blanks at the ends of lines are ignored: editors remove them."""
    pattern = "".join("(?:.*\n)*?" if line.strip() == "..." else re.escape(line) + "\n"
                      for line in expected)
    return re.fullmatch(pattern, "".join(line.rstrip() + "\n" for line in actual)) is not None
