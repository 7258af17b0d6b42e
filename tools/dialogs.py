"""Installations that show their dialogs, on a virtual display, for the demo and the engine tests."""

import re
import subprocess
import threading
import time
from dataclasses import dataclass
from pathlib import Path

from installation import PATIENCE, Hung

SIZE = "1024x768"
FONTS = Path("/usr/share/wine/fonts")
MESSAGE_BOX = "MessageBox"


class Screen:
    """A virtual display, which all that starts in the machine sees until `close`."""

    def __init__(self, machine):
        self.machine = machine
        # Those of Wine's own fonts that it does not find itself: among them the one that dialogs are made for.
        for font in FONTS.glob("*.ttf"):
            link = machine.drive / "windows/Fonts" / font.name
            link.unlink(missing_ok=True)
            link.symlink_to(font)
        # A desktop that was made without a display would stay without one. What is killed while it starts might make it.
        machine.wine("wineserver", "--wait")
        command = ["Xvfb", "-displayfd", "1", "-screen", "0", f"{SIZE}x24", "-nolisten", "tcp"]
        self.server = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        machine.environment["DISPLAY"] = ":" + self.server.stdout.readline().strip()
        # There is no window manager: Wine is to draw the frames itself.
        machine.wine("wine", "reg", "add", r"HKCU\Software\Wine\X11 Driver", "/v", "Managed", "/d", "N", "/f")

    def close(self):
        self.machine.wine("wineserver", "--kill")
        del self.machine.environment["DISPLAY"]
        self.server.kill()
        self.server.communicate()


@dataclass
class Control:
    """What can be seen of a control; of a list box, its rows too."""

    kind: str
    states: set
    text: str
    rows: list


class Dialogs:
    """An installation of the package that shows its dialogs, and whoever uses them. Dialogs, controls and radio buttons
    go by their keys in the package's tables, whatever its language."""

    def __init__(self, machine, package, driver, verb, folder, *options):
        self.package = package
        self.machine = machine
        self.titles = {self.shown(row["Title"]): row["Dialog"] for row in package.table("Dialog")}
        self.controls = {(row["Dialog_"], row["Control"]): row["Text"] for row in package.table("Control")}
        self.radio = {(row["Property"], row["Value"]): row["Text"] for row in package.table("RadioButton")}
        self.key, self.area, self.status = None, None, None
        command = ["wine", driver, "msiexec", verb, package.path, "/l*v", rf"C:\{folder}\msiexec.log", *options]
        pipes = {"stdin": subprocess.PIPE, "stdout": subprocess.PIPE, "stderr": subprocess.DEVNULL}
        self.process = subprocess.Popen(
            machine.command(*command), **pipes, env=machine.environment, encoding="utf-8"
        )

    def shown(self, text):
        """A text of the tables as it is on the screen."""
        text = re.sub(r"^\{[\\&].*?\}", "", text)
        return re.sub(r"\[(\w+)\]", lambda match: self.package.properties.get(match[1], ""), text)

    def order(self, *fields):
        """The lines that answer an order, each a list of its fields."""
        self.process.stdin.write("\t".join(map(str, fields)) + "\n")
        self.process.stdin.flush()
        hung = threading.Timer(PATIENCE, self.machine.wine, ("wineserver", "--kill"))
        hung.start()
        lines = list(iter(lambda: self.process.stdout.readline().rstrip("\n"), "."))
        hung.cancel()
        return [line.split("\t") for line in lines]

    def next(self):
        """Waits for the dialog that follows, and gives its key, or None at the end, when `status` is the result."""
        found = self.order("next")[0]
        if found[0] == "end":
            self.key, self.status = None, int(found[1])
            return None
        self.key = self.titles.get(found[1], found[1])
        self.area = tuple(map(int, found[2:]))
        return self.key

    def look(self):
        controls = []
        for kind, states, text in self.order("look"):
            if kind == "row":
                controls[-1].rows.append(text)
            else:
                controls.append(Control(kind, set(states.split()), text, []))
        return controls

    def press(self, control):
        self.press_text(self.shown(self.controls.get((self.key, control), control)))

    def choose(self, group, value):
        self.press_text(self.shown(self.radio[group, value]))

    def press_text(self, text):
        if self.order("press", text):
            raise AssertionError(f"no button '{text}' in {self.key}: {self.look()}")

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
