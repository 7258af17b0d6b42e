#!/usr/bin/env python3
"""Checks that includes run downward only: no two files include each other, not even through others. A header and the
source file of its name are one.

usage: includes_test.py SOURCE_FOLDER
"""

import re
import sys
from graphlib import CycleError, TopologicalSorter
from pathlib import Path

root = Path(sys.argv[1])
graph = {}
for path in [*root.rglob("*.h"), *root.rglob("*.cpp"), *root.rglob("*.inc")]:
    unit = str(path.relative_to(root).with_suffix(""))
    included = re.findall(r'^#include "(\S+)"', path.read_text(), re.MULTILINE)
    graph.setdefault(unit, set()).update(str(Path(name).with_suffix("")) for name in included)
for unit, included in graph.items():
    included.discard(unit)
try:
    print(len(list(TopologicalSorter(graph).static_order())), "files, no circle")
except CycleError as error:
    sys.exit("files that include each other: " + " -> ".join(error.args[1]))
