#!/usr/bin/env python3
"""Measures conversions in memory and compares the figures with their targets.

Prints the tables, puts them into docs/performance.md and exits with 1 when a target is missed in a quiet run. A run
is quiet when the load of the machine was at most 0.5 before it (nothing else had run for a minute) and the
benchmarks of one thread took at most 5 % more wall time than processor time. In any other run, misses are marked but
do not count: the exit status is 0.

The benchmarks run in a random order, one short repetition at a time, so that both sides of a ratio meet the same
machine. A figure is the least processor time of all repetitions.
"""
import argparse
import json
import os
import subprocess
import sys

PROGRAM = "build/native/bin/skyvault-bench"
PAGE = "docs/performance.md"
BEGIN, END = "<!-- targets: begin -->", "<!-- targets: end -->"

STRAIGHT, TURNED = "/threads:1/turned:0", "/threads:1/turned:1"
TO_FACES, FROM_FACES = "EquirectangularToFaces", "FacesToEquirectangular"
PLAIN, OBLIQUE = "EquirectangularStraight/1", "EquirectangularTurned/1"
VORONOI = "/process_time/real_time"

# What, the benchmark, and its target in ns a pixel; None: measured only.
TIMES = [
    ("equirectangular → itself", PLAIN, None),
    ("the same, turned", OBLIQUE, None),
    ("equirectangular → six faces", TO_FACES + STRAIGHT, 3.5),
    ("the same, turned", TO_FACES + TURNED, 4.5),
    ("six faces → equirectangular", FROM_FACES + STRAIGHT, 3.0),
    ("the same, turned", FROM_FACES + TURNED, 5.0),
    ("Voronoi, smooth, power 2, a point (of 200)", "VoronoiSmooth/points:200/power:20" + VORONOI, 0.35),
    ("Voronoi, smooth, power 2.5, a point (of 200)", "VoronoiSmooth/points:200/power:25" + VORONOI, 1.6),
    ("blobs, a point", "Pull/1", 0.22),
]

# What, the benchmark, what its time is divided by, and the most the ratio should be; None: measured only.
RATIOS = [
    ("equirectangular → six faces ÷ the mere fetch", TO_FACES + STRAIGHT, "FetchToFaces", 1.2),
    ("the same, turned", TO_FACES + TURNED, "FetchToFacesTurned", 1.2),
    ("six faces → equirectangular ÷ the mere fetch", FROM_FACES + STRAIGHT, "FetchFromFaces", 1.2),
    ("the same, turned", FROM_FACES + TURNED, "FetchFromFacesTurned", 1.2),
    ("two threads ÷ one (wall time)", "EquirectangularTurned/2/real_time", OBLIQUE, 0.55),
    ("equirectangular turned ÷ not turned", OBLIQUE, PLAIN, 1.6),
    ("antialiased to half the source's size ÷ plain", "EquirectangularAntialiased/1", PLAIN, 4.2),
    ("antialiased to the source's size ÷ plain", "EquirectangularAntialiasedFull/1", PLAIN, 4.2),
    ("16384 × 8192 ÷ 4096 × 2048", "EquirectangularOfWidth/threads:1/width:16384/turned:0",
     "EquirectangularOfWidth/threads:1/width:4096/turned:0", 1.3),
    ("the same, turned", "EquirectangularOfWidth/threads:1/width:16384/turned:1",
     "EquirectangularOfWidth/threads:1/width:4096/turned:1", 1.3),
    ("SSE4 ÷ AVX2", "EquirectangularTurnedBaseline/1", OBLIQUE, 2.6),
]
for change in ("flipped", "mirrored", "logo", "horizon"):
    RATIOS.append((f"{change} ÷ turned", f"EquirectangularModified/{change}/1",
                   "EquirectangularModified/nothing/1", 1.6))
for pixels in ("Grey8", "Rgba8", "Rgb16", "Rgba16", "RgbaHalf"):
    RATIOS.append((f"{pixels} ÷ Rgb8", f"EquirectangularOfFormat/{pixels}/1",
                   "EquirectangularOfFormat/Rgb8/1", 1.6))
RATIOS += [
    ("Voronoi, 2000 points ÷ 20", "VoronoiHard/points:2000/border:0" + VORONOI,
     "VoronoiHard/points:20/border:0" + VORONOI, 3.0),
]

# The same, and the least the ratio should be.
GAINS = [
    ("Voronoi, comparing with each of 2000 points ÷ by cells", "VoronoiEverySeed/2000" + VORONOI,
     "VoronoiHard/points:2000/border:0" + VORONOI, 80),
]


