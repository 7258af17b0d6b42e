"""The command: reads the logs and tells their story as text, as JSON or as a page."""

import argparse
import glob
import json
import os
import re
import sys
import textwrap

from . import page
from .advice import Adviser
from .codes import CODES, explain
from .reading import lines
from .story import read

WIDTH = 120
SCREEN = 40  # lines
SUCCEEDED, FAILED, UNREADABLE = 0, 1, 2
RETURNED = {1602: "ended by the user, by ONLYINI, or because copying was cancelled", 1603: "failure"}
NOTES = {
    "waits": "waits that timed out",
    "killed": "processes ended by force",
    "restart_files": "files left to the restart",
    "ignored": "values set in deferred actions and ignored",
}
SPOKEN = re.compile(
    r"Property '([^']+)'(?: value(?P<set> set to)? |, value )'(?P<value>.*)'(?P<source>;? from .*)?$|"
    r"Property '([^']+)' (?P<none>not defined .*)$|SETPROPERTY\('([^']+)', '(?P<ignored>.*)'\) (?P<how>ignored .*)$|"
    r"Property\([CSN]\): (\w+) = (?P<final>.*)$"
)


def clock(seconds):
    return "--:--:--" if seconds is None else f"{seconds // 3600 % 24:02}:{seconds // 60 % 60:02}:{seconds % 60:02}"


def duration(seconds):
    if seconds < 100:
        return f"{seconds} s"
    minutes = seconds // 60
    return f"{minutes} min {seconds % 60} s" if minutes < 60 else f"{minutes // 60} h {minutes % 60} min"


def cut(text):
    """One line that fits the screen; what cannot be printed is shown as a question mark."""
    text = "".join(letter if letter.isprintable() else "?" for letter in text)
    return text if len(text) <= WIDTH else text[: WIDTH - 3] + "..."


def point(title, text, rows=3):
    """A point of the story, over several lines if need be."""
    text = f"  {title:8} {text}"
    return textwrap.wrap(text, WIDTH, subsequent_indent=" " * 11, max_lines=rows, placeholder=" ...")


def plural(number, word):
    return f"{number} {word}" if number == 1 else f"{number} {word}s"


def headline(installation):
    """The outcome as a sentence."""
    outcome, guessed, reason = installation.outcome()
    if outcome in ("failed", "cancelled") and installation.rolled_back:
        outcome += " and rolled back"
    text = f"{outcome[0].upper()}{outcome[1:]}"
    if guessed:
        text += f" (a guess: {reason})"
    return text


def result_of(action):
    if action.rc is None:
        return "none: it was ended from outside, has crashed, or still runs"
    return str(action.rc) + (f", {RETURNED[action.rc]}" if action.rc in RETURNED else "")


def tell_failure(installation):
    """The lines about the first action that failed."""
    action, failure = installation.first_failed, installation.failure
    if action is None:
        if installation.other_failed is not None:
            line = installation.other_failed
            told = ["", "First failure: an action that is not the library's"]
            return told + point("line", line.text) + point("place", line.place)
        return []
    what = "Cancelled by" if installation.outcome()[0] == "cancelled" else "First failure:"
    told = ["", f"{what} {action.title}, {action.phase} phase", *point("result", result_of(action))]
    if failure is None:
        line = action.last or action.first
        return told + point("place", line.place) + point("last", f"{line.stamp} {line.text}")
    line = failure.line
    told += point("line", f"{line.stamp} {line.text}") + point("place", line.place)
    if failure.call:
        guessed = " (a guess)" if " or " in failure.call or action.phase_unknown else ""
        told += point("call", failure.call + guessed)
    if action.phase_unknown:
        told += point("that is", "it runs deferred, could not ask for its phase, and took itself for an immediate one")
    if failure.argument:
        told += point("on", failure.argument)
    if failure.code is not None:
        told += point("code", explain(failure.code))
    if failure.advice is not None:
        told += point("meaning", failure.advice.meaning)
        if failure.advice.remedy:
            told += point("check", failure.advice.remedy)
    return told


