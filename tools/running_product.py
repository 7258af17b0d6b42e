"""The installed reference product, set running in a Wine prefix, for the demo and the engine tests."""

import subprocess
import time

PROGRAMS = "Program Files/Korvex/Vantrel QV/bin"
DATA = "ProgramData/Korvex/Vantrel QV"
SERVICES = r"HKLM\System\CurrentControlSet\Services"


class RunningProduct:
    """What runs of the product, and what was made for it to run; `end` takes away all of it."""

    def __init__(self, machine):
        self.machine = machine
        self.programs = machine.drive / PROGRAMS
        self.processes = []
        self.services = []

    def path(self, program):
        """A program's path as Windows knows it."""
        return "C:\\" + f"{PROGRAMS}/{program}".replace("/", "\\")

    def start(self, program, *manager):
        """Starts a program that stays, and gives its process once it holds its file."""
        command = self.machine.command("wine", self.path(program), "-hold", *manager)
        process = subprocess.Popen(command, env=self.machine.environment, stdout=subprocess.PIPE, text=True)
        self.processes.append(process)
        if process.stdout.readline().strip() != "holding":
            raise RuntimeError(f"{program} does not start")
        return process

    def register_service(self, name, display, stop):
        """Registers the service program under a name; it will take `stop` milliseconds to stop."""
        self.services.append(name)
        program = f'"{self.path("zqvsvc.exe")}" -stop {stop}'
        self.call("sc", "create", name, "binPath=", program, "DisplayName=", display)

    def start_services(self):
        self.call(self.path("zqvsvc.exe"), "-START", "-SILENT")

    def display_name(self, service):
        key = self.machine.read("wine", "reg", "query", rf"{SERVICES}\{service}", "/v", "DisplayName")
        return key.split("REG_SZ", 1)[1].strip()

    def list_queue_managers(self, *lines):
        (self.machine.drive / DATA / "zqvqmgrs.txt").write_text("\n".join(lines) + "\n")

    def outlived(self):
        """How many of the started processes are still there, after a moment for those that are just ending."""
        end = time.monotonic() + 5
        while time.monotonic() < end and any(process.poll() is None for process in self.processes):
            time.sleep(0.1)
        return sum(process.poll() is None for process in self.processes)

    def end(self):
        for process in self.processes:
            process.kill()
            process.wait()
            process.stdout.close()
        for name in self.services:
            self.machine.wine("wine", "sc", "stop", name)
            self.machine.wine("wine", "sc", "delete", name)
        (self.machine.drive / DATA / "zqvqmgrs.txt").unlink(missing_ok=True)
        self.processes, self.services = [], []

    def call(self, *command):
        if self.machine.wine("wine", *command) != 0:
            raise RuntimeError(f"{command} failed")
