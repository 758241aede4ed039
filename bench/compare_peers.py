"""Times skyvault-cli beside other tools on the same pictures; called by compare-peers.sh.

compare_peers.py FOLDER [--repeats N] [--threads N ...]: FOLDER takes the pictures."""

import argparse
import json
import os
import pathlib
import platform
import re
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
SKYVAULT = str(ROOT / "build/native/bin/skyvault-cli")
OPENCV = [sys.executable, str(ROOT / "bench/peers_opencv.py")]
PAGE = ROOT / "docs/performance.md"
BEGIN, END = "<!-- tables: begin -->", "<!-- tables: end -->"

# Name, heading, source, written pixels. The quickest first: an interrupted run leaves what it has measured.
JOBS = [
    ("view", "Equirectangular 8192 × 4096 → perspective 1920 × 1080", "lake.bmp", 1920 * 1080),
    ("equirectangular", "Six faces of 2048² → equirectangular 8192 × 4096", "cube.bmp", 8192 * 4096),
    ("faces", "Equirectangular 8192 × 4096 → six faces of 2048²", "lake.bmp", 6 * 2048 * 2048),
]


def skyvault(job, source, threads):
    layouts, settings = {
        "view": (("equirectangular", "preview"), ["Resolution3=1", "PreviewFOV=0.5"]),
        "faces": (("equirectangular", "strip-xyz"), ["Resolution0=3"]),
        "equirectangular": (("strip-xyz", "equirectangular"), ["Resolution1=5"]),
    }[job]
    command = [SKYVAULT, "convert", "-q", "--from", layouts[0], "--to", layouts[1], "--threads", str(threads)]
    for setting in ["Antialiasing=N", *settings]:
        command += ["--set", setting]
    return command + [source, f"skyvault-{job}.bmp"], [f"skyvault-{job}.bmp"]


def ffmpeg(job, source, threads):
    view = {
        "view": "e:flat:h_fov=90:v_fov=58.7155:w=1920:h=1080",
        "faces": "e:c6x1:w=12288:h=2048",
        "equirectangular": "c6x1:e:w=8192:h=4096",
    }[job]
    count = ["-threads", str(threads)]
    command = ["ffmpeg", "-loglevel", "error", "-y", "-filter_threads", str(threads), *count, "-i", source,
               "-vf", f"v360={view}:interp=nearest", *count, "-frames:v", "1", "-update", "1", f"ffmpeg-{job}.bmp"]
    return command, [f"ffmpeg-{job}.bmp"]


def nona(job, source, threads):
    """nona takes a project file: an image of the six faces each, or each face a view of its own."""
    del threads  # OMP_NUM_THREADS, set for every tool
    directions = [(90, 0), (-90, 0), (0, 90), (0, -90), (0, 0), (180, 0)]
    whole = 'i f4 w8192 h4096 v360 r0 p{} y{} n"lake.bmp"'
    if job == "view":
        form, page, images = "TIFF", "f0 w1920 h1080 v90", [whole.format(0, 0)]
    elif job == "faces":
        # The picture is turned, not the camera.
        form, page, images = "TIFF_m", "f0 w2048 h2048 v90", [whole.format(-p, -y) for y, p in directions]
    else:
        form, page = "TIFF", "f2 w8192 h4096 v360"
        images = [f'i f0 w2048 h2048 v90 r0 p{p} y{y} n"face{n}.bmp"' for n, (y, p) in enumerate(directions)]
    lines = [f'p {page} n"{form}"', "m g1 i6", *images]
    pathlib.Path(f"nona-{job}.pto").write_text("\n".join(lines) + "\n", encoding="ascii")
    command = ["nona", "-r", "ldr", "-z", "NONE", "-m", form, "--seam=hard", "-o", f"nona-{job}", f"nona-{job}.pto"]
    return command, [f"nona-{job}{n:04}.tif" for n in range(6)] if form == "TIFF_m" else [f"nona-{job}.tif"]


TOOLS = {"skyvault": skyvault, "ffmpeg": ffmpeg, "nona": nona}


