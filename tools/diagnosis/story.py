"""What happened in the installations that logs are about: their actions, how each ended, and what decided it."""

import re
import time
from dataclasses import dataclass, field
from typing import NamedTuple

from .advice import Advice, Adviser
from .codes import argument_of, call_of, code_of
from .reading import Log, Told, labels

DAY = 24 * 3600
FRESH = 300  # seconds: whoever wrote to a log so recently may be writing still
KEPT_LINES = 80  # of an action's failure lines; in the middle, the others are only counted
KEPT_GROUPS = 200
DEEPEST = 20  # frames within one another; deeper ones are junk
CANCELLED = 1602
USUAL_CODES = (0, 3010, 1641)  # of the installer's, for a success

PHASES = (("MSIRUNMODE_SCHEDULED", "deferred"), ("MSIRUNMODE_COMMIT", "commit"), ("MSIRUNMODE_ROLLBACK", "rollback"))
ENDED = re.compile(r"Action ended [^ ]+ ?(.*?)\. Return value (-?\d+)\.?")
SCHEDULED = re.compile(r".*CustomActionSchedule\(Action=([^,)]+)")
STATUS = re.compile(r".*(?:MainEngineThread is returning|error status:) (\d+)")
RETURNING, SUCCESS = "Returning with rc ", "Returning with rc 0"
MESSAGE = re.compile(r"QVCA .* MB error: ")
ASIDE = re.compile(r"\*\*\*(?:iwiLoadNlsString|iiiDisplayMsgBox)")  # failures to tell of a failure
SUMS_UP = re.compile(r"\*\*\*(?:Folder '.*' cannot be deleted|Can't find binary|No temporary f|'.*' ended with)")
CONTAINERS = ("INSTALL", "ADMIN", "ADVERTISE", "ExecuteAction", "InstallExecute", "InstallFinalize")
CLEANED_UP = ("iwiCleanUpFinal", "iwiCleanUpSuccess")
TEMPORARY_LOG = re.compile(r"zqvg\d{4}\.txt", re.IGNORECASE)


class Failure(NamedTuple):
    """A line that tells a failure, taken apart. What it does not have is empty: for the code and the advice, none."""

    line: Told
    call: str
    argument: str
    code: int | None
    advice: Advice | None

    @classmethod
    def of(cls, line, adviser):
        text = line.text
        return cls(line, call_of(text), argument_of(text), code_of(text), adviser.find(text)[0])


