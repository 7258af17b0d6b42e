"""Whole installations of the reference package in Wine's installer engine, for the demo and the engine tests."""

import functools
import os
import re
import shutil
import subprocess
import tempfile
from dataclasses import dataclass
from pathlib import Path

TOOLS = Path(__file__).resolve().parent
STAMPED = re.compile(r"\d\d:\d\d:\d\d QVCA info (\(CaProlog\)|[^:]+): (.*)")
FAILED = 1603 & 0xFF  # what is left of the installer's result in an exit status
CANCELLED = 1602 & 0xFF
WIZARD_LOG = "zqvmjpse.txt"  # in the data folder
PATIENCE = 300  # seconds; what does nothing for longer, on however busy a machine, hangs
LOOK = 10  # seconds between two looks at whether a log has grown

# Custom action types, as the engine's documentation numbers them.
FROM_LIBRARY, ROLLBACK, COMMIT, DEFERRED = 0x1, 0x100, 0x200, 0x400
SOURCE_MASK = 0x3F


class Package:
    """What the tables of a package say will be installed and run."""

    def __init__(self, path):
        self.path = Path(path).resolve()
        self.properties = {row["Property"]: row["Value"] for row in self.table("Property")}

    def tables(self):
        """The names of the tables."""
        names = self.read("tables").splitlines()
        return [name for name in names if name not in ("_SummaryInformation", "_ForceCodepage")]

    def columns(self, name):
        """The names of a table's columns."""
        return self.read("export", name).splitlines()[0].split("\t")

    def table(self, name):
        """The rows of a table, each a dictionary of texts."""
        columns = self.columns(name)
        return [dict(zip(columns, line.split("\t"))) for line in self.read("export", name).splitlines()[3:]]

    @functools.cache
    def read(self, command, *names):
        """What msiinfo prints; the package does not change any more. It leaves a table's streams in the current folder."""
        call = ["msiinfo", command, self.path, *names]
        with tempfile.TemporaryDirectory() as folder:
            return subprocess.run(call, check=True, capture_output=True, encoding="utf-8", cwd=folder).stdout

    def features(self):
        """The features that can be chosen, with their levels."""
        levels = {row["Feature"]: int(row["Level"]) for row in self.table("Feature")}
        return {feature: level for feature, level in levels.items() if level > 0}

    def files(self, features=None, **places):
        """Paths below drive C of the files that an installation brings, with their sizes: those of the features, by
        default of all that are installed without further options. `places` has directories that are elsewhere, with
        their paths below drive C."""
        folders = {row["Directory"]: row for row in self.table("Directory")}
        known = {"TARGETDIR": ".", "ProgramFilesFolder": "Program Files", "CommonAppDataFolder": "ProgramData"} | places

        def resolve(folder):
            if folder in known:
                return Path(known[folder])
            return resolve(folders[folder]["Directory_Parent"]) / folders[folder]["DefaultDir"].split("|")[-1]

        limit = int(self.properties["INSTALLLEVEL"])
        features = features or [name for name, level in self.features().items() if level <= limit]
        wanted = {row["Component_"] for row in self.table("FeatureComponents") if row["Feature_"] in features}
        homes = {row["Component"]: resolve(row["Directory_"]) for row in self.table("Component")}
        added = self.added_files(features, resolve("ZQVPGMFOLDER"))
        return {path: len(text) for path, text in added.items()} | {
            homes[row["Component_"]] / row["FileName"].split("|")[-1]: int(row["FileSize"])
            for row in self.table("File")
            if row["Component_"] in wanted
        }

    def added_files(self, features, home):
        """What the library adds in the program folder, a path below drive C, and its contents: the files of "licenses"
        beside the package, the signature files among them once more, a list of both folders' files, and link files."""
        medium = self.path.parent / "licenses"
        folders = {"licenses": [path for path in medium.rglob("*") if path.is_file()]}
        folders["licenses/sig"] = list(medium.glob("*.sig"))
        added = {}
        for folder, paths in folders.items():
            copies = {path.relative_to(medium): path.read_bytes() for path in paths}
            names = sorted((str(name).replace("/", "\\") for name in copies), key=str.upper)
            if names:
                copies["zqvfiles.txt"] = "".join(f"{name}\r\n" for name in names).encode()
            added |= {home / folder / name: text for name, text in copies.items()}
        for language in re.findall(r"\bdocs_(\w+)_eclipse\b", " ".join(features)):
            added[home / f"eclipse/links/zqv_{language}.link"] = link_line(home, language)
        return added

    def variant(self, path, *queries):
        """A copy of the package that the queries have changed, with what lies beside it."""
        shutil.copy(self.path, path)
        shutil.copy(self.path.parent / "zksetup.exe", path.parent)
        shutil.copytree(self.path.parent / "licenses", path.parent / "licenses", dirs_exist_ok=True)
        for query in queries:
            subprocess.run(["msibuild", path, "-q", query], check=True)
        return Package(path)

    def actions(self, first, more=(), removal=False):
        """The phase of each action of the library that runs in a successful first installation, or in another one or a
        removal: of those that always do, and of `more`, whose conditions hold."""
        holds = {"": True, "Installed": not first, "NOT Installed": first, 'NOT REMOVE~="ALL"': not removal}
        holds |= {'REMOVE~="ALL"': removal, 'REMOVE~="ALL" OR ZQVMIGRATE AND NOT Installed': removal}
        holds |= {"NOT QVKEEPFILES": True, "NOT UPGRADINGPRODUCTCODE": True}
        holds |= {"&Server=3": not removal, "&Server=2": removal}  # it is among the features of whoever asks
        types = {row["Action"]: int(row["Type"]) for row in self.table("CustomAction")}
        rows = sorted(self.table("InstallExecuteSequence"), key=lambda row: int(row["Sequence"]))
        phases = {}
        for row in rows:
            kind = types.get(row["Action"], 0)
            if kind & SOURCE_MASK != FROM_LIBRARY or int(row["Sequence"]) < 0:
                continue
            if not holds.get(row["Condition"], False) and row["Action"] not in more:
                continue
            if not kind & DEFERRED:
                phases[row["Action"]] = "immediate"
            elif not kind & ROLLBACK:
                phases[row["Action"]] = "commit" if kind & COMMIT else "deferred"
        return phases


