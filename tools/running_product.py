"""The installed reference product, set running in a Wine prefix, for the demo and the engine tests."""

import subprocess
import threading

from installation import PATIENCE, read_text

PROGRAMS = "Program Files/Korvex/Vantrel QV/bin"
DATA = "ProgramData/Korvex/Vantrel QV"
STOP_FILE = "zqvstop"
LOOKS = 3  # before the wait, and before each of two pauses of half a second
SERVICES = r"HKLM\System\CurrentControlSet\Services"


class RunningProduct:
    """What runs of the product, and what was made for it to run; `end` takes away all of it."""

    def __init__(self, machine, programs=PROGRAMS, data=DATA):
        """The folders of its programs and of its data, below drive C."""
        self.machine = machine
        self.programs = machine.drive / programs
        self.data = machine.drive / data
        self.processes = []
        self.services = []
        # It stays behind, for a service that has not looked yet.
        self.stop_file = machine.drive / STOP_FILE
        self.stop_file.unlink(missing_ok=True)
        self.ended = threading.Event()

    def path(self, program):
        """A program's path as Windows knows it."""
        return "C:\\" + windows((self.programs / program).relative_to(self.machine.drive))

    def start(self, program, *manager):
        """Starts a program that stays, and gives its process once it holds its file."""
        command = self.machine.command("wine", self.path(program), "-hold", *manager)
        process = subprocess.Popen(command, env=self.machine.environment, stdout=subprocess.PIPE, text=True)
        self.processes.append(process)
        if process.stdout.readline().strip() != "holding":
            raise RuntimeError(f"{program} does not start")
        return process

    def register_service(self, name, display, lingers=False):
        """Registers the service program under a name. A service that lingers does not stop before `let_stop`."""
        self.services.append(name)
        program = f'"{self.path("zqvsvc.exe")}"' + (rf" -stop C:\{STOP_FILE}" if lingers else "")
        self.call("sc", "create", name, "binPath=", program, "DisplayName=", display)

    def let_stop(self):
        self.stop_file.touch()

    def let_stop_once_seen(self, service, trace):
        """Lets the services that linger stop, meanwhile, once a deferred action has looked at one several times. `trace`
        is the trace log."""

        def watch():
            while not self.ended.wait(0.05):
                seen = read_text(trace).rpartition("Deferred execution")
                if seen[1] and seen[2].count(f"Service '{service}' is running") >= LOOKS:
                    return self.let_stop()

        threading.Thread(target=watch, daemon=True).start()

    def start_services(self):
        self.call(self.path("zqvsvc.exe"), "-START", "-SILENT")

    def display_name(self, service):
        key = self.machine.read("wine", "reg", "query", rf"{SERVICES}\{service}", "/v", "DisplayName")
        return key.split("REG_SZ", 1)[1].strip()

    def list_queue_managers(self, *lines):
        (self.data / "zqvqmgrs.txt").write_text("\n".join(lines) + "\n")

    def outlived(self):
        """How many of the started processes are still there, after a while for those that are just ending."""
        try:
            for process in self.processes:
                process.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            pass
        return sum(process.poll() is None for process in self.processes)

    def end(self):
        self.ended.set()
        self.let_stop()
        for process in self.processes:
            process.kill()
            process.wait()
            process.stdout.close()
        for name in self.services:
            self.machine.wine("wine", "sc", "stop", name)
            self.machine.wine("wine", "sc", "delete", name)
        (self.data / "zqvqmgrs.txt").unlink(missing_ok=True)
        self.processes, self.services = [], []

    def call(self, *command):
        if self.machine.wine("wine", *command) != 0:
            raise RuntimeError(f"{command} failed")


def windows(path):
    return str(path).replace("/", "\\")