@dataclass(slots=True, eq=False)
class Action:
    """A run of an exported action. Times are seconds since the midnight before the installation; an unknown start is
    that of its first line. `rc` is none as long as it has not returned."""

    name: str
    first: Told
    start: int
    end: int
    row: str = ""  # the package's name for it, where the installer's log tells it
    phase: str = "immediate"
    depth: int = 0
    rc: int | None = None
    phase_unknown: bool = False  # it is deferred, but takes itself for an immediate one
    external: bool = False  # hands itself on to another copy of the library
    lines: list = field(default_factory=list)  # that tell failures
    last: Told | None = None

    @property
    def title(self):
        if self.row and self.name and self.row != self.name:
            return f"{self.row} ({self.name})"
        return self.row or self.name or "an action without a name"

    @property
    def key(self):
        return (self.last or self.first).stamp, self.name, self.rc

    def keep(self, line):
        self.lines.append(line)
        if len(self.lines) > KEPT_LINES:
            del self.lines[KEPT_LINES // 2]

    def failure(self, adviser):
        """Its deciding line; none when no line tells of a failure."""
        told = [line for line in self.lines if not ASIDE.match(line.text) and not MESSAGE.match(line.text)]
        rows = {line: adviser.find(line.text)[0] for line in told}
        ends = [line for line in told if rows[line] and rows[line].ends]
        hard = ends or [line for line in told if not (rows[line] and rows[line].mild)]
        if hard:
            at = told.index(hard[0])
            # Of lines that follow one another the first one has begun it; others sum up what was before.
            while at > 0 and told[at - 1].number == told[at].number - 1 and call_of(told[at - 1].text):
                at -= 1
            earlier = [line for line in told[:at] if call_of(line.text)]
            if earlier and SUMS_UP.match(told[at].text):
                return self.taken_apart(earlier[-1], adviser)
            return self.taken_apart(told[at], adviser)
        if told:
            return self.taken_apart(([line for line in told if call_of(line.text)] or told)[-1], adviser)
        rest = [line for line in self.lines if MESSAGE.match(line.text)] or self.lines
        return self.taken_apart(rest[0], adviser) if rest else None

    def taken_apart(self, line, adviser):
        failure = Failure.of(line, adviser)
        return failure._replace(call="MsiGetMode", argument="", code=None) if self.phase_unknown else failure


class Group:
    """Failure lines of one kind."""

    def __init__(self, line):
        self.line = line
        self.count = 0


class Notes:
    """Lines of one kind that are worth knowing: their number, and the first ones."""

    def __init__(self):
        self.count = 0
        self.lines = []

    def add(self, line):
        self.count += 1
        if len(self.lines) < 5:
            self.lines.append(line)


class Clock:
    """Turns stamps into seconds that never run back: over midnight they go on."""

    def __init__(self):
        self.last = self.stamp = None
        self.days = 0

    def seconds(self, stamp):
        if stamp == self.stamp:
            return self.last
        now = int(stamp[:2]) * 3600 + int(stamp[3:5]) * 60 + int(stamp[6:]) + self.days * DAY
        if self.last is not None and now < self.last:
            if self.last - now > DAY // 2:
                self.days += 1
                now += DAY
            else:  # the clock was put back
                now = self.last
        self.last, self.stamp = now, stamp
        return now


class Installation:
    """What one installation's log tells. With `keep`, `actions` has all of its actions; without it only the open ones,
    and what is told of the others is added up."""

    KINDS = ("waits", "killed", "restart_files", "ignored")

    def __init__(self, log, adviser, keep):
        self.files = [log.file]
        self.path = log.path
        self.log = log  # while it is being read
        self.adviser = adviser
        self.keep = keep
        self.clock, self.merged_clock = Clock(), Clock()
        self.stack, self.merged_stack = [], []
        self.actions, self.merged_only = [], []
        self.repeated = []  # actions of other logs that are among those
        self.keys = set()
        self.count = 0
        self.times = {}  # by title: seconds, runs
        self.first_failed = self.broken = self.latest = None
        self.failed_results = []
        self.groups, self.other_groups = {}, 0
        self.notes = {kind: Notes() for kind in self.KINDS}
        self.found_process = None
        self.restart = None  # whether one is owed; none if it is not told
        self.by_engine = False  # whether this is the installer's own log
        self.row = ""  # the installer's name for what it has scheduled next
        self.engine_result = None  # the return value of INSTALL
        self.status = None  # the installer's own result
        self.other_failed = None  # the line about another maker's action that failed
        self.rolled_back = False
        self.begun = self.ended = self.open_action = None
        self.is_last = True
        self.age = 0

    # Reading

    def take_engine(self, line):
        self.by_engine = True
        text = line.text
        if match := ENDED.fullmatch(text):
            name, value = match[1], int(match[2])
            if name == "INSTALL":
                self.engine_result = value
            for action in self.stack:
                if action.row == name and name not in CONTAINERS:
                    self.close_down_to(self.stack, action, line)
                    return
            own = self.latest is not None and self.latest.row == name
            if value in (2, 3) and not own and name not in CONTAINERS and self.other_failed is None:
                self.other_failed = self.first_failed is None and self.log.numbered(line) or None
        elif match := SCHEDULED.match(text):
            self.row = match[1]
        elif match := STATUS.match(text):
            self.status = int(match[1])
        elif text.startswith("Action ") and " Rollback" in text:
            self.rolled_back = True

    def take(self, line):
        stack = self.merged_stack if line.merged else self.stack
        now = (self.merged_clock if line.merged else self.clock).seconds(line.stamp)
        text = line.text
        if line.action == "(CaProlog)" and " Built on " in text and not text.startswith("***"):
            if stack and not stack[-1].external:
                self.close_down_to(stack, stack[0], line)
            self.open(stack, "", line, now)
            return
        if text == SUCCESS:
            action = self.running(stack, line, now)
            action.end, action.last = now, line
            self.returned(stack, action, line)
            return
        line = self.log.numbered(line)
        action = self.running(stack, line, now)
        action.end, action.last = now, line
        if text.startswith(RETURNING):
            self.returned(stack, action, line)
        elif text.startswith("***") or not self.take_note(action, text, line):
            action.keep(line)
            if not line.merged:
                self.group(line)

    def open(self, stack, name, line, now):
        if len(stack) >= DEEPEST:
            self.close_down_to(stack, stack[0], line)
        line = self.log.numbered(line)
        action = Action(name, line, now, now, depth=len(stack), last=line)
        if stack:
            action.row, action.phase = stack[-1].row, stack[-1].phase
        elif not line.merged:
            action.row, self.row = self.row or self.log.row_above(), ""
            self.by_engine = self.by_engine or action.row != ""
            if self.begun is None:
                self.begun = now
        stack.append(action)
        return action

    def running(self, stack, line, now):
        """The action whose line this is."""
        name = line.action.replace("(CaProlog)", "")
        if not stack:
            return self.open(stack, name, line, now)
        if not name:
            return stack[-1]
        for action in reversed(stack):
            if action.name == name and not action.external:
                return action
        if stack[-1].name:
            return self.open(stack, name, line, now)
        stack[-1].name = name
        return stack[-1]

    def take_note(self, action, text, line):
        """Takes a line that is no failure. False: it tells one without asterisks."""
        if text.startswith("MSIRUNMODE_"):
            for mode, phase in PHASES:
                if text == mode:
                    action.phase = phase
            if text.startswith("MSIRUNMODE_REBOOT") and self.restart is None:
                self.restart = True
        elif text.startswith("Deferred execution"):
            action.phase = "deferred"
        elif text.startswith("Property 'ProductName'"):
            # Every package names its product, but a deferred action is not shown the properties.
            action.phase_unknown = True
        elif text.startswith("Executing '"):
            match = re.fullmatch(r"Executing '.*\((\w+)\)'", text)
            action.external = True
            action.name = match[1] if match else action.name
        elif text.startswith("Executing in "):
            phase = text.removeprefix("Executing in ")
            action.phase = phase if phase in ("rollback", "commit") else action.phase
        elif text.startswith("Wait timed out") or text.startswith("Process '"):
            self.notes["waits"].add(line)
        elif text.startswith("Found process ID"):
            self.found_process = line
        elif text.startswith("Process ID"):
            found = self.found_process
            same = found is not None and f" {text.split(' ')[2]} " in found.text
            self.notes["killed"].add(found if same else line)
        elif text.startswith("Stacked file for deletion upon reboot"):
            self.notes["restart_files"].add(line)
        elif text.startswith("SETPROPERTY("):
            self.notes["ignored"].add(line)
        elif text.startswith("Property 'ZQVBOOT'"):
            self.restart = not text.endswith("''")
        elif not text.startswith(("Property ", "Messages from", "QVCA ")):
            return self.adviser.find(text)[0] is None
        else:
            return MESSAGE.match(text) is None
        return True

    def returned(self, stack, action, line):
        code = line.text.removeprefix(RETURNING).strip()
        action.rc = int(code) if re.fullmatch(r"-?\d{1,10}", code) else None
        action.end, action.last = self.merged_clock.last if line.merged else self.clock.last, line
        self.close_down_to(stack, action, line)
        if line.merged and action.key in self.keys:
            self.log.passes_merged = True
            self.merged_stack.clear()

    def close_down_to(self, stack, action, line):
        """Ends an action, and those in it that have not returned."""
        while stack:
            top = stack.pop()
            if line.merged:
                if top.rc is not None:
                    self.merged_only.append(top)
            else:
                self.add(top)
            if top is action:
                return

    def group(self, line):
        row = self.adviser.find(line.text)[0]
        kind = row.text if row else re.sub(r"'[^']*'|\d+", "", line.text)[:100]
        group = self.groups.get(kind)
        if group is None:
            if len(self.groups) >= KEPT_GROUPS:
                self.other_groups += 1
                return
            group = self.groups[kind] = Group(line)
        group.count += 1

    def add(self, action):
        """Counts an action that has ended, or will not."""
        last = self.log.last_line() if action.rc is None and self.log is not None and not action.first.merged else None
        if last is not None and last.action in (action.name or last.action, "(CaProlog)"):
            action.name = action.name or last.action.replace("(CaProlog)", "")
            action.last = last
        self.latest = action
        self.count += action.depth == 0
        self.ended = max(self.ended or 0, action.end)
        self.keys.add(action.key)
        if action.depth == 0:
            seconds, runs = self.times.get(action.title, (0, 0))
            self.times[action.title] = (seconds + action.end - action.start, runs + 1)
        self.rolled_back |= action.phase == "rollback"
        if action.rc is None:
            self.broken = self.broken or action
        # An inner frame's failure comes before that of the outer one, which tells it again.
        if action.rc != 0 and self.first_failed is None:
            self.first_failed = action
        if self.keep:
            self.actions.append(action)

    def finish(self, last):
        """All of the log that is about it has been read; it is the last one in it or not."""
        self.is_last = last
        self.open_action = self.stack[-1] if self.stack else None
        while self.stack:
            self.add(self.stack.pop())
        self.log = None
        # What only the merged lines tell was written before this log was named.
        for action in self.merged_only:
            if action.key not in self.keys:
                for line in action.lines:
                    self.group(line)
                self.add(action)
        self.begun = min([a.start for a in self.merged_only] + [self.begun or 0]) if self.merged_only else self.begun
        if self.merged_only:
            self.actions.sort(key=lambda action: action.start)
            self.first_failed = self.first_failed and min(
                [self.first_failed] + [a for a in self.merged_only if a.rc not in (0, None)], key=lambda a: a.start
            )
        self.merged_only = []
        try:
            self.age = time.time() - self.path.stat().st_mtime
        except OSError:
            self.age = FRESH

    # Telling

    def outcome(self):
        """One of succeeded, cancelled, failed, still running and broken off; whether that is a guess; and why it is."""
        failed = self.first_failed
        results = (self.status, self.engine_result)
        library = "cancelled" if failed is not None and failed.rc == CANCELLED else "failed"
        if self.status in USUAL_CODES or self.status is None and self.engine_result == 1:
            return "succeeded", False, ""
        if self.status == CANCELLED or self.status is None and self.engine_result == 2:
            return "cancelled", False, ""
        if results != (None, None):
            if failed is not None and failed.rc is None and failed is not self.broken:
                failed = None
            told = failed is not None or self.other_failed is not None or self.status or self.engine_result == 3
            return library, not told, "" if told else "the installer says so, but no action of the library has failed"
        if self.open_action is not None and self.is_last:
            if failed is self.open_action and TEMPORARY_LOG.fullmatch(self.path.name) and len(self.files) == 1:
                return "still running", True, "a temporary log ends before its installation; read the other logs"
            if self.age < FRESH:
                return "still running", True, "its log was written to in the last minutes"
            if failed is None or failed is self.open_action:
                return "broken off", False, ""
        if failed is not None and failed.rc is not None:
            return library, False, ""
        if self.latest is not None and self.latest.name in CLEANED_UP:
            return "succeeded", False, ""
        if self.broken is not None:
            return "broken off", False, ""
        if self.latest is not None and self.latest.name == "iwiCleanUp":
            return "failed", True, "the library cleaned up, but none of its actions has failed"
        if self.is_last and self.age < FRESH:
            return "still running", True, "its log was written to in the last minutes"
        return "broken off", True, "its log ends between two actions"

    @property
    def failure(self):
        """The deciding line of the first action that failed; none when it has none."""
        return self.first_failed.failure(self.adviser) if self.first_failed is not None else None

    def others(self):
        """The groups of failure lines but for the deciding one, the most frequent first."""
        deciding = self.failure
        found = []
        for group in self.groups.values():
            same = deciding is not None and self.outcome()[0] != "succeeded" and group.line == deciding.line
            if group.count > same and not MESSAGE.match(group.line.text):
                found.append((group.count, group.line))
        return sorted(found, key=lambda entry: -entry[0])

    def absorb(self, other):
        """Takes from another log of the same installation what this one does not tell."""
        self.files += other.files
        self.repeated += other.actions + other.repeated
        trace = self.by_engine and not other.by_engine
        own = {action.key: action for action in self.actions}
        for action in other.actions:
            mine = own.get(action.key)
            if mine is None:
                if not self.by_engine:
                    self.add(action)
                    self.begun = min(self.begun, action.start)
            elif trace and action.lines:
                # The installer's own log lacks what stood in square brackets.
                mine.lines = action.lines
        if not self.by_engine:
            self.actions.sort(key=lambda action: (action.start, action.end))
            failed = [action for action in self.actions if action.rc != 0]
            self.first_failed = failed[0] if failed else None
        for kind, group in other.groups.items():
            if kind not in self.groups:
                self.groups[kind] = group
            elif trace:
                self.groups[kind].line = group.line


def same(one, other):
    """Whether two logs' installations are one: most actions of the shorter are in both, ended in the same seconds. The
    installer writes one log of its own of each."""
    if one.by_engine and other.by_engine:
        return False
    shared = len(one.keys & other.keys)
    return shared > 0 and shared * 2 >= min(len(one.keys), len(other.keys))


def read(paths, keep=False, adviser=None, on_end=None):
    """The installations of all logs, in their order. Without `keep` they have no list of their actions; one that is
    followed by another one of the same log is handed to `on_end`, if that is given, and forgotten. Raises OSError for a
    log that cannot be read and ValueError, with its text, for one that is none."""
    adviser = adviser or Adviser()
    found = []
    for path, label in zip(paths, labels(paths)):
        log = Log(path, label)
        present = Installation(log, adviser, keep)
        of_log = []

        def end(installation, last):
            if not (installation.count or installation.stack or installation.by_engine or installation.merged_only):
                return
            installation.finish(last)
            if on_end and not last:
                on_end(installation)
            else:
                of_log.append(installation)

        for line in log:
            begins = False
            if not line.stamp:
                begins = line.text.startswith("===") and " started" in line.text
                begins = begins and (present.count > 0 or present.engine_result is not None)
            elif line.action == "iwiStartLogs" and not line.merged and not present.by_engine and present.count:
                opened = present.stack[-1] if present.stack else None
                begins = opened is None or opened.name != "iwiStartLogs"
                if begins and opened is not None and not opened.name:
                    present.stack.remove(opened)
            if begins:
                end(present, False)
                present = Installation(log, adviser, keep)
            if line.stamp:
                present.take(line)
            else:
                present.take_engine(line)
        end(present, True)
        if not log.is_log:
            raise ValueError(f"{path} is no log of an installation")
        if not of_log and not on_end:
            present.finish(True)
            of_log = [present]
        of_others = list(found)
        for installation in of_log:
            twin = next((one for one in of_others if one in found and same(one, installation)), None)
            if twin is None:
                found.append(installation)
            elif installation.by_engine and not twin.by_engine:
                installation.absorb(twin)
                found[found.index(twin)] = installation
            else:
                twin.absorb(installation)
    return found
