#!/usr/bin/env python3
"""Runs what measures and shows what came of it. Started by ./dev bench.

Times are of the processor, a process's own and the system's for it; ratios are speeds: 0.8 of the bound takes 1.25 times
as long as the bound.
"""
import argparse
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile

import growth
from verdict import counted, ratio, speed, verdict

QUICK = ["--side", "1024", "--pages", "1000", "--files", "1000", "--huge", "2048", "--seconds", "0.1", "--rounds", "5"]
COUNTING = ["--side", "512", "--pages", "200", "--files", "100", "--counting", "1", "--seconds", "0", "--rounds", "1"]


def machine():
    """In general terms: what a reader compares with."""
    cpu = re.search(r"^model name\s*: (.*)$", pathlib.Path("/proc/cpuinfo").read_text(), re.M)
    memory = int(re.search(r"^MemTotal: *(\d+)", pathlib.Path("/proc/meminfo").read_text(), re.M)[1])
    system = dict(re.findall(r'^(\w+)="?(.*?)"?$', pathlib.Path("/etc/os-release").read_text(), re.M))
    return {"processor": cpu[1] if cpu else os.uname().machine, "cores": os.cpu_count(),
            "memory": f"{round(memory / 2**20)} GiB", "system": system.get("PRETTY_NAME", "Linux")}


def rows_of(lines):
    """What the programs say, a JSON object a line, as rows with their results."""
    rows = []
    for line in lines:
        said = json.loads(line)
        if "unit" in said:
            rows.append({**said, "results": []})
        else:
            rows[-1]["results"].append(said)
    return rows


def renewed(old, new):
    """The old rows with the new ones in their places, and the others behind them."""
    by_name = {row["row"]: row for row in old + new}
    return list(by_name.values())


def run(programs, arguments, under=()):
    """Both programs' rows; whether all of ours did what they should."""
    rows, is_right = [], True
    environment = dict(os.environ, MAGICK_THREAD_LIMIT="1", OMP_NUM_THREADS="1")
    for name in ("vxbench-filter", "vxbench"):
        done = subprocess.run([*under, programs / name, *arguments], env=environment, text=True, stdout=subprocess.PIPE)
        if done.returncode not in (0, 1):
            sys.exit(f"bench: {name} ended with {done.returncode}")
        is_right = is_right and done.returncode == 0
        rows += rows_of(done.stdout.splitlines())
    return rows, is_right


def count(programs, arguments, folder):
    """Instructions an item, of every contender that does its work in the program."""
    rows, is_right = run(programs, [*arguments, *COUNTING],
                         ["valgrind", "-q", "--tool=callgrind", "--instr-atstart=no", f"--callgrind-out-file={folder}/count.%p"])
    items = {row["row"]: row["items"] for row in rows}
    counts = {}
    for path in pathlib.Path(folder).glob("count.*"):
        text = path.read_text()
        label = re.search(r"^desc: Trigger: Client Request: (.*)\|(.*)$", text, re.M)
        total = re.search(r"^(?:totals|summary): (\d+)", text, re.M)
        if label and total:
            counts.setdefault(label[1], {})[label[2]] = round(int(total[1]) / items[label[1]], 3)
    return counts, is_right


def cell(value, goal):
    if value is None:
        return "-"
    return f"{value:.2f}" + (f" ({'' if value >= goal else 'NOT '}{goal:.2f})" if goal else "")


def show(rows, counts):
    print(f"{'':36} {'ours, an item':>14}  {'of the bound (goal)':28} {'of the best peer (goal)':30} instructions: bound, ours")
    for row in rows:
        ours, bound, peer = verdict(row)
        of_bound = cell(ratio(ours, bound), row["of_bound"]) + (f" {bound['name']}" if bound else "")
        of_peer = cell(ratio(ours, peer), row["of_peer"]) + (f" {peer['name']}" if peer else "")
        instructions = counts.get(row["row"], {})
        per_item = " ".join(f"{instructions[result['name']]:g}" for result in row["results"]
                            if result["kind"] != "peer" and result["name"] in instructions)
        print(f"{row['row']:36} {speed(row, ours) if ours else 'FAILED':>14}  {of_bound:28} {of_peer:30} {per_item}")
        for result in row["results"]:
            facts = [f"peak {result['peak'] / 2**20:.0f} MiB"] if result["peak"] else []
            facts += [f"{result['bytes'] / 1e6:.2f} MB"] if result["bytes"] and row["row"].startswith("BMP") else []
            facts += [f"error {result['error']:.1f}"] if result["error"] else []
            if not counted(result):
                facts = [result["fault"] or "no time to speak of"]
            if facts:
                print(f"    {result['name']}: {', '.join(facts)}" + (f", {speed(row, result)}" if counted(result) else ""))


def main():
    parser = argparse.ArgumentParser(prog="./dev bench", description=__doc__, formatter_class=argparse.RawTextHelpFormatter)
    parser.add_argument("programs", type=pathlib.Path, help=argparse.SUPPRESS)
    parser.add_argument("--quick", action="store_true", help="smaller pictures, fewer rounds: less than a minute")
    parser.add_argument("--only", default="", metavar="TEXT", help="rows whose names contain TEXT")
    parser.add_argument("--json", type=pathlib.Path, metavar="FILE", help="keep the figures; those of other runs stay")
    parser.add_argument("--instructions", action="store_true", help="count instructions by callgrind instead of taking time")
    parser.add_argument("--growth", action="store_true", help="time and memory of commands over more and more items, instead")
    options = parser.parse_args()
    kept = json.loads(options.json.read_text()) if options.json and options.json.exists() else {}
    large_folder = options.programs.parent / "files"
    large_folder.mkdir(exist_ok=True)
    is_right = True
    with tempfile.TemporaryDirectory(dir="/dev/shm" if os.access("/dev/shm", os.W_OK) else large_folder) as folder:
        arguments = ["--folder", folder, "--large-folder", large_folder, "--only", options.only]
        if options.instructions:
            counts, is_right = count(options.programs, arguments, folder)
            kept["instructions"] = {**kept.get("instructions", {}), **counts}
        elif options.growth:
            kept["growth"] = growth.measure(growth.Bench(options.programs, folder, large_folder), options.quick)
        else:
            rows, is_right = run(options.programs, [*arguments, *(QUICK if options.quick else [])])
            kept["rows"] = renewed(kept.get("rows", []), rows)
    for file in large_folder.iterdir():
        file.unlink()
    kept["machine"] = machine()
    if options.json:
        options.json.write_text(json.dumps(kept, indent=1))
    show(kept.get("rows", []), kept.get("instructions", {}))
    growth.show(kept.get("growth", []))
    sys.exit(0 if is_right else 1)


main()
