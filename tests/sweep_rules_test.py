#!/usr/bin/env python3
"""Checks that the fault sweep needs every rule that excuses something.

usage: sweep_rules_test.py RULES USED...  (what each part of the sweep has needed)
"""

import re
import sys
from pathlib import Path

rules, *parts = map(Path, sys.argv[1:])
used = {row for part in parts for row in part.read_text().splitlines()}
excuses = re.split(r"^\[calls\]$", rules.read_text(), flags=re.MULTILINE)[0].splitlines()
rows = [row for row in excuses if row and row[0] not in "[#"]
unused = [row for row in rows if row not in used]
print(f"{len(rows) - len(unused)} of {len(rows)} rules are needed")
if unused:
    sys.exit("\n".join(["needed by no fault:", *unused]))