def tell_rest(installation):
    """The lines about what else is worth knowing."""
    told = []
    others = installation.others()
    for count, line in others[:6]:
        told.append(f"  {count:4} x  {line.text}")
        told.append(f"          first in {line.action}, {line.place}")
    if len(others) > 6 or installation.other_groups:
        more = len(others) - 6 + installation.other_groups
        told.append(f"          and {plural(more, 'other kind')} of failure lines")
    went_on = installation.first_failed
    if went_on is not None and went_on.rc is not None and installation.outcome()[0] == "succeeded":
        told.append(f"          failed without consequence: {went_on.title}, {(went_on.last or went_on.first).place}")
    if installation.broken is not None and installation.broken is not installation.first_failed:
        broken = installation.broken
        told.append(f"          without a result: {broken.title}, {(broken.last or broken.first).place}")
    for kind, title in NOTES.items():
        notes = installation.notes[kind]
        if notes.count:
            first = notes.lines[0]
            told.append(f"  {notes.count:4} x  {title}; the first in {first.action}, {first.place}")
            told.append(f"          {first.text}")
    if installation.restart is not None:
        told.append("          a restart is owed" if installation.restart else "          no restart is owed")
    slowest = sorted(installation.times.items(), key=lambda entry: -entry[1][0])
    slowest = [f"{name} {duration(seconds)}" for name, (seconds, _) in slowest[:5] if seconds > 0]
    if slowest:
        told.append("          slowest actions: " + ", ".join(slowest))
    return ["", "Also worth knowing:", *told] if told else []


def tell(installation):
    """The story of one installation."""
    begun, ended = installation.begun, installation.ended
    when = f"{clock(begun)} to {clock(ended)}, {duration((ended or 0) - (begun or 0))}; " if ended is not None else ""
    told = [f"{headline(installation)}."]
    told.append(f"{when}{plural(installation.count, 'action')}; {', '.join(installation.files)}")
    if installation.outcome()[0] != "succeeded":
        told += tell_failure(installation)
    return told + tell_rest(installation)


def chosen(installations):
    """The one whose story is told: the last that did not succeed, or the last of all."""
    bad = [one for one in installations if one.outcome()[0] != "succeeded"]
    return (bad or installations)[-1]


def tell_all(installations, counts):
    """At most one screen about all of them. `counts` has how often each outcome was, with those that are forgotten."""
    told, story = [], tell(chosen(installations))
    total = sum(counts.values())
    if total > 1:
        told.append(f"{total} installations: " + ", ".join(f"{number} {name}" for name, number in counts.items()))
        which = chosen(installations)
        for one in installations[-max(SCREEN - len(story) - 6, 1) :]:
            told.append(f"  {clock(one.begun)}  {headline(one)}  ({', '.join(one.files)})")
        told += ["", f"The {'last of them' if which is installations[-1] else 'last that did not succeed'}:"]
    told += story
    if len(told) > SCREEN:
        told = told[: SCREEN - 1] + [f"... and {len(told) - SCREEN + 1} more lines; see --json or --html"]
    return told


def tell_timeline(installation):
    told = [f"{headline(installation)}: {', '.join(installation.files)}"]
    told.append(f"{'start':8}  {'for':>9}  {'phase':9}  {'result':>9}  action")
    for action in sorted(installation.actions, key=lambda one: (one.start, one.first.number, one.depth)):
        result = "none" if action.rc is None else str(action.rc)
        name = "  " * action.depth + action.title
        seconds = duration(action.end - action.start)
        told.append(f"{clock(action.start)}  {seconds:>9}  {action.phase:9}  {result:>9}  {name}")
    return told


def properties(paths, names):
    """What the logs say of these properties, in their order: the line, the name, and what happened. What a merged line
    or another log repeats is left out."""
    wanted = {name.lower() for name in names}
    seen = {}  # in which log
    for path in paths:
        for line in lines(path):
            if "roperty" not in line.text and "SETPROPERTY" not in line.text:
                continue
            match = SPOKEN.match(line.text)
            name = match and next(match[group] for group in (1, 5, 7, 10) if match[group])
            if not match or name.lower() not in wanted:
                continue
            from_where = (path, line.merged)
            if seen.setdefault((line.stamp, line.action, line.text), from_where) != from_where:
                continue
            if match["none"]:
                what = match["none"]
            elif match["final"] is not None:
                what = f"is '{match['final']}' in the end"
            elif match["ignored"] is not None:
                what = f"not set to '{match['ignored']}': {match['how']}"
            else:
                source = (match["source"] or "").lstrip("; ")
                what = f"set to '{match['value']}'" if match["set"] else f"read '{match['value']}' {source}".rstrip()
            yield line, name, what


