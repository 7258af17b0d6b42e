#!/usr/bin/env python3
"""Turns a table of message texts into a resource script that holds them as a string table.

usage: message_table.py LANGUAGE TABLE OUTPUT

LANGUAGE is the Windows language identifier (decimal) of the texts, TABLE a UTF-8 file with a message a line: its
number, blanks or tabs, its text. Blank lines and lines that begin with ';' or '#' are skipped. In a text, \\n stands
for a line break and \\\\ for a backslash. Every line that is wrong is reported with its number; then nothing is written
and the exit status is 1.
"""

import re
import sys

# What the installation's message box and logs take: texts are read as ANSI into buffers of 516 characters.
LONGEST_TEXT = 515

# The ANSI code page in which the texts of a language reach the library. Language 0 is for any system: its texts are
# ASCII, which all code pages hold.
CODE_PAGES = {
    0: "cp367",
    1028: "cp950", 1031: "cp1252", 1033: "cp1252", 1034: "cp1252", 1036: "cp1252", 1038: "cp1250",
    1040: "cp1252", 1041: "cp932", 1042: "cp949", 1046: "cp1252", 1049: "cp1251", 2052: "cp936",
}  # fmt: skip

MESSAGE = re.compile(r"([0-9]{1,5})[ \t]+(.*)")
ESCAPES = {"n": "\n", "\\": "\\"}


class BadLine(Exception):
    """A line of the table that cannot be used; its text says why."""


def unescape(text):
    def replace(match):
        if match[1] not in ESCAPES:
            raise BadLine(f"'{match[0]}' is no escape (\\n and \\\\ are)")
        return ESCAPES[match[1]]

    return re.sub(r"\\(.?)", replace, text)


def read_message(line, code_page):
    """The number and the text of one line."""
    match = MESSAGE.fullmatch(line)
    if not match:
        raise BadLine("neither a message (number, blank, text) nor a comment")
    number, text = int(match[1]), unescape(match[2].strip(" \t"))
    if not 1 <= number <= 65535:
        raise BadLine(f"message number {number} is not between 1 and 65535")
    if not text:
        raise BadLine(f"message {number} has no text")
    control = next((c for c in text if ord(c) < 32 and c != "\n"), None)
    if control:
        raise BadLine(f"message {number} holds the control character {ord(control)}")
    try:
        length = len(text.encode(code_page))
    except UnicodeEncodeError as error:
        raise BadLine(f"message {number}: '{text[error.start]}' does not exist in code page {code_page[2:]}") from None
    if length > LONGEST_TEXT:
        raise BadLine(f"message {number} takes {length} bytes; the most is {LONGEST_TEXT}")
    return number, text


def read_table(path, code_page):
    """All messages by number, and a report for each line that is wrong."""
    messages, wrong = {}, []
    with open(path, encoding="utf-8-sig", errors="surrogateescape", newline=None) as table:
        for at, line in enumerate(table, start=1):
            line = line.rstrip("\n")
            if not line.strip() or line[0] in ";#":
                continue
            try:
                if any("\udc80" <= c <= "\udcff" for c in line):
                    raise BadLine("not UTF-8")
                number, text = read_message(line, code_page)
                if number in messages:
                    raise BadLine(f"message {number} is there already")
                messages[number] = text
            except BadLine as error:
                wrong.append(f"{path}:{at}: {error}")
    if not messages and not wrong:
        wrong.append(f"{path}: no messages")
    return messages, wrong


def quoted(text):
    """The text as a wide literal; everything beyond ASCII as escapes, so that no tool has to guess an encoding."""
    units = text.encode("utf-16-le")
    literal = ""
    for unit in (int.from_bytes(units[i : i + 2], "little") for i in range(0, len(units), 2)):
        character = chr(unit)
        if character in '"\\':
            literal += "\\\\" if character == "\\" else '""'
        elif character == "\n":
            literal += "\\n"
        else:
            literal += character if 32 <= unit < 127 else f"\\x{unit:04x}"
    return f'L"{literal}"'


def main(arguments):
    if len(arguments) != 3 or not arguments[0].isdecimal() or int(arguments[0]) not in CODE_PAGES:
        print(__doc__, "\nLanguages:", *sorted(CODE_PAGES), file=sys.stderr)
        return 2
    language, table, output = int(arguments[0]), arguments[1], arguments[2]
    messages, wrong = read_table(table, CODE_PAGES[language])
    if wrong:
        print(*wrong, sep="\n", file=sys.stderr)
        return 1
    lines = [f"LANGUAGE {language & 0x3FF}, {language >> 10}", "STRINGTABLE", "BEGIN"]
    lines += [f"    {number} {quoted(text)}" for number, text in sorted(messages.items())]
    with open(output, "w", encoding="ascii") as script:
        print(*lines, "END", sep="\n", file=script)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
