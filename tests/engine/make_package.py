#!/usr/bin/env python3
"""Makes the engine tests' own package: the reference package with the test actions and some streams added to it.

usage: make_package.py REFERENCE_PACKAGE TEST_ACTIONS_DLL FOLDER

FOLDER gets the package, engine.msi; beside it readme.txt, one of the package's files as it lies in an uncompressed
source; and Binary/NAME.ibd, the bytes of each row of the Binary table.
"""

import shutil
import subprocess
import sys
from pathlib import Path

STREAM_SIZES = (0, 255, 256, 257, 512, 100000)
ACTIONS = (("StackRemovals", 1, 1340), ("DeleteTree", 3073, 1540))  # name, type, sequence number


def stream(size):
    """Bytes of every value; no block of 256 is like the one before it."""
    return bytes((at * 7 + at // 256 * 13) & 0xFF for at in range(size))


def call(*command, folder=None):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, cwd=folder).stdout


def main(reference, library, folder):
    streams = folder / "Binary"
    shutil.rmtree(folder, ignore_errors=True)
    streams.mkdir(parents=True)
    package = folder / "new.msi"
    shutil.copy(reference, package)
    (folder / "readme.txt").write_text("as in the source\n")

    # An imported table takes the place of the one that is there, so it has to hold the old rows too. Its streams are
    # looked for in the current folder.
    exported = call("msiinfo", "export", package, "Binary").decode().splitlines()
    names = [line.split("\t")[0] for line in exported[3:]]
    rows = {name: call("msiinfo", "extract", package, f"Binary.{name}") for name in names}
    rows |= {f"stream_{size}": stream(size) for size in STREAM_SIZES}
    rows["test_actions"] = library.read_bytes()
    for name, content in rows.items():
        (streams / f"{name}.ibd").write_bytes(content)
    lines = [*exported[:3], *(f"{name}\t{name}.ibd" for name in rows), ""]
    (folder / "Binary.idt").write_text("\n".join(lines))
    call("msibuild", package.name, "-i", "Binary.idt", folder=folder)

    for name, kind, number in ACTIONS:
        values = f"('{name}', {kind}, 'test_actions', '{name}')"
        action = f"INSERT INTO `CustomAction` (`Action`, `Type`, `Source`, `Target`) VALUES {values}"
        step = f"INSERT INTO `InstallExecuteSequence` (`Action`, `Sequence`) VALUES ('{name}', {number})"
        call("msibuild", package, "-q", action, "-q", step)
    package.rename(folder / "engine.msi")


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    main(*map(Path, sys.argv[1:]))
