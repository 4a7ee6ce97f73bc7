#!/usr/bin/env python3
"""Writes the seed corpora of the file-loader and argument fuzzers, byte by byte.

corpus/setup_file/  parameter (and bank) files: whole set-ups of a few
                    lengths, and the damage a file meets: cut short, a length
                    it cannot hold, bounds crossed or beyond the tables,
                    weights out of range, another kind of file.
corpus/raw_file/    raw curves: 16-bit little-endian values of the lengths of
                    a curve and of each table, short, long, odd and clipped.
corpus/render_args/ velmora-render command lines, one argument per NUL-ended
                    string: the usage's forms and near misses.

Run it from this folder; the files it writes are committed beside it. It does
not write the MIDI file corpus, corpus/smf/.
"""

import math
import os
import struct

HERE = os.path.dirname(os.path.abspath(__file__))

# ---- parameter files ("VLhd") ----

FUNCTIONS = 10
TABLES = {"note": 128, "velocity": 128, "length": 101, "density": 121, "voices": 33}
BOARDS, BOARD_POINTS = 10, 128


def start_up_arrays(n):
    """The program's start-up curves: a sine over two octaves, velocity up and down, one and two voices."""
    arrays = [[0] * n for _ in range(FUNCTIONS)]
    for i in range(n):
        s = 0.5 * math.sin(i * 2 * math.pi / n) + 0.5
        q = i * 128 // n
        min_density = i % 64 + 15 if i < 64 else 60
        arrays[5][i] = int(25 * s + 40)
        arrays[0][i] = int(25 * s + 52)
        arrays[6][i] = q + 40 if i < n // 2 else 127 - q + 40
        arrays[1][i] = q + 50 if i < n // 2 else 127 - q + 50
        arrays[7][i] = 1 if i % 2 == 0 else 2
        arrays[2][i] = 1 if i % 2 == 0 else 2
        arrays[8][i] = min_density
        arrays[3][i] = i % 64 + 17 if i < 64 else 65
        arrays[9][i] = min_density * 100 // 120
        arrays[4][i] = min_density * 100 // 120
    return [[v & 0xFF for v in a] for a in arrays]


def set_up(n=128, arrays=None, filters=0x3FF, overlap=0, rate=10, weights=None, bounds=None, channels=1,
           time_control=120, curves=None, board_flags=0, tempo=500000, resolution=120, seed=0, interval_mode=0,
           from_note=60, interval_min=0, interval_max=127, mirror=0, length_word=None):
    """A parameter file: the default set-up, with any field given replaced."""
    arrays = start_up_arrays(n) if arrays is None else arrays
    weights = weights or {}
    bounds = bounds or [0, 127, 0, 127, 1, 1, 0, 120, 0, 100]
    curves = curves or [[0] * BOARD_POINTS for _ in range(BOARDS)]
    out = b"VLhd" + struct.pack("<I", n if length_word is None else length_word)
    for a in arrays:
        out += bytes(a)
    out += struct.pack("<III", filters, overlap, rate)
    for name, size in TABLES.items():
        out += struct.pack("<%dh" % size, *weights.get(name, [64] * size))
    out += struct.pack("<10h", *bounds)
    out += struct.pack("<Hh", channels, time_control)
    for curve in curves:
        out += struct.pack("<%dh" % BOARD_POINTS, *curve)
    out += struct.pack("<IIIiIhhhh", board_flags, tempo, resolution, seed, interval_mode, from_note, interval_min,
                       interval_max, mirror)
    return out