def output(command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def measure(command, threads):
    """Wall time, processor time and peak memory in megabytes of one process."""
    environment = dict(os.environ, OMP_NUM_THREADS=str(threads))
    with open("log", "wb") as log:
        start = time.perf_counter()
        process = os.posix_spawnp(command[0], command, environment, file_actions=[
            (os.POSIX_SPAWN_DUP2, log.fileno(), 1), (os.POSIX_SPAWN_DUP2, log.fileno(), 2)])
        _, status, usage = os.wait4(process, 0)
        wall = time.perf_counter() - start
    if status != 0:
        sys.exit(f"{' '.join(command)}\n{pathlib.Path('log').read_text(errors='replace')}")
    return [wall, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024]


def make_pictures():
    subprocess.run([*OPENCV, "enlarge", str(ROOT / "Media/Examples/Mountain lake.jpg"), "lake.bmp"], check=True)
    faces = [SKYVAULT, "convert", "-q", "--from", "equirectangular", "--set", "Resolution0=3"]
    subprocess.run([*faces, "--to", "strip-xyz", "lake.bmp", "cube.bmp"], check=True)
    subprocess.run([*faces, "--set", "FileNamingSystem=5", "--to", "single-files", "lake.bmp", "single.bmp"], check=True)
    for n, single in enumerate([1, 3, 4, 5, 0, 2]):  # in the strip's order
        os.rename(f"single{single}.bmp", f"face{n}.bmp")


def job_table(job, title, source, pixels, options):
    """Every tool's best figures; the tools take turns, so that a busy moment does not hit one of them only."""
    best, written = {}, {}
    for _ in range(options.repeats):
        for threads in options.threads:
            for name in TOOLS:
                command, written[name] = TOOLS[name](job, source, threads)
                figures = measure(command, threads)
                print(job, name, threads, *(f"{figure:.2f}" for figure in figures), file=sys.stderr, flush=True)
                old = best.get((threads, name), figures)
                best[threads, name] = [min(pair) for pair in zip(old, figures)]
    lines = [f"**{title}**, whole processes", "",
             "| tool | threads | wall, s | ns a pixel | × skyvault | processor, s | × skyvault | peak, MB | difference |",
             "|---|---|---|---|---|---|---|---|---|"]
    for name in TOOLS:
        apart = "" if name == "skyvault" else "%.2f" % json.loads(
            output([*OPENCV, "difference", f"skyvault-{job}.bmp", *written[name]]))
        for threads in options.threads:
            wall, processor, peak = best[threads, name]
            ours = best[threads, "skyvault"]
            lines.append(f"| {name} | {threads} | {wall:.2f} | {wall / pixels * 1e9:.0f} | {wall / ours[0]:.1f} "
                         f"| {processor:.2f} | {processor / ours[1]:.1f} | {peak:.0f} | {apart} |")
    for name, files in written.items():
        for file in files:
            if name != "skyvault":  # which OpenCV's is still compared with
                os.remove(file)
    return lines + [""], {threads: best[threads, "skyvault"] for threads in options.threads}


def opencv_row(job, source, pixels, ours, repeats):
    times = json.loads(output([*OPENCV, "remap", job, source, f"opencv-{job}.bmp", str(repeats)]))
    print(job, "opencv", times, file=sys.stderr, flush=True)
    apart = json.loads(output([*OPENCV, "difference", f"skyvault-{job}.bmp", f"opencv-{job}.bmp"]))
    os.remove(f"opencv-{job}.bmp")
    one, two = times["remap1"], times["remap2"]
    total = times["read"][1] + one[1] + times["write"][1]
    share = f"{total / ours[1][1]:.2f}" if 1 in ours else ""
    return (f"| {job} | {times['read'][1]:.2f} | {one[1]:.3f} | {one[1] / pixels * 1e9:.1f} | {one[0]:.3f} "
            f"| {two[0]:.3f} | {times['write'][1]:.2f} | {total:.2f} | {share} | {apart:.2f} |")


def machine(options):
    cpu = re.search(r"model name\s*: (.*)", pathlib.Path("/proc/cpuinfo").read_text(encoding="utf-8"))
    first = {"skyvault": [SKYVAULT, "--version"], "ffmpeg": ["ffmpeg", "-version"]}
    versions = [output(command).split("Copyright")[0].splitlines()[0].strip() for command in first.values()]
    versions.append("hugin-tools " + output(["dpkg-query", "-W", "-f=${Version}", "hugin-tools"]))
    versions.append("OpenCV " + output([*OPENCV, "version"]).strip())
    load = os.getloadavg()[1]
    # Whether others kept the machine busy decides how much the wall times mean.
    return [f"{cpu[1] if cpu else platform.machine()}, {os.cpu_count()} cores, {platform.system()}; "
            f"{', '.join(versions)}. Best of {options.repeats}; load of the machine {load:.1f}.", "",
            f"    bench/compare-peers.sh {' '.join(sys.argv[2:])}".rstrip(), ""]


def publish(lines):
    text = PAGE.read_text(encoding="utf-8")
    head, rest = text.split(BEGIN)
    tail = rest.split(END)[1]
    PAGE.write_text(f"{head}{BEGIN}\n" + "\n".join(lines) + f"\n{END}{tail}", encoding="utf-8")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("folder")
    parser.add_argument("--repeats", type=int, default=3)
    parser.add_argument("--threads", type=int, nargs="+", default=[1, 2])
    options = parser.parse_args()
    os.chdir(options.folder)
    if not os.path.exists("face5.bmp"):  # a folder of one's own keeps them for the next run
        make_pictures()
    head, tables, rows = machine(options), [], []
    for job, title, source, pixels in JOBS:
        table, ours = job_table(job, title, source, pixels, options)
        tables += table
        rows.append(opencv_row(job, source, pixels, ours, options.repeats))
        last = ["**OpenCV's remap, map already built**, processor time in seconds", "",
                "| to | read | remap, 1 thread | ns a pixel | its wall | 2 threads, wall | write | sum | × skyvault "
                "| difference |", "|---|---|---|---|---|---|---|---|---|---|", *rows, ""]
        publish(head + tables + last)
    print("\n".join(head + tables + last))


if __name__ == "__main__":
    main()
