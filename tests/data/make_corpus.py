#!/usr/bin/env python3
"""Writes the MIDI corpus of the song tests, byte by byte.

Each file exercises one thing a reader meets in the field: the three formats,
running status, sysex, tempo maps, lyrics, names, SMPTE time, and damage.
Run it from this folder; the files it writes are committed beside it.
"""


def vlq(value):
    out = [value & 0x7F]
    value >>= 7
    while value:
        out.insert(0, 0x80 | (value & 0x7F))
        value >>= 7
    return bytes(out)


def header(fmt, tracks, division):
    return b"MThd" + (6).to_bytes(4, "big") + fmt.to_bytes(2, "big") + tracks.to_bytes(2, "big") + division.to_bytes(2, "big")


def chunk(body, tag=b"MTrk", length=None):
    return tag + (len(body) if length is None else length).to_bytes(4, "big") + body


def end():
    return b"\x00\xff\x2f\x00"


def meta(delta, kind, data):
    return vlq(delta) + bytes([0xFF, kind]) + vlq(len(data)) + data


def tempo(delta, us):
    return meta(delta, 0x51, us.to_bytes(3, "big"))


def timesig(delta, num, power):
    return meta(delta, 0x58, bytes([num, power, 24, 8]))


def ev(delta, *data):
    return vlq(delta) + bytes(data)


def notes(channel, keys, step=60, length=50, velocity=90):
    """Plain note-on / note-off pairs, one after another, full status bytes."""
    body = b""
    for key in keys:
        body += ev(step - length if body else 0, 0x90 | channel, key, velocity)
        body += ev(length, 0x80 | channel, key, 64)
    return body


def running_notes(channel, keys, step=60, length=50):
    """The same with running status and velocity-0 note-offs."""
    body = ev(0, 0x90 | channel, keys[0], 80) + ev(length, keys[0], 0)
    for key in keys[1:]:
        body += ev(step - length, key, 80) + ev(length, key, 0)
    return body


def track(*parts):
    return chunk(b"".join(parts) + end())


SCALE = [60, 62, 64, 65, 67, 69, 71, 72]
files = {}

files["format0_two_channels.mid"] = header(0, 1, 120) + track(
    tempo(0, 500000), timesig(0, 3, 2),
    ev(0, 0x90, 60, 100), ev(0, 0x91, 48, 90), ev(120, 0x80, 60, 0), ev(0, 0x81, 48, 0),
    ev(0, 0x90, 64, 100), ev(120, 0x80, 64, 0))
files["format0_running_status.mid"] = header(0, 1, 96) + track(tempo(0, 600000), running_notes(0, SCALE, 48, 40))
files["format1_two_tracks.mid"] = header(1, 3, 120) + track(tempo(0, 500000), timesig(0, 4, 2)) + \
    track(notes(0, SCALE)) + track(notes(1, [36, 43, 48, 43], step=120, length=100))
files["format1_running_status_across_meta.mid"] = header(1, 2, 120) + track(tempo(0, 500000)) + track(
    ev(0, 0x90, 60, 90), meta(10, 0x01, b"marker text"), ev(10, 62, 90), ev(40, 60, 0), ev(0, 62, 0))
files["format1_tempo_map.mid"] = header(1, 2, 120) + track(
    tempo(0, 500000), tempo(480, 250000), tempo(480, 1000000), tempo(240, 400000)) + track(
    notes(0, SCALE * 2, step=120, length=100))
files["format1_lyrics.mid"] = header(1, 2, 120) + track(tempo(0, 500000)) + track(
    meta(0, 0x05, b"Hel"), ev(0, 0x90, 60, 90), ev(60, 0x80, 60, 0), meta(0, 0x05, b"lo"),
    ev(0, 0x90, 62, 90), ev(60, 0x80, 62, 0), meta(0, 0x05, b"world"), meta(0, 0x05, b"dropped"),
    ev(0, 0x90, 64, 90), ev(60, 0x80, 64, 0), meta(0, 0x05, b"\r\nline two"))
files["format1_lyrics_in_first_track.mid"] = header(1, 2, 120) + track(
    tempo(0, 500000), meta(120, 0x05, b"tempo track words")) + track(notes(0, [60, 64]))
