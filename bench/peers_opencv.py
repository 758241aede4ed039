"""What the comparison with other tools needs OpenCV for: its remap, the test picture, comparing results.

A process of its own: the memory of the measuring process counts towards the peak of what it starts."""

import json
import math
import sys
import time

import cv2
import numpy as np

FACE, WIDTH, HEIGHT, VIEW_WIDTH, VIEW_HEIGHT = 2048, 8192, 4096, 1920, 1080


def enlarge(source, destination):
    """The example at twice its size, without compression."""
    cv2.imwrite(destination, cv2.resize(cv2.imread(source), (WIDTH, HEIGHT), interpolation=cv2.INTER_CUBIC))


def lookup(x, y, z):
    """The pixel of the equirectangular picture in a direction."""
    column = np.rint((np.arctan2(x, z) + math.pi) * (WIDTH / (2 * math.pi))).astype(np.int32) % WIDTH
    row = np.rint((math.pi / 2 - np.arctan2(y, np.hypot(x, z))) * (HEIGHT / math.pi)).astype(np.int32)
    return np.stack([column, np.clip(row, 0, HEIGHT - 1)], axis=-1).astype(np.int16)


def faces_map():
    """Right, left, top, bottom, front, back side by side."""
    edge = (np.arange(FACE, dtype=np.float32) * 2 / (FACE - 1) - 1) * ((FACE - 2) / (FACE - 1))
    a, b = np.meshgrid(edge, edge)
    one = np.ones_like(a)
    faces = [(one, -b, -a), (-one, -b, a), (a, one, b), (a, -one, -b), (a, -b, one), (-a, -b, -one)]
    return np.concatenate([lookup(*face) for face in faces], axis=1)


def equirectangular_map():
    """From the six faces above back to the whole sphere; row by row, as it is large."""
    result = np.empty((HEIGHT, WIDTH, 2), np.int16)
    longitude = (np.arange(WIDTH, dtype=np.float32) / WIDTH * 2 - 1) * np.float32(math.pi)
    half = (FACE - 1) / 2
    for row in range(HEIGHT):
        latitude = math.pi * (HEIGHT - 1 - row) / HEIGHT - math.pi / 2
        x, z = math.cos(latitude) * np.sin(longitude), math.cos(latitude) * np.cos(longitude)
        y = np.full_like(x, math.sin(latitude))
        ax, ay, az = abs(x), abs(y), abs(z)
        on_x, on_y = (ax >= ay) & (ax >= az), (ay > ax) & (ay >= az)
        largest = np.maximum(np.maximum(ax, ay), az)
        face = np.where(on_x, np.where(x > 0, 0, 1), np.where(on_y, np.where(y > 0, 2, 3), np.where(z > 0, 4, 5)))
        a = np.choose(face, [-z, z, x, x, x, -x]) / largest
        b = np.choose(face, [-y, -y, z, -z, -y, -y]) / largest
        result[row, :, 0] = face * FACE + np.clip(half * a + half, 0, FACE - 1)
        result[row, :, 1] = np.clip(half * b + half, 0, FACE - 1)
    return result


def view_map():
    """90 degrees wide, to the front."""
    x, y = np.meshgrid(np.arange(VIEW_WIDTH, dtype=np.float32) - VIEW_WIDTH / 2,
                       VIEW_HEIGHT / 2 - np.arange(VIEW_HEIGHT, dtype=np.float32))
    return lookup(x, y, np.full_like(x, VIEW_WIDTH / 2))


def remap(job, source, destination, repeats):
    """Times reading, the fetch through the ready-made map with one and with two threads, and writing."""
    start = time.perf_counter()
    table = {"faces": faces_map, "equirectangular": equirectangular_map, "view": view_map}[job]()
    times = {"map": time.perf_counter() - start}

    def best(name, action):
        for _ in range(repeats):
            wall, processor = time.perf_counter(), time.process_time()
            result = action()
            wall, processor = time.perf_counter() - wall, time.process_time() - processor
            old = times.get(name, [wall, processor])
            times[name] = [min(old[0], wall), min(old[1], processor)]
        return result

    picture = best("read", lambda: cv2.imread(source))
    for threads in (1, 2):
        cv2.setNumThreads(threads)
        result = best(f"remap{threads}", lambda: cv2.remap(picture, table, None, cv2.INTER_NEAREST))
    best("write", lambda: cv2.imwrite(destination, result))
    print(json.dumps(times))


def difference(ours, theirs):
    """The mean difference of the channels, of 255; of a peer's six files the one with the strip of them."""
    expected = cv2.imread(ours)
    pictures = [cv2.imread(name) for name in theirs]
    found = np.concatenate(pictures, axis=1)
    if found.shape != expected.shape:
        sys.exit(f"{theirs[0]}: {found.shape} instead of {expected.shape}")
    print(json.dumps(float(cv2.absdiff(expected, found).mean())))


if __name__ == "__main__":
    command, *rest = sys.argv[1:]
    if command == "enlarge":
        enlarge(*rest)
    elif command == "remap":
        remap(rest[0], rest[1], rest[2], int(rest[3]))
    elif command == "difference":
        difference(rest[0], rest[1:])
    else:
        print(cv2.__version__)
