#!/usr/bin/env python3
"""Copies a table, with the letters beyond ASCII in its RTF texts as RTF spells them. Who shows such a text reads bytes,
of whatever code page the system has.

usage: rtf_letters.py TABLE COPY
"""

import re
import sys


def spelled(text):
    """RTF has signed UTF-16 numbers, each with what to show where they mean nothing."""
    data = text.encode("utf-16-le")
    units = (int.from_bytes(data[i : i + 2], "little", signed=True) for i in range(0, len(data), 2))
    return "".join(rf"\u{unit}?" for unit in units)


def main(table, copy):
    with open(table, encoding="utf-8", newline="") as source:
        cells = re.split(r"([\t\n])", source.read())
    for i, cell in enumerate(cells):
        if cell.startswith(r"{\rtf"):
            cells[i] = re.sub(r"[^\0-\x7f]+", lambda letters: spelled(letters[0]), cell)
    with open(copy, "w", encoding="utf-8", newline="") as target:
        target.write("".join(cells))


if __name__ == "__main__":
    main(*sys.argv[1:])