# One thread and nothing else: their wall time is their processor time on a machine that is theirs.
QUIET_LOAD, QUIET_EXCESS = 0.5, 1.05


class Run:
    """Figures of one program: nanoseconds per pixel (or per pixel and point), the least of all repetitions."""

    def __init__(self, program, names, repetitions):
        pattern = "|".join(f"^{name}$" for name in sorted(names))
        answer = subprocess.run(
            program + ["--benchmark_filter=" + pattern, f"--benchmark_repetitions={repetitions}",
                       "--benchmark_enable_random_interleaving=true",
                       "--benchmark_min_time=0.05", "--benchmark_format=json"],
            check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout
        answer = json.loads(answer[answer.index(b"{"):])
        self.kernels = answer["context"]["kernels"]
        self.figures = {}
        wall = processor = 0.0
        for run in answer["benchmarks"]:
            if run.get("run_type") == "aggregate":
                continue
            name = run["run_name"]
            counter = next(key for key in run if key.startswith("time/G"))
            figure = run[counter] / (200 if name.startswith("VoronoiSmooth/points:200") else 1)
            self.figures[name] = min(self.figures.get(name, figure), figure)
            if not name.endswith("/real_time"):
                wall += run["real_time"] * run["iterations"]
                processor += run["cpu_time"] * run["iterations"]
        self.excess = wall / processor


def processor_name():
    with open("/proc/cpuinfo", encoding="utf-8") as info:
        for line in info:
            if line.startswith("model name"):
                return line.split(":", 1)[1].strip()
    return "unknown processor"


class Tables:
    """Lines of the page; counts the targets missed."""

    def __init__(self, lines):
        self.lines, self.missed = lines, 0

    def head(self, *titles):
        self.lines += ["", f"| {' | '.join(titles)} |", "|---" * len(titles) + "|"]

    def row(self, what, figure, most=None, least=None):
        # As it is read: a figure that rounds to its target has met it.
        read = round(figure, 2)
        miss = (most is not None and read > most) or (least is not None and read < least)
        self.missed += miss
        target = f"{most}" if most is not None else f"at least {least}" if least is not None else ""
        self.lines.append(f"| {what} | {figure:.2f} | {target}{', missed' if miss else ''} |")


def publish(lines):
    with open(PAGE, encoding="utf-8") as page:
        text = page.read()
    before, rest = text.split(BEGIN)
    after = rest.split(END)[1]
    with open(PAGE, "w", encoding="utf-8") as page:
        page.write(before + BEGIN + "\n" + "\n".join(lines) + "\n" + END + after)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--repetitions", type=int, default=9)
    parser.add_argument("--other", nargs="+", default=[], metavar="WORD",
                        help="a second program, for the last rows: tools/wine-environment.sh wine "
                             "build/windows/bin/skyvault-bench.exe")
    options = parser.parse_args()
    names = {row[1] for row in TIMES} | {name for row in RATIOS + GAINS for name in row[1:3]}
    load = os.getloadavg()[0]
    run = Run([PROGRAM], names, options.repetitions)
    ours = run.figures
    quiet = load <= QUIET_LOAD and run.excess <= QUIET_EXCESS
    tables = Tables([f"{processor_name()}, {run.kernels} kernels; best of {options.repetitions}; "
                     f"{'a quiet' if quiet else 'not a quiet'} run: load {load:.1f} before it, "
                     f"wall time {run.excess:.2f} × processor time."])
    tables.head("one thread", "ns", "target")
    for what, name, target in TIMES:
        tables.row(what, ours[name], target)
    tables.head("ratio", "measured", "at most")
    for what, name, base, most in RATIOS:
        tables.row(what, ours[name] / ours[base], most)
    for what, name, base, least in GAINS:
        tables.row(what, ours[name] / ours[base], least=least)
    if options.other:
        other = Run(options.other, {TO_FACES + STRAIGHT, OBLIQUE}, options.repetitions)
        quiet = quiet and other.excess <= QUIET_EXCESS
        for what, name in (("Windows build under Wine ÷ native, to faces", TO_FACES + STRAIGHT),
                           ("the same, turned equirectangular", OBLIQUE)):
            tables.row(what, other.figures[name] / ours[name], 1.15)
    print("\n".join(tables.lines))
    publish(tables.lines)
    print(f"{tables.missed} of the targets missed" + ("" if quiet else "; not a quiet run, so that they do not count"))
    return 1 if quiet and tables.missed else 0


sys.exit(main())