@dataclass
class Outcome:
    """One run of an action: the engine's return value (1 is success) and the results that the library logged."""

    action: str
    value: int
    results: list


@dataclass
class Run:
    """What one call of msiexec (/i or /x) left behind."""

    verb: str
    status: int
    log: str

    def outcomes(self):
        """The actions in the order in which they ended. A deferred one ends twice: first when it is scheduled."""
        ended, results = [], []
        for line in self.log.splitlines():
            if line.startswith("Action start "):
                results = []
            elif end := re.fullmatch(r"Action ended [\d:]+: (\w+)\. Return value (-?\d+)\.\s*", line):
                ended.append(Outcome(end[1], int(end[2]), results))
                results = []
            elif result := re.search(r"(?<!>>)\b\d\d:\d\d:\d\d QVCA info [^:]+: Returning with rc (\d+)", line):
                results.append(int(result[1]))
        return ended


class Hung(RuntimeError):
    """A command has not come to its end."""


class Machine:
    """A 32-bit Wine prefix, made where there is none. Windows paths below are on its drive C."""

    def __init__(self, prefix, **environment):
        self.prefix = Path(prefix).resolve()
        self.drive = self.prefix / "drive_c"
        # Without a display, where message boxes answer themselves.
        self.environment = {name: value for name, value in os.environ.items() if name != "DISPLAY"} | environment
        if self.wine() != 0:
            raise RuntimeError(f"no Wine prefix in {self.prefix}")

    def command(self, *command):
        """What the host calls to run a command in the prefix."""
        return [TOOLS / "wine-env", self.prefix, *command]

    def wine(self, *command):
        """Runs a command and gives its exit status."""
        return self.run(*command).returncode

    def read(self, *command):
        """Runs a command and gives the text that it prints."""
        return self.run(*command, stdout=subprocess.PIPE, text=True).stdout

    def run(self, *command, stdout=subprocess.DEVNULL, log=None, **options):
        """A command that hangs is ended with all else in the prefix. While its log grows it does not hang: each line of
        an installation is some ten changes of processes, which on a busy machine all wait for their turn."""
        options |= {"stdin": subprocess.DEVNULL, "stdout": stdout, "env": self.environment}

        def size():
            return log.stat().st_size if log and log.exists() else 0

        with subprocess.Popen(self.command(*command), **options) as process:
            before, looks = size(), 0
            while looks < PATIENCE // LOOK:
                try:
                    printed, _ = process.communicate(timeout=LOOK)
                    return subprocess.CompletedProcess(command, process.returncode, printed)
                except subprocess.TimeoutExpired:
                    looks = looks + 1 if size() == before else 0
                    before = size()
            subprocess.run(self.command("wineserver", "--kill"), timeout=PATIENCE, stdin=subprocess.DEVNULL)
            process.kill()
        raise Hung(f"no end of {command}")

    def msiexec(self, verb, package, folder, *options, level="/qn"):
        """An installation (verb /i) or removal (/x), silent but for another level, that writes its log to `folder`."""
        log = self.drive / folder / "msiexec.log"
        log.unlink(missing_ok=True)
        command = ["wine", "msiexec", verb, package, level, "/l*v", rf"C:\{folder}\msiexec.log", *options]
        try:
            status = self.run(*command, log=log).returncode
        except Hung as error:
            # Whoever clears the folder away takes the log with it.
            end = "\n".join(read_text(log).splitlines()[-20:])
            raise Hung(f"{error}; its log ends:\n{end}") from error
        return Run(verb, status, read_text(log))

    def fresh_folder(self, name):
        """An empty folder C:\\name, as a path of the host."""
        folder = self.drive / name
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)
        return folder

    def product_files(self, *homes):
        """Paths below drive C of all files in the maker's folders, and in others, with their sizes; but for the log of the
        preparation wizard, which no package brings."""
        found = {}
        for home in ("Program Files/Korvex", "ProgramData/Korvex", *homes):
            for path in (self.drive / home).rglob("*"):
                if path.is_file() and path.name != WIZARD_LOG:
                    found[path.relative_to(self.drive)] = path.stat().st_size
        return found


