#!/usr/bin/env python3
"""media.py PREFIX LIBDIR HOST: tells whether the library opens pictures and movies where it was installed and where it
was moved to, and does without, saying so once, when its modules are missing. HOST is the program open_media."""
import glob
import os
import shutil
import subprocess
import sys
import tempfile

EXPECTED = "120 x 90\n160 x 120\n"  # of a photo of more than 300 pixels the image is smaller


def make(path, source, *options):
    subprocess.run(["ffmpeg", "-nostdin", "-loglevel", "error", "-f", "lavfi", "-i", source, *options, path], check=True)


def run(host, libraries, *media):
    return subprocess.run([host, *media], env={**os.environ, "LD_LIBRARY_PATH": libraries}, capture_output=True,
                          text=True, check=True)


def failures(prefix, libdir, host, folder):
    picture, movie = os.path.join(folder, "picture.jpg"), os.path.join(folder, "movie.mov")
    make(picture, "testsrc=size=400x300", "-frames:v", "1")
    make(movie, "testsrc=size=160x120:duration=0.2", "-pix_fmt", "yuv420p")
    moved = os.path.join(folder, "moved")
    shutil.copytree(prefix, moved, symlinks=True)
    for where in (prefix, moved):
        outcome = run(host, os.path.join(where, libdir), picture, movie)
        if outcome.stdout != EXPECTED * 2 or outcome.stderr:
            yield f"in {where}: {outcome.stdout}{outcome.stderr}"
    [modules] = glob.glob(os.path.join(moved, libdir, "zkmobilebackup-*"))
    shutil.rmtree(modules)
    outcome = run(host, os.path.join(moved, libdir), picture, movie)
    lines = outcome.stderr.splitlines()
    if outcome.stdout != "none\n" * 4 or len(lines) != 2 or not all(line.startswith("Cannot load ") for line in lines):
        yield f"without modules: {outcome.stdout}{outcome.stderr}"


def main(prefix, libdir, host):
    with tempfile.TemporaryDirectory() as folder:
        found = list(failures(prefix, libdir, host, folder))
    print("\n".join(found))
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