def setup_files():
    default = set_up()
    assert len(default) == 4934, len(default)
    files = {
        "default-128.vlm": default,
        "length-0.vlm": set_up(0),
        "length-1.vlm": set_up(1, arrays=[[v] for v in (60, 100, 3, 90, 80, 40, 20, 1, 10, 5)]),
        "length-4-boards.vlm": set_up(4, board_flags=0x3FF, seed=-12345, interval_mode=1, mirror=1,
                                      curves=[[(p * (b + 1)) % 128 for p in range(BOARD_POINTS)] for b in range(BOARDS)]),
        "length-300.vlm": set_up(300, filters=0x155, overlap=1, rate=0, tempo=250000, resolution=960),
        "cut-in-arrays.vlm": default[:8 + 10 * 128 // 2],
        "cut-in-weights.vlm": default[:8 + 1280 + 12 + 301],
        "cut-in-tail.vlm": default[:-7],
        "header-only.vlm": default[:8],
        "magic-only.vlm": default[:4],
        "extra-bytes.vlm": default + bytes(range(64)),
        "length-too-long.vlm": set_up(0, length_word=(1 << 24) + 1),
        "length-claims-more.vlm": set_up(4, length_word=200),
        "bounds-crossed-and-outside.vlm": set_up(bounds=[127, 0, -5, 300, 33, -1, 32767, -32768, 101, 100]),
        "weights-out-of-range.vlm": set_up(weights={
            "note": [(-1) ** i * (i * 250) for i in range(128)],
            "velocity": [32767] * 128,
            "length": [-32768] * 101,
            "density": [0] * 121,
            "voices": [128 + i for i in range(33)],
        }, channels=0, time_control=-1),
        "odd-values.vlm": set_up(tempo=0, resolution=0xFFFFFFFF, seed=-2147483648, interval_mode=7, from_note=-1,
                                 interval_min=200, interval_max=-200, mirror=-1, board_flags=0xFFFFFFFF,
                                 channels=0xFFFF, arrays=[[0x80 | (i & 0x7F) for i in range(128)]] * FUNCTIONS),
        "midi-file.mid": b"MThd\x00\x00\x00\x06\x00\x00\x00\x01\x00\x78",
        "empty": b"",
    }
    return files


# ---- raw curves ----

def words(values):
    return struct.pack("<%dH" % len(values), *[v & 0xFFFF for v in values])


def raw_files():
    return {
        "curve-128.bin": words([int(63.5 * math.sin(i * 2 * math.pi / 128) + 64) for i in range(128)]),
        "curve-128-high-byte-set.bin": words([0x100 * (i % 3) + i for i in range(128)]),
        "curve-128-clipped.bin": words([128 + i for i in range(128)]),
        "table-33.bin": words(list(range(33))),
        "table-101-out-of-range.bin": words([-1, 0, 127, 128, 32767, -32768] * 16 + [5] * 5),
        "table-121.bin": words([64] * 121),
        "short-3.bin": words([10, 20, 30]),
        "long-131.bin": words(list(range(131))),
        "odd-size.bin": words([1, 2, 3, 4]) + b"\x07",
        "one-byte.bin": b"\x05",
        "empty.bin": b"",
    }


# ---- command lines ----

def command_lines():
    lines = {
        "generator": ["--params", "set.vlm", "--seed", "42", "--seconds", "2.5", "--tempo", "120",
                      "--resolution", "96", "--period", "5", "--non-periodic", "--log", "-"],
        "generator-wav": ["--params", "set.vlm", "--wav", "out.wav", "--seconds", "0"],
        "generator-midi": ["--seed", "-2147483648", "--midi", "take.mid", "--seconds", "86400"],
        "realtime": ["--realtime", "--out", "65535", "--seconds", "1e1"],
        "song": ["--song", "in.mid", "--save", "out.mid", "--log", "log.txt", "--seconds", "3"],
        "record": ["--record", "0", "--midi", "take.mid", "--midi-sync", "--out", "1", "--log", "-"],
        "empty": [],
        "needs-value": ["--seed"],
        "seed-too-big": ["--seed", "2147483648"],
        "tempo-nan": ["--tempo", "nan"],
        "seconds-negative": ["--seconds", "-1"],
        "resolution-text": ["--resolution", "12x"],
        "period-zero": ["--period", "0"],
        "song-with-seed": ["--song", "in.mid", "--seed", "1"],
        "save-without-song": ["--save", "out.mid"],
        "record-without-midi": ["--record", "2"],
        "record-with-wav": ["--record", "0", "--midi", "t.mid", "--wav", "o.wav"],
        "sync-without-record": ["--midi-sync"],
        "song-with-midi": ["--song", "in.mid", "--midi", "t.mid"],
        "realtime-wav": ["--realtime", "--wav", "o.wav"],
        "unknown": ["--help"],
        "empty-argument": ["", "--tempo", ""],
    }
    return {name: b"".join(a.encode() + b"\0" for a in args) for name, args in lines.items()}


def write(folder, files):
    path = os.path.join(HERE, "corpus", folder)
    os.makedirs(path, exist_ok=True)
    for name, data in files.items():
        with open(os.path.join(path, name), "wb") as f:
            f.write(data)


if __name__ == "__main__":
    write("setup_file", setup_files())
    write("raw_file", raw_files())
    write("render_args", command_lines())