files["format1_sysex.mid"] = header(1, 2, 120) + track(tempo(0, 500000)) + track(
    vlq(0) + bytes([0xF0, 0x05, 0x7E, 0x7F, 0x09, 0x01, 0xF7]),
    notes(0, [60, 62]),
    vlq(10) + bytes([0xF0, 0x03, 0x43, 0x10, 0x4C]), vlq(5) + bytes([0xF7, 0x02, 0x00, 0xF7]))
files["format1_track_names.mid"] = header(1, 4, 120) + track(tempo(0, 500000)) + \
    track(meta(0, 0x03, b"Piano"), notes(0, [60, 64, 67])) + \
    track(meta(0, 0x03, b"Bass"), notes(1, [36, 43])) + track(notes(2, [72]))
files["format2_patterns.mid"] = header(2, 3, 120) + track(tempo(0, 750000)) + \
    track(notes(0, [60, 60, 67, 67])) + track(notes(9, [36, 38, 36, 38], step=30, length=20))
files["smpte_25fps.mid"] = header(1, 2, (0x100 - 25) << 8 | 40) + track(tempo(0, 500000)) + track(notes(0, SCALE[:4], step=500, length=400))
files["smpte_30fps.mid"] = header(1, 2, (0x100 - 30) << 8 | 4) + track(tempo(0, 500000)) + track(notes(0, SCALE[:4], step=60, length=50))
files["controllers_and_bend.mid"] = header(1, 2, 120) + track(tempo(0, 500000)) + track(
    ev(0, 0xC0, 5), ev(0, 0xB0, 7, 100), ev(0, 0xB0, 10, 20), ev(0, 0x90, 60, 100), ev(10, 0xE0, 0, 80),
    ev(10, 0xE0, 0, 64), ev(10, 0xA0, 60, 30), ev(10, 0xD0, 40), ev(60, 0x80, 60, 0), ev(0, 0xB0, 64, 0))
files["note_off_forms_and_overlaps.mid"] = header(1, 2, 120) + track(tempo(0, 500000)) + track(
    ev(0, 0x90, 60, 100), ev(10, 0x90, 60, 90), ev(10, 0x80, 60, 0), ev(10, 0x90, 60, 0),
    ev(0, 0x80, 61, 0), ev(10, 0x90, 62, 70), ev(30, 0x80, 62, 0), ev(0, 0x92, 63, 70))
files["one_track_format1.mid"] = header(1, 1, 120) + track(tempo(0, 500000), notes(0, [60, 67]))
files["many_tracks.mid"] = header(1, 21, 60) + track(tempo(0, 500000)) + b"".join(
    track(notes(t % 16, [40 + t], step=30 + t, length=20)) for t in range(20))
files["zero_tempo_first.mid"] = header(1, 2, 120) + track(tempo(0, 0), tempo(240, 500000)) + track(notes(0, [60, 62]))
files["numerator_200.mid"] = header(1, 2, 120) + track(tempo(0, 500000), timesig(0, 200, 3)) + track(notes(0, [60]))
files["unknown_chunk_between_tracks.mid"] = header(1, 2, 120) + track(tempo(0, 500000)) + \
    chunk(b"private data", tag=b"XVlm") + track(notes(0, [60, 62, 64]))
files["long_track_40000_events.mid"] = header(1, 2, 120) + track(tempo(0, 500000)) + chunk(
    ev(0, 0x90, 60, 80) + ev(1, 60, 0) + b"".join(ev(0, 60 + i % 12, 80) + ev(1, 60 + i % 12, 0) for i in range(19999)) + end())

# Damaged and foreign files.
whole = files["format1_two_tracks.mid"]
files["damaged_cut_in_track.mid"] = whole[: len(whole) * 2 // 3]
files["damaged_missing_track.mid"] = header(1, 3, 120) + track(tempo(0, 500000)) + track(notes(0, [60, 62]))
files["damaged_long_chunk_length.mid"] = header(1, 2, 120) + track(tempo(0, 500000)) + chunk(
    notes(0, [60, 64]) + end(), length=100000)
files["damaged_no_end_of_track.mid"] = header(1, 2, 120) + track(tempo(0, 500000)) + chunk(notes(0, [60, 64]))
files["foreign_not_midi.mid"] = b"This is a text file that says it is MIDI.\n" * 4

for name, data in files.items():
    with open(name, "wb") as f:
        f.write(data)
print(len(files), "files")
