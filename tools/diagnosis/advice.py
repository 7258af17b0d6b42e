"""What a line that tells a failure means and what to do about it. Both come from the tables of docs/logs.md alone, so
that the page and the tool cannot disagree."""

import re
from dataclasses import dataclass
from functools import cached_property
from pathlib import Path

PAGE = Path(__file__).resolve().parents[2] / "docs" / "logs.md"
BEGIN = "## Failure lines"
DIRECTIVE = re.compile(r"%(?:\d+\.\d+)?(?:(s)|(d|u|lu)|(8\.8lx))")
ENDS = re.compile(r"[Ee]nds the action|the action ends|the action gives 1603")
MILD = re.compile(r"counts as|passed over|goes on|next restart|next number|planning by|own one runs|information")
BEGINNING = 16  # characters by which the rows that a line may be of are remembered
PATTERNS = ("(.*?)", r"(-?\d+)", "((?:0x)?[0-9a-fA-F]+)")  # in the order of the directive's groups


@dataclass(frozen=True)
class Advice:
    """A row of the page, for one of its texts: the text as the library composes it, what happened, and what to check
    (may be empty). `ends` tells whether the action ends with it."""

    text: str
    meaning: str
    remedy: str

    @cached_property
    def ends(self):
        return ENDS.search(self.meaning) is not None or not self.text.startswith("***") and "error message" in self.meaning

    @cached_property
    def mild(self):
        """Whether the action goes on as if nothing had been."""
        return MILD.search(self.meaning) is not None

    @cached_property
    def pattern(self):
        """Matches the texts of lines; its groups are what the directives stand for."""
        pieces, end = [], 0
        for match in DIRECTIVE.finditer(self.text):
            pieces += [re.escape(self.text[end : match.start()]), PATTERNS[match.lastindex - 1]]
            end = match.end()
        return re.compile("".join(pieces) + re.escape(self.text[end:]), re.DOTALL)

    @cached_property
    def head(self):
        """What its lines begin with."""
        return self.text.split("%")[0][:BEGINNING]

    @cached_property
    def weight(self):
        return len(DIRECTIVE.sub("", self.text))


def plain(cell):
    """The text of a table's cell, without its links' targets and its quotation marks for code."""
    return re.sub(r"\[([^]]*)\]\([^)]*\)", r"\1", cell).replace("`", "").strip()


def rows(page):
    """The rows of the tables of failure lines, in the page's order. A meaning that is "the same" says what it is."""
    found, above = [], ""
    for line in page[page.find(BEGIN) :].splitlines() if BEGIN in page else []:
        cells = re.split(r" ?\| ?", line.strip())
        if len(cells) != 5 or "`" not in cells[1]:
            continue
        meaning = re.sub(r"^\+ ", "", plain(cells[2]))
        if meaning.startswith("the same"):
            meaning = above + meaning.removeprefix("the same")
        above = re.split("[;:]", meaning)[0]
        remedy = plain(cells[3])
        found += [Advice(text, meaning, remedy) for text in re.findall("`([^`]+)`", cells[1])]
    return found


class Adviser:
    """Finds the row for a line's text. Without the page it knows none."""

    def __init__(self, page=PAGE):
        try:
            self.rows = rows(Path(page).read_text(encoding="utf-8"))
        except OSError:
            self.rows = []
        self.by_weight = sorted(self.rows, key=lambda row: -row.weight)
        self.known = {}

    def find(self, text):
        """The row, and what its directives stand for; none and nothing when no row has such a text."""
        begin = text[:BEGINNING]
        candidates = self.known.get(begin)
        if candidates is None:
            if len(self.known) > 10_000:  # lines of junk do not fill the memory
                self.known.clear()
            candidates = [row for row in self.by_weight if begin.startswith(row.head) or row.head.startswith(begin)]
            self.known[begin] = candidates
        for row in candidates:
            match = row.pattern.fullmatch(text)
            if match:
                return row, match.groups()
        return None, ()
