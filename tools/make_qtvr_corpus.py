"""Writes the fuzz corpus of cubic movies: python3 tools/make_qtvr_corpus.py fuzz/corpus/qtvr

The pictures are marks with nothing between them: what is fuzzed looks at no more.
"""

import pathlib
import struct
import sys

START, END = b"\xff\xd8", b"\xff\xd9"
TURNS = [(1, 0, 0), (.5, 0, -.5), (0, 0, -1), (.5, 0, .5), (.5, .5, 0), (.5, -.5, 0)]


def cufa(n):
    centres = range(1 - n, n, 2)
    body = b"".join(struct.pack(">8f", *turn, 0, x, -y, 1, 0) for turn in TURNS for y in centres for x in centres)
    return struct.pack(">I4sIII", 20 + len(body), b"cufa", 1, 0, 0) + body


def stco(offsets, count=None):
    return struct.pack(f">I4sII{len(offsets)}I", 16 + 4 * len(offsets), b"stco", 0,
                       len(offsets) if count is None else count, *offsets)


def movie(n, table=True):
    count = 6 * n * n
    tables = cufa(n) if table else b""
    first = len(tables) + 16 + 4 * count
    return tables + stco([first + 5 * i for i in range(count)]) + (START + b"." + END) * count


def main():
    folder = pathlib.Path(sys.argv[1])
    folder.mkdir(parents=True, exist_ok=True)
    one = movie(1)
    files = {
        "one": one,
        "two": movie(2),
        "six": movie(6),
        "no-table": movie(1, table=False),
        "three-chunk-tables": movie(1, table=False)[:40] + stco([9, 1, 2, 3, 4, 5]) + movie(1, table=False),
        "cut-table": one[:100],
        "table-at-start": one[4:],
        "table-size-0": bytes(4) + one[4:],
        "table-size-huge": b"\xff" * 4 + one[4:],
        "cut-offsets": cufa(1) + stco(range(6))[:-1],
        "offset-count-huge": cufa(1) + stco(range(6), 0xffffffff),
        "nested-marks": START + START + b"x" + END + b"y" + END,
        "ends-only": END * 40,
        "marks-in-a-row": b"\xff" * 9 + START[1:] + b"\xff" * 9 + END[1:],
        "many-pictures": (START + END) * 440,
        "many-ends": START + b"." * 64 + END * 440,
        "one-byte": b"\xff",
    }
    for name, data in files.items():
        (folder / (name + ".mov")).write_bytes(data)


main()
