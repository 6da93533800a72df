"""Reads thumbnails' bitmaps with a library of others: bitmaps.py PROGRAM, which writes them and the pixels that ours
sees in them. Both must see the same, but for the rounding of five bits to eight."""
import pathlib
import subprocess
import sys
import tempfile

from PIL import Image

SIZES = {"3303": (24, 22), "3309": (64, 64), "3319": (160, 157), "4031": (120, 120)}


def failure(folder, name, size):
    with Image.open(folder / f"{name}.bmp") as bitmap:
        theirs = bitmap.convert("RGBA")
    ours = (folder / f"{name}.rgba").read_bytes()
    if theirs.size != size or len(ours) != 4 * size[0] * size[1]:
        return f"{name}: {theirs.size}, and {len(ours)} bytes of ours"
    farthest = max(abs(one - other) for one, other in zip(theirs.tobytes(), ours))
    return f"{name}: channels {farthest} apart" if farthest > 1 else None


def main(program):
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run([program, folder], check=True)
        failures = [failure(pathlib.Path(folder), name, size) for name, size in SIZES.items()]
    found = [text for text in failures if text]
    print("\n".join(found))
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
