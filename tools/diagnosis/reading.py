"""Reads any log of an installation as a stream, and gives the few lines that its story is made of."""

import re
from pathlib import Path
from typing import NamedTuple

CHUNK = 1 << 20
LONGEST = 4 << 20  # a line that is longer is taken in parts

# What the library's lines begin with that the story needs. All others are passed over without being looked at: for that
# to be fast, each has a literal beginning.
TEXTS = (
    r"\*\*\*",
    "Returning with rc ",
    r"MSIRUNMODE_(?:SCHEDULED|COMMIT|ROLLBACK(?!E)|REBOOT)",
    "Deferred execution",
    "Executing ",
    r"zqviwicn\.dll Built on ",
    "QVCA ",
    "Messages from temporary log",
    "Wait timed out",
    r"Process (?:ID \d+ terminated|'.*' timed out)",
    "Found process ID",
    "Stacked file for deletion upon reboot",
    "Property '(?:ZQVBOOT' value set|ProductName' not defined in property)",
    r"SETPROPERTY\(",
    "No (?:stanza|parameter definition|keyword)",
    r"Error -?\d+ from MsiGetFeatureState",
    r"Msi\w+\(\d*\) error -?\d+\. Query",
    "Can't (?:open|allocate|find)",
    "Couldn't create",
    "Unable to launch",
)
# The installer's own lines that the story needs: those of every kind of log, and those of Windows' verbose ones.
ENGINE = (
    r"\nAction (?:ended [\d:]+ (?:INSTALL\.|[^\r\n]*Return value (?!1\.))|[\d:]+ Rollback)",
    r"\n=== ",
)
VERBOSE = (r"\]: (?:Executing op: CustomActionSchedule|MainEngineThread is returning)", r" error status: \d")
# A literal beginning is what makes the search fast; and so does a set of one character. So what is found is looked at
# again: it may be across two lines.
OF_LIBRARY = b" QVCA info "
TOLD = re.compile(OF_LIBRARY + rf"[^:]{{1,80}}: (?:{'|'.join(TEXTS)})".encode())
OF_ENGINE, OF_VERBOSE = (tuple(re.compile(pattern.encode()) for pattern in kind) for kind in (ENGINE, VERBOSE))
MERGED = (b">>", b"1: >>")
ACTION_START = re.compile(rb"\nAction start [\d:]+ ([^\r\n]*?)\.?\r?\n")
ABOVE = 2000  # bytes in which the installer says what it is about to run
LINE = re.compile(rb"(?:1: |MSI \([^\r\n]{1,60}?\]: )?(>>)?(\d\d:\d\d:\d\d) QVCA info ([^:\r\n]{1,80}): ([^\r\n]*)")


class Told(NamedTuple):
    """A line. One of the installer's own has no stamp, no action, and all of it as its text."""

    file: str
    number: int  # counted from 1; 0 as long as nobody has asked the log for it
    merged: bool  # folded in from the temporary log
    stamp: str
    action: str
    text: str

    @property
    def place(self):
        return f"{self.file}:{self.number}"


def text_of(data):
    try:
        return data.decode("utf-8")
    except UnicodeDecodeError:
        return data.decode("cp1252", "replace")


def encoding_of(begin):
    """UTF-16 in one of its orders, or none for a text of 8 bits."""
    if begin.startswith(b"\xff\xfe") or begin[1::2].count(0) * 2 > len(begin) // 2:
        return "utf-16-le"
    if begin.startswith(b"\xfe\xff") or begin[::2].count(0) * 2 > len(begin) // 2:
        return "utf-16-be"
    return None


def chunks(path):
    """The bytes of the file, as UTF-8 if they are UTF-16. Raises OSError."""
    with open(path, "rb") as file:
        chunk = file.read(CHUNK)
        encoding = encoding_of(chunk[:1024])
        carry = b""
        while chunk:
            if encoding:
                chunk = carry + chunk
                whole = len(chunk) & ~1
                carry = chunk[whole:]
                chunk = chunk[:whole].decode(encoding, "replace").lstrip("\ufeff").encode("utf-8", "replace")
            yield chunk
            chunk = file.read(CHUNK)


