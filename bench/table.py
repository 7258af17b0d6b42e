#!/usr/bin/env python3
"""Prints what the library costs: a figure, its floor measured in the same run, and the ratio of the two.

    table.py BUILD [FILES...]

BUILD holds the folders bench and windows, built. FILES are the sizes of the trees that are copied and deleted: 1000,
10000 and 100000 if none is given, the last of which takes some minutes. What stands behind the colon is the floor.
Figures are medians of several runs; the ratio is the median of theirs, and behind it are the lowest and the highest.
A mark tells that a ratio is beyond the expected one. The exit status tells only of counts that differ, as times depend
on the machine.
"""
import json
import pathlib
import statistics
import subprocess
import sys

# How a row begins; its expected ratio under Wine, or its exact count of calls; how far above that a ratio may be.
EXPECTED = {
    "size of the DLL": (2.52, 0.05),
    "load, unload": (1.30, 0.15),
    "first action": (1.30, 0.15),
    "log line": (1.03, 0.10),
    "rows": (1.02, 0.10),
    "copy": (1.15, 0.25),
    "delete": (1.10, 0.25),
    "response file, 100 lines": (2.30, 0.15),
    "response file, 1000 lines": (2.30, 0.15),
    "response file, 10000 lines": (2.30, 0.15),
    "response file, 100000 lines": (2.75, 0.15),
    "installer calls, a log line": (4, 0),
    "installer calls, a property read": (5, 0),
    "installer calls, a row of 5 fields": (37, 0),
}


def windows_rows(folder, sizes):
    library, empty = ((folder / name).stat().st_size for name in ("zqviwicn.dll", "throwing_action.dll"))
    rows = {("size of the DLL: an empty one in C++ that throws", "KB"): [(library / 1024, empty / 1024)]}
    wine_env = pathlib.Path(__file__).parents[1] / "tools" / "wine-env"
    report = subprocess.run([wine_env, folder.parent / "wine", "wine", "windows_bench.exe", *sizes], cwd=folder,
                            check=True, stdout=subprocess.PIPE, text=True).stdout
    for line in report.splitlines():
        name, own, floor = line.split("\t")
        rows.setdefault((name, "us"), []).append((float(own), float(floor)))
    return rows


def host_rows(program):
    report = json.loads(subprocess.run(
        [program, "--benchmark_format=json", "--benchmark_repetitions=7", "--benchmark_min_time=0.05",
         "--benchmark_enable_random_interleaving=true"], check=True, stdout=subprocess.PIPE, text=True).stdout)
    runs = [run for run in report["benchmarks"] if run["run_type"] == "iteration"]
    counts, times = {}, {}
    for run in sorted(runs, key=lambda run: run["family_index"]):
        name, side = run["run_name"].split("/", 1)
        if "own" in run:
            counts[name, "calls"] = [(run["own"], run["floor"])]
        else:
            times.setdefault((name, "us"), {"own": [], "floor": []})[side].append(run["cpu_time"] / 1e3)
    return {row: list(zip(sides["own"], sides["floor"])) for row, sides in times.items()} | counts


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    rows = windows_rows(build / "windows", sys.argv[2:] or ["1000", "10000", "100000"])
    rows |= host_rows(build / "bench" / "bench" / "host_bench")
    print(f'{"what: its floor":62} {"measured":>10} {"floor":>10} {"":5} {"ratio":>6} {"(min..max)":14} expected')
    differ = False
    for (name, unit), runs in rows.items():
        own, floor = map(statistics.median, zip(*runs))
        ratios = [a / b for a, b in runs]
        ratio = statistics.median(ratios)
        spread = f"({min(ratios):.2f}..{max(ratios):.2f})"
        expected, tolerance = next(value for start, value in EXPECTED.items() if name.startswith(start))
        if unit == "calls":
            text = f"{expected} calls"
            mark = "<- differs" if own != expected else ""
            differ |= bool(mark)
        else:
            text = f"{expected:.2f} +{tolerance:.0%}"
            mark = "<- beyond" if ratio > expected * (1 + tolerance) else ""
        print(f"{name:62} {own:10,.2f} {floor:10,.2f} {unit:5} {ratio:6.2f} {spread:14} {text:10} {mark}".rstrip())
    sys.exit(1 if differ else 0)


if __name__ == "__main__":
    main()
