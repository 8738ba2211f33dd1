#!/usr/bin/env python3
"""Writes the sample folder: made-up motion clips, a character and notes. The same bytes at every run."""
import math
import pathlib
import shutil
import struct
import sys
import zlib

FRAMES = 120
JOINTS = ["hips", "spine", "head", "left_arm", "right_arm", "left_leg", "right_leg"]


def clip(speed, swing):
    rows = ["frame;" + ";".join(f"{joint}_{axis}" for joint in JOINTS for axis in "xyz")]
    for frame in range(FRAMES):
        phase = frame / FRAMES * 2 * math.pi * speed
        values = []
        for index, _ in enumerate(JOINTS):
            values += [math.sin(phase + index) * swing, math.cos(phase * 2 + index) * swing / 2, index * 0.25]
        rows.append(f"{frame};" + ";".join(f"{value:.4f}" for value in values))
    return "\n".join(rows) + "\n"


def description(name, tags):
    return f'<Clip name="{name}" version="6.0.0" frames="{FRAMES}" tags="{tags}" />\n'


def skeleton():
    joints = "\n".join(f'  <Joint name="{joint}" parent="{JOINTS[max(0, i - 1)]}" />' for i, joint in enumerate(JOINTS))
    return f"<Skeleton>\n{joints}\n</Skeleton>\n"


def portrait(size=48):
    """A round head on a blue ground, as PNG."""
    rows = b""
    for y in range(size):
        rows += b"\0"
        for x in range(size):
            inside = (x - size / 2) ** 2 + (y - size / 2) ** 2 < (size / 3) ** 2
            rows += bytes((230, 180 + y % 20, 140) if inside else (40, 60 + x, 160))

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    head = struct.pack(">IIBBBBB", size, size, 8, 2, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", head) + chunk(b"IDAT", zlib.compress(rows, 9)) + chunk(b"IEND", b"")


FILES = {
    "Clips/Walk/Walk Forward.csv": clip(1, 0.4),
    "Clips/Walk/Walk Forward.xml": description("Walk Forward", "walk,forward"),
    "Clips/Walk/Limp.csv": clip(0.7, 0.3),
    "Clips/Dance/Tänzelnder Schritt.csv": clip(3, 0.6),
    "Clips/Dance/Tänzelnder Schritt.xml": description("Tänzelnder Schritt", "dance,step"),
    "Clips/Dance/跳躍.csv": clip(2, 1.1),
    "Characters/Hero/skeleton.xml": skeleton(),
    "Characters/Hero/portrait.png": portrait(),
    "Characters/Hero/notes.tar.gz.txt": "Takes of the hero; the raw takes are kept elsewhere.\n",
    "synonyms.xml": '<KelbSynonyms><KelbSynonym values="walk, stroll, amble"/></KelbSynonyms>\n',
    "Notes/empty.txt": "",
    "Notes/README": "A name without a full stop: packing leaves it out, and the log says so.\n",
}

folder = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parent / "sample")
shutil.rmtree(folder, ignore_errors=True)
for name, content in FILES.items():
    path = folder / name
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(content if isinstance(content, bytes) else content.encode())