def read_text(path):
    """The text of a log, without its carriage returns; empty when there is no such file."""
    path = Path(path)
    return path.read_bytes().decode("cp1252", "replace").replace("\r\n", "\n") if path.exists() else ""


def link_line(home, language):
    """What a link file says of a language's documentation. The program folder is a path below drive C."""
    path = "C:\\" + str(home / "docs" / language).replace("/", "\\")
    return ("path=" + re.sub(r"[:=#!\\]", r"\\\g<0>", path) + "\r\n").encode()


def response_answers(text):
    """The keywords of a response file that has one stanza, and their values."""
    return dict(re.findall(r'^(\w+)="(.*)"$', text, re.MULTILINE))


def published(lines):
    """The properties that primary initialisation has set, and their values, as a trace log tells it."""
    own = [match for match in map(STAMPED.fullmatch, lines) if match and match[1] == "iwiInstallInitPri"]
    sets = [re.fullmatch(r"Property '(\w+)' value set to '(.*)'", match[2]) for match in own]
    values = {match[1]: match[2] for match in sets if match}
    return {name: value for name, value in values.items() if value}


def taken_answers(lines):
    """What iwiWriteDeferredProperties has taken from the response file, by keyword, as a trace log tells it."""
    own = [match for match in map(STAMPED.fullmatch, lines) if match and match[1] == "iwiWriteDeferredProperties"]
    found = [re.fullmatch(r"Property '(\w+)', value '(.*)' from response file", match[2]) for match in own]
    return {match[1]: match[2] for match in found if match}


def trace_problems(lines, actions):
    """What is wrong with the lines of a trace log of an installation or removal that went well and ran so many actions.
    A deferred action that knows no values does not know its log either, and is missing there."""
    odd = [line for line in lines if not STAMPED.fullmatch(line.removeprefix(">>"))]
    problems = [f"odd line in the trace log: {line}" for line in odd]
    own = [match for match in map(STAMPED.fullmatch, lines) if match]
    problems += [f"failure in the trace log: {match[0]}" for match in own if match[2].startswith("***")]
    problems += [
        f"result in the trace log: {match[0]}" for match in own if re.fullmatch("Returning with rc [1-9].*", match[2])
    ]
    returned = sum(match[2].startswith("Returning with rc ") for match in own)
    if returned != actions:
        problems.append(f"the trace log shows the results of {returned} actions; {actions} ran")
    # What making the log's folder has left in the log is deleted before the log is named.
    first = own[1:] if own and own[0][2].startswith("Deleted file: ") else own
    named = ("iwiStartLogs", "Property 'ZQVUSERTRACEPATH' value set to '")
    if not first or first[0][1] != named[0] or not first[0][2].startswith(named[1]):
        problems.append("the trace log does not begin with iwiStartLogs naming it")
    if not own or own[-1].groups() != ("iwiCleanUpFinal", "Returning with rc 0"):
        problems.append("the trace log does not end with iwiCleanUpFinal returning 0")
    return problems
