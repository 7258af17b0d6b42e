#!/usr/bin/env python3
"""Prints what the library costs: a figure, its floor measured in the same run, and the ratio of the two.

    table.py BUILD [FILES...]

BUILD holds the folders bench and windows, built. FILES are the sizes of the trees that are copied and deleted: 1000,
10000 and 100000 if none is given, the last of which takes some ten minutes. A ratio above 1.15 is marked with what it
pays for.
"""
import json
import pathlib
import subprocess
import sys

LIMIT = 1.15

# What a ratio above the limit pays for, by how the operation begins.
REASONS = {
    "size": "all that the library does",
    "load": "the size of the image, and its imports",
    "first action": "the load; run modes and properties that its frame asks for",
    "copy": "asks for the cancel marker and for read-only copies",
    "delete": "asks for what a failure means, and whether folders are empty",
    "value list": "sorts the entries, once a load",
    "calls, a log line, no log set": "an empty property is asked for anew, by rule",
    "calls, a primary": "walks tables row by row; run modes, products",
}
# The same, by how the row ends.
FLOOR_REASONS = {
    "rows: bare inserts": "logs 7 lines a row",
    "fgets loop": "keeps and indexes each line",
    "hash map": "keeps the order of the lines besides, and expands %NAME%",
}


def host_rows(program):
    """Runs that take turns, and their medians."""
    report = json.loads(subprocess.run(
        [program, "--benchmark_format=json", "--benchmark_repetitions=7", "--benchmark_min_time=0.05",
         "--benchmark_enable_random_interleaving=true", "--benchmark_report_aggregates_only=true"],
        check=True, stdout=subprocess.PIPE, text=True).stdout)
    in_order = sorted(report["benchmarks"], key=lambda run: run["family_index"])
    medians = {run["run_name"].removesuffix("/iterations:1"): run
               for run in in_order if run["aggregate_name"] == "median"}
    for name, own in medians.items():
        if name.endswith("/own"):
            row = name.removesuffix("/own")
            floor = medians[row + "/floor"]
            if "calls" in own:
                yield row, own["calls"], floor["calls"], "calls"
            else:
                yield row, own["cpu_time"] / 1e3, floor["cpu_time"] / 1e3, "us"


def windows_rows(folder, sizes):
    library, empty = ((folder / name).stat().st_size for name in ("zqviwicn.dll", "throwing_action.dll"))
    yield "size of the DLL: an empty one in C++ that throws", library / 1024, empty / 1024, "KB"
    wine_env = pathlib.Path(__file__).parents[1] / "tools" / "wine-env"
    with subprocess.Popen([wine_env, folder.parent / "wine", "wine", "windows_bench.exe", *sizes], cwd=folder,
                          stdout=subprocess.PIPE, text=True) as bench:
        for line in bench.stdout:
            name, own, floor = line.rstrip("\r\n").split("\t")
            yield name, float(own), float(floor), "us"
    if bench.returncode != 0:
        sys.exit(f"windows_bench.exe ended with {bench.returncode}")


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    rows = [*windows_rows(build / "windows", sys.argv[2:] or ["1000", "10000", "100000"]),
            *host_rows(build / "bench" / "bench" / "host_bench")]
    print(f'{"operation":34} {"figure":>12} {"floor":>12}       {"ratio":>6}   {"the floor is":40}')
    for name, own, floor, unit in rows:
        operation, beside = name.split(": ")
        ratio = own / floor
        reasons = [text for start, text in REASONS.items() if name.startswith(start)]
        reasons += [text for end, text in FLOOR_REASONS.items() if name.endswith(end)]
        mark = f'* {(reasons or ["why?"])[0]}' if ratio > LIMIT else ""
        print(f"{operation:34} {own:12,.2f} {floor:12,.2f} {unit:5} {ratio:6.2f}   {beside:40} {mark}".rstrip())


if __name__ == "__main__":
    main()
