#!/usr/bin/env python3
"""Checks that includes run downward only: from a folder to itself or to a lower one, and in a folder no two files include
each other, not even through others. A header and the source file of its name are one.

usage: includes_test.py SOURCE_FOLDER
"""

import re
import sys
from graphlib import CycleError, TopologicalSorter
from pathlib import Path

LAYERS = [  # the lowest first
    "platform",
    "base",
    "runtime",
    "services/tables",
    "services/files",
    "services/system",
    "services/removal",
    "features",
    "features/answers",
    "features/lists",
    "running",
    "previous",
    "previous/data",
    "init",
    "init/primary",
    "init/folders",
    "init/secondary",
    "runtime/actions",
    "completion",
    "completion/launching",
    "side",
    "licence",
    "zqviwicn",
]
MADE_BY_THE_BUILD = {"build_stamp.h"}

root = Path(sys.argv[1])
graph, upward, homeless = {}, [], []
for path in [*root.rglob("*.h"), *root.rglob("*.cpp"), *root.rglob("*.inc")]:
    name = path.relative_to(root)
    included = set(re.findall(r'^#include "(\S+)"', path.read_text(), re.MULTILINE)) - MADE_BY_THE_BUILD
    graph.setdefault(str(name.with_suffix("")), set()).update(str(Path(other).with_suffix("")) for other in included)
    folders = {str(Path(other).parent) for other in included} | {str(name.parent)}
    homeless += [f"{name}: {folder} is no layer" for folder in folders if folder not in LAYERS]
    if not homeless:
        own = LAYERS.index(str(name.parent))
        upward += [f"{name} includes {other}" for other in included if LAYERS.index(str(Path(other).parent)) > own]
for unit, included in graph.items():
    included.discard(unit)
if homeless or upward:
    sys.exit("\n".join([*homeless, "includes that point upward:", *upward]))
try:
    print(len(list(TopologicalSorter(graph).static_order())), "files, no circle; no folder includes a higher one")
except CycleError as error:
    sys.exit("files that include each other: " + " -> ".join(error.args[1]))
