#!/usr/bin/env python3
"""bench/reach.py [--repeats N] [--other PROGRAM …]

Measures the conversions in memory against what they aim at and puts the table into docs/performance.md.
A figure is the least processor time of all repeats. --other: a second benchmark program and the words before it
(the Windows build: tools/wine-environment.sh wine build/windows/bin/skyvault-bench.exe), for the last row.
"""
import argparse
import json
import os
import subprocess

PROGRAM = "build/native/bin/skyvault-bench"
PAGE = "docs/performance.md"
BEGIN, END = "<!-- reach: begin -->", "<!-- reach: end -->"

STRAIGHT, TURNED = "/threads:1/turned:0", "/threads:1/turned:1"
TO_FACES, FROM_FACES = "EquirectangularToFaces", "FacesToEquirectangular"
PLAIN, OBLIQUE = "EquirectangularStraight/1", "EquirectangularTurned/1"
VORONOI = "/process_time/real_time"

# What, the benchmark, and its aim in ns a pixel; None: no aim.
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

# What, the benchmark, what it is compared with, and the most it should be.
RATIOS = [
    ("equirectangular → six faces ÷ the mere fetch", TO_FACES + STRAIGHT, "FetchToFaces", 1.2),
    ("the same, turned", TO_FACES + TURNED, "FetchToFacesTurned", 1.2),
    ("six faces → equirectangular ÷ the mere fetch", FROM_FACES + STRAIGHT, "FetchFromFaces", 1.2),
    ("the same, turned", FROM_FACES + TURNED, "FetchFromFacesTurned", 1.2),
    ("two threads ÷ one (wall time)", "EquirectangularTurned/2/real_time", OBLIQUE, 0.55),
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
    ("Voronoi, every one of 2000 points asked ÷ ours (at least 80)", "VoronoiEverySeed/2000" + VORONOI,
     "VoronoiHard/points:2000/border:0" + VORONOI, None),
]


def measure(program, names, repeats):
    """Nanoseconds per pixel (or per pixel and point) of each benchmark, the least of all repeats."""
    pattern = "|".join(f"^{name}$" for name in sorted(names))
    answer = subprocess.run(
        program + ["--benchmark_filter=" + pattern, f"--benchmark_repetitions={repeats}",
                   "--benchmark_min_time=0.05", "--benchmark_format=json"],
        check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout
    least = {}
    for run in json.loads(answer[answer.index(b"{"):])["benchmarks"]:
        if run.get("run_type") == "aggregate":
            continue
        counters = [key for key in run if key.startswith("time/G")]
        name = run["run_name"]
        least[name] = min(least.get(name, 1e99), run[counters[0]] * per_point(name))
    return least


def per_point(name):
    return 1 / 200 if name.startswith("VoronoiSmooth/points:200") else 1


def publish(lines):
    with open(PAGE, encoding="utf-8") as page:
        text = page.read()
    before, rest = text.split(BEGIN)
    after = rest.split(END)[1]
    with open(PAGE, "w", encoding="utf-8") as page:
        page.write(before + BEGIN + "\n" + "\n".join(lines) + "\n" + END + after)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--repeats", type=int, default=9)
    parser.add_argument("--other", nargs="+", default=[])
    options = parser.parse_args()
    names = {row[1] for row in TIMES} | {row[1] for row in RATIOS} | {row[2] for row in RATIOS}
    ours = measure([PROGRAM], names, options.repeats)
    lines = [f"Best of {options.repeats}; load of the machine {os.getloadavg()[0]:.1f}.", "",
             "| one thread, AVX2 | ns | aim |", "|---|---|---|"]
    for what, name, aim in TIMES:
        lines.append(f"| {what} | {ours[name]:.2f} | {aim if aim else ''} |")
    lines += ["", "| ratio | measured | at most |", "|---|---|---|"]
    for what, name, base, most in RATIOS:
        lines.append(f"| {what} | {ours[name] / ours[base]:.2f} | {most if most else ''} |")
    if options.other:
        pair = {TO_FACES + STRAIGHT, OBLIQUE}
        other = measure(options.other, pair, options.repeats)
        for what, name in (("Windows build under Wine ÷ native, to faces", TO_FACES + STRAIGHT),
                           ("the same, turned equirectangular", OBLIQUE)):
            lines.append(f"| {what} | {other[name] / ours[name]:.2f} | 1.15 |")
    print("\n".join(lines))
    publish(lines)


main()
