"""Installations that show their dialogs, on a virtual display, for the demo and the engine tests."""

import re
import subprocess
import threading
import time
from pathlib import Path

from installation import PATIENCE, Hung

SIZE = "1024x768"
FONTS = Path("/usr/share/wine/fonts")


class Screen:
    """A virtual display, which all that starts in the machine sees until `close`."""

    def __init__(self, machine, driver):
        """`driver` is the program that uses dialogs."""
        self.machine = machine
        self.driver = driver
        self.started = []
        # Those of Wine's own fonts that it does not find itself: among them the one that dialogs are made for.
        for font in FONTS.glob("*.ttf"):
            link = machine.drive / "windows/Fonts" / font.name
            link.unlink(missing_ok=True)
            link.symlink_to(font)
        # A desktop that was made without a display would stay without one. What is killed while it starts might make
        # it.
        machine.wine("wineserver", "--wait")
        command = ["Xvfb", "-displayfd", "1", "-screen", "0", f"{SIZE}x24", "-nolisten", "tcp"]
        self.server = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        machine.environment["DISPLAY"] = ":" + self.server.stdout.readline().strip()
        # There is no window manager: Wine is to draw the frames itself.
        machine.wine("wine", "reg", "add", r"HKCU\Software\Wine\X11 Driver", "/v", "Managed", "/d", "N", "/f")

    def start(self, *command):
        """Starts a Windows program with pipes, which `close` ends."""
        pipes = {"stdin": subprocess.PIPE, "stdout": subprocess.PIPE, "stderr": subprocess.DEVNULL, "encoding": "utf-8"}
        command = self.machine.command("wine", *command)
        self.started.append(subprocess.Popen(command, env=self.machine.environment, **pipes))
        return self.started[-1]

    def open(self, package, folder, *options):
        """Begins an installation of the package, with its log in the folder below drive C."""
        log = rf"C:\{folder}\msiexec.log"
        process = self.start(self.driver, "msiexec", "/i", package.path, "/l*v", log, *options)
        return Dialogs(self.machine, package, process)

    def close(self):
        self.machine.wine("wineserver", "--kill")
        del self.machine.environment["DISPLAY"]
        for process in (self.server, *self.started):
            process.kill()
            process.communicate()


class Dialogs:
    """An installation of the package that shows its dialogs, and whoever uses them. Dialogs, controls and radio buttons
    go by their keys in the package's tables, whatever its language."""

    def __init__(self, machine, package, process):
        self.machine = machine
        self.package = package
        self.process = process
        self.titles = {self.shown(row["Title"]): row["Dialog"] for row in package.table("Dialog")}
        self.texts = {(row["Dialog_"], row["Control"]): row["Text"] for row in package.table("Control")}
        self.choices = {(row["Property"], row["Value"]): row["Text"] for row in package.table("RadioButton")}
        self.key = self.area = self.status = None

    def walk(self, *steps, status=0, pictures=None):
        """Each step is a dialog's key, the rows of its lists (None: any), and how it is used and left. Behind the last
        one the installation ends with the status; None: it does not end there. `pictures` is a folder for a picture of
        each."""
        parent = last = None

        def follows(expected):
            # Two may be seen or not, for a moment: that of a short progress, and the one below a dialog that ends all.
            while self.next() != expected and self.key and self.key in ("ProgressDlg", parent):
                pass
            return self.key == expected

        for key, rows, *uses in steps:
            if not follows(key) or rows not in (None, self.rows()):
                raise AssertionError(f"{self.key} with {self.rows()}; expected: {key} with {rows}")
            if pictures and not (picture := pictures / f"{key}.png").exists():
                self.picture(picture)
            for use in uses:
                self.use(use)
            parent, last = last, key
        if status is not None and (not follows(None) or self.status != status):
            raise AssertionError(f"{self.key}, result {self.status}; expected: the end with result {status}")

    def shown(self, text):
        """A text of the tables as it is on the screen."""
        text = re.sub(r"^\{[\\&].*?\}", "", text)
        return re.sub(r"\[(\w+)\]", lambda match: self.package.properties.get(match[1], ""), text)

    def order(self, *fields):
        """The lines that answer an order, each a list of its fields."""
        self.process.stdin.write("\t".join(map(str, fields)) + "\n")
        self.process.stdin.flush()
        # What hangs ends with all else, and the answer with it.
        hung = threading.Timer(PATIENCE, self.machine.wine, ("wineserver", "--kill"))
        hung.start()
        lines = []
        try:
            while (line := self.process.stdout.readline()) != ".\n":
                if not line:
                    raise Hung(f"no answer to {fields} in {self.key}")
                lines.append(line.rstrip("\n").split("\t"))
        finally:
            hung.cancel()
        return lines

    def next(self):
        """Waits for the dialog that follows, and gives its key, a message box's title, or None at the end, when
        `status` is the result."""
        what, *fields = self.order("next")[0]
        if what == "end":
            self.key, self.status = None, int(fields[0])
        else:
            self.key = self.titles.get(fields[0], fields[0])
            self.area = tuple(map(int, fields[1:]))
        return self.key

    def rows(self):
        """The rows of all list boxes of the dialog."""
        return [text for kind, _, text in self.order("look") if kind == "row"] if self.key else []

    def use(self, use):
        """Presses a button, chooses a radio button, which is a property and its value, or gives an order."""
        if use not in self.choices and isinstance(use, tuple):
            answer = self.order(*use)
        else:
            text = self.choices.get(use) or self.texts.get((self.key, use), use)
            answer = self.order("press", self.shown(text))
        if answer:
            raise AssertionError(f"{self.key} has no {use}: {self.order('look')}")

    def wait_for(self, part):
        """Waits until a text of the dialog has this part."""
        hang = time.monotonic() + PATIENCE
        while not any(part in fields[-1] for fields in self.order("look")):
            if time.monotonic() > hang:
                raise Hung(f"no {part} in {self.key}")

    def picture(self, path):
        """Takes a picture of the dialog, once it has been painted."""
        left, top, width, height = self.area
        command = ["maim", "--hidecursor", "--geometry", f"{width}x{height}+{left}+{top}"]
        self.order("painted")
        before, now = None, b""
        while now != before:  # what is painted comes to the display a little later
            time.sleep(0.1)
            before, now = now, subprocess.run(
                command, env=self.machine.environment, check=True, capture_output=True
            ).stdout
        Path(path).write_bytes(now)