def as_data(installation):
    """An installation as JSON's kinds of values."""
    outcome, guessed, reason = installation.outcome()

    def place(line):
        return {"file": line.file, "line": line.number, "action": line.action, "text": line.text}

    def of_action(action):
        return {
            "name": action.name,
            "package_name": action.row or None,
            "phase": action.phase,
            "result": action.rc,
            "start": clock(action.start),
            "offset": action.start - (installation.begun or 0),
            "seconds": action.end - action.start,
            "depth": action.depth,
            "file": action.first.file,
            "line": action.first.number,
        }

    data = {"outcome": outcome, "guessed": guessed, "reason": reason or None, "rolled_back": installation.rolled_back}
    data |= {"files": installation.files, "begun": clock(installation.begun), "ended": clock(installation.ended)}
    failed, failure = installation.first_failed, installation.failure
    data["first_failed"] = of_action(failed) if failed is not None else None
    data["other_failed"] = place(installation.other_failed) if installation.other_failed is not None else None
    data["failure"] = failure and {
        **place(failure.line),
        "call": failure.call or None,
        "argument": failure.argument or None,
        "code": failure.code,
        "code_name": CODES.get(failure.code, (None,))[0],
        "code_text": CODES.get(failure.code, (None, None))[1],
        "meaning": failure.advice and failure.advice.meaning,
        "remedy": failure.advice and failure.advice.remedy or None,
    }
    data["failure_lines"] = [{"count": count, **place(line)} for count, line in installation.others()]
    for kind in NOTES:
        notes = installation.notes[kind]
        data[kind] = {"count": notes.count, "first": [place(line) for line in notes.lines]}
    data["restart_owed"] = installation.restart
    data["seconds_by_action"] = {name: seconds for name, (seconds, _) in installation.times.items()}
    data["actions"] = [of_action(action) for action in installation.actions]
    return data


def arguments(given):
    parser = argparse.ArgumentParser(
        prog="diagnose",
        usage="%(prog)s LOG... [--timeline] [--json] [--html FILE] [--svg FILE] [--properties NAME...]",
        description="Reads logs of installations, of whatever kind and mixed as you like, and tells what happened.",
        epilog="Exit status: 0 all succeeded, 1 one did not, 2 one is no log or cannot be read.",
    )
    parser.add_argument("logs", metavar="LOG", nargs="+")
    parser.add_argument("--timeline", action="store_true", help="each action: start, duration, phase, result")
    parser.add_argument("--properties", metavar="NAME", nargs="+", help="each read and set of these, in order")
    parser.add_argument("--html", metavar="FILE", help="write a page with all of it")
    parser.add_argument("--svg", metavar="FILE", help="write the picture of the timeline alone")
    parser.add_argument("--json", action="store_true", help="the story for machines")
    options = parser.parse_args(given)
    # Not every system's command line does it.
    many = [[name] if os.path.exists(name) else sorted(glob.glob(name)) or [name] for name in options.logs]
    options.logs = [name for names in many for name in names]
    return options


def run(options):
    """Prints what is asked for, and gives the exit status. Raises OSError and ValueError for what cannot be read."""
    wants_all = bool(options.timeline or options.html or options.svg or options.json)
    counts, all_good = {}, True

    def count(installation):
        nonlocal all_good
        outcome = installation.outcome()[0]
        counts[outcome] = counts.get(outcome, 0) + 1
        all_good = all_good and outcome == "succeeded"

    forgets = not wants_all and len(options.logs) == 1
    last_bad = []

    def forget(installation):
        count(installation)
        if installation.outcome()[0] != "succeeded":
            last_bad[:] = [installation]

    adviser = Adviser()
    found = read(options.logs, wants_all or len(options.logs) > 1, adviser, forget if forgets else None)
    for installation in found:
        count(installation)
    installations = last_bad + found
    if options.json:
        print(json.dumps({"installations": [as_data(one) for one in installations]}, indent=1))
    elif options.properties:
        for line, name, what in properties(options.logs, options.properties):
            print(f"{line.stamp or '--:--:--'}  {line.action or '(the installer)'}: {name} {what}")
    elif options.timeline:
        for installation in installations:
            print("\n".join(map(cut, tell_timeline(installation))))
    elif not options.svg:
        print("\n".join(map(cut, tell_all(installations, counts))))
        if not adviser.rows:
            print("docs/logs.md is not beside the tools, so that no meanings can be told.")
    if options.html:
        page.write(options.html, [(one, tell(one)) for one in installations], options.logs)
    if options.svg:
        with open(options.svg, "w", encoding="utf-8", newline="\n") as file:
            file.write(page.picture(chosen(installations)) + "\n")
    return SUCCEEDED if all_good else FAILED


def main(given=None):
    options = arguments(given)
    try:
        sys.stdout.reconfigure(errors="replace")
        return run(options)
    except BrokenPipeError:
        # Nobody reads on; neither at the end, when what is left is written.
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())
    except OSError as error:
        print(f"diagnose: {error.filename}: {error.strerror}", file=sys.stderr)
    except ValueError as error:
        print(f"diagnose: {error}", file=sys.stderr)
    return UNREADABLE
