"""What the tests of whole installations share."""

import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tools"))
from installation import Machine, Package


def prepare(usage):
    """What the command line of a test names: the build folder, the reference package in it, and a machine. Its Wine
    prefix, beside the build folder, is the test's own, so that tests may run at the same time."""
    if len(sys.argv) < 2 or not (Path(sys.argv[1]) / "vantrelqv.msi").exists():
        sys.exit(usage)
    build = Path(sys.argv.pop(1)).resolve()
    return build, Package(build / "vantrelqv.msi"), Machine(build.parent / f"wine-{Path(sys.argv[0]).stem}")


def message(number, language="en_us"):
    """A text as its table gives it."""
    table = (ROOT / "catalogue" / language / "messages.txt").read_text(encoding="utf-8")
    return re.search(rf"^{number}\s+(.*)$", table, re.MULTILINE)[1]


def texts(lines):
    """Action and text of each line, without merged lines and time stamps."""
    return [line.split(" QVCA info ", 1)[1] for line in lines if not line.startswith(">>")]