def blocks(path):
    """Parts of the file that begin and end with whole lines; each has a line end in front."""
    rest = b""
    for chunk in chunks(path):
        chunk = rest + chunk
        end = chunk.rfind(b"\n") + 1
        if not end and len(chunk) > LONGEST:
            end = len(chunk)
        rest = chunk[end:]
        if end:
            yield b"\n" + chunk[:end]
    yield b"\n" + rest + b"\n"


def labels(paths):
    """What the files are called: by their names alone where these differ."""
    names = [Path(path).name for path in paths]
    return [name if names.count(name) == 1 else str(path) for name, path in zip(names, paths)]


class Log:
    """A log's told lines, in their order. `is_log` tells, at the end, whether there was a line of the library or of the
    installer at all. The lines have no numbers until `numbered` gives the present one its own. Whoever knows the merged
    lines that follow sets `passes_merged`: they are left out, up to the next line that is not merged."""

    def __init__(self, path, label=""):
        self.path = Path(path)
        self.file = label or self.path.name
        self.is_log = self.passes_merged = False
        self.block = self.before = b""
        self.at = self.above = 0  # the lines above `before`
        self.counted = self.lines = 0  # the lines that begin in the block before `counted`, and all above it

    def numbered(self, line):
        """The present line with its number."""
        self.lines += self.block.count(b"\n", self.counted, self.at)
        self.counted = self.at
        return Told(line.file, self.lines, *line[2:])

    def __iter__(self):
        for block in blocks(self.path):
            self.block, self.counted = block, 0
            above = self.lines
            places = [match.start() for match in TOLD.finditer(block)]
            for pattern in OF_ENGINE + (OF_VERBOSE if b"\nMSI (" in block else ()):
                places += [match.start() + 1 for match in pattern.finditer(block)]
            places.sort()
            for place in places:
                start = block.rfind(b"\n", 0, place) + 1
                if self.passes_merged and block.startswith(MERGED, start):
                    continue
                self.at = start
                line = block[start : block.find(b"\n", place)]
                match = LINE.match(line)
                self.passes_merged = False
                if match:
                    merged, stamp, action, text = match.groups()
                    merged = merged is not None
                    yield Told(self.file, 0, merged, stamp.decode(), text_of(action), text_of(text).rstrip())
                elif OF_LIBRARY not in line:
                    self.is_log = True
                    yield Told(self.file, 0, False, "", "", text_of(line).rstrip())
            self.is_log = self.is_log or OF_LIBRARY in block or b"\nAction start " in block
            # The line end in front is none of the file's.
            self.lines += block.count(b"\n", self.counted) - 1
            if len(block) > ABOVE or OF_LIBRARY in block:
                self.before, self.above = block, above
            self.block, self.at = b"", 0

    def row_above(self):
        """The name under which the installer has just begun to run what the present line is the first of; empty when it
        does not say so."""
        begin = self.at - ABOVE
        above = self.block[max(begin, 0) : self.at]
        if begin < 0:
            above = self.before[begin:] + above[1:]
        place = above.rfind(b"\nAction ")
        match = ACTION_START.match(above, place) if place >= 0 else None
        return text_of(match[1]) if match and above.find(OF_LIBRARY, place) < 0 else ""

    def last_line(self):
        """The last line of the library, merged ones left out, before the present one; none without one nearby."""
        lines = self.lines - self.block.count(b"\n", 0, self.counted)
        for part, end, above in ((self.block, self.at, lines), (self.before, len(self.before), self.above)):
            for _ in range(1000):
                end = part.rfind(OF_LIBRARY, 0, end)
                if end < 0:
                    break
                start = part.rfind(b"\n", 0, end) + 1
                match = LINE.match(part, start)
                if match and not match[1]:
                    number = above + part.count(b"\n", 0, start)
                    _, stamp, action, text = match.groups()
                    return Told(self.file, number, False, stamp.decode(), text_of(action), text_of(text).rstrip())
        return None


def lines(path, label=""):
    """All lines of a log, as Told; those that are not the library's have no stamp, and all of them is their text."""
    file, number = label or Path(path).name, 0
    for block in blocks(path):
        for line in block[1:].splitlines():
            number += 1
            match = LINE.match(line)
            if match:
                merged, stamp, action, text = match.groups()
                yield Told(file, number, merged is not None, stamp.decode(), text_of(action), text_of(text).rstrip())
            else:
                yield Told(file, number, False, "", "", text_of(line).rstrip())
