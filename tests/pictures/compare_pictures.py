#!/usr/bin/env python3
"""Runs the example programs and compares their screens with the pictures in docs/pictures.

usage: compare_pictures.py [--update] TAKE_PICTURE IMAGE PROGRAM.BAS...

A picture that differs, or is missing, fails the test; the screen that was seen is then left beside the programs of the
build tree as NAME.png. --update stores what is seen as the new picture: look at it before it is committed.
"""
import pathlib
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tools"))

from png import read_png, write_png  # noqa: E402

PICTURES = ROOT / "docs" / "pictures"


def read_ppm(path):
    """(width, height, RGB bytes) of a binary PPM file of 8 bits a component."""
    data = path.read_bytes()
    magic, size, depth, pixels = data.split(b"\n", 3)
    assert magic == b"P6" and depth == b"255"
    width, height = map(int, size.split())
    assert len(pixels) == width * height * 3
    return width, height, pixels


def take(take_picture, image, program):
    with tempfile.TemporaryDirectory() as folder:
        ppm = pathlib.Path(folder) / "screen.ppm"
        subprocess.run([take_picture, image, program, ppm], check=True, timeout=60)
        return read_ppm(ppm)


def differing_pixels(seen, expected):
    if seen[:2] != expected[:2]:
        return f"{seen[0]}x{seen[1]} pixels instead of {expected[0]}x{expected[1]}"
    count = sum(seen[2][i : i + 3] != expected[2][i : i + 3] for i in range(0, len(seen[2]), 3))
    return f"{count} pixels differ"


def main(arguments):
    update = arguments[:1] == ["--update"]
    take_picture, image, *programs = arguments[1:] if update else arguments
    failed = False
    for program in map(pathlib.Path, programs):
        seen = take(take_picture, image, program)
        stored = PICTURES / f"{program.stem}.png"
        if update:
            write_png(stored, *seen)
        elif not stored.exists() or read_png(stored) != seen:
            what = differing_pixels(seen, read_png(stored)) if stored.exists() else "there is no stored picture"
            left = pathlib.Path(f"{program.stem}.png").absolute()
            write_png(left, *seen)
            print(f"{program}: {what}; see {left}")
            failed = True
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
