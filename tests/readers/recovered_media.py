"""Looks at the photos and movies that ./recover wrote of the sample backup: recovered_media.py BACKUP FOLDER

Copies must be the backup's files byte for byte, pictures and movies must open in programs of others, upright, with the
colours and the digit that was painted into them.
"""

import hashlib
import io
import json
import pathlib
import subprocess
import sys

from PIL import Image, ImageOps

CAMERA_ROLL = "CameraRollDomain-Media/DCIM/"
FAR = 72  # a channel that is farther from what was painted is another colour; fine detail stays nearer

RED, GREEN, BLUE, YELLOW, WHITE = (255, 0, 0), (0, 255, 0), (0, 0, 255), (255, 255, 0), (255, 255, 255)

# tests/support/SampleBackup.cpp has all of these. By written file the file on the phone, the size of the upright
# picture and its digit.
PHOTOS = {
    "IMG_0001.JPG": ("100MEDIA/IMG_0001.JPG", (400, 300), 1),
    "IMG_0002.JPG": ("100MEDIA/IMG_0002.JPG", (300, 200), 2),
    "IMG_0003.JPG": ("100MEDIA/IMG_0003.PNG", (320, 480), 3),
    "IMG_0005.JPG": ("100MEDIA/IMG_0005.JPG", (480, 640), 5),
    "IMG_0007.JPG": ("100MEDIA/IMG_0007.JPG", (1600, 1200), None),
    "IMG_0001(0).JPG": ("101MEDIA/IMG_0001.JPG", (180, 240), 1),
}
# Pictures of the store with the widest ones; its empty slots have left nothing.
THUMBNAILS = {"_1.JPG": 1, "_2.JPG": 2, "_3.JPG": 3, "_4.JPG": 4}
THUMBNAIL_SIZE = (160, 157)
# Likewise, with the number of frames; the first frame has a 1.
MOVIES = {
    "IMG_0004.MOV": ("100MEDIA/IMG_0004.MOV", (320, 240), 60),
    "IMG_0006.MOV": ("100MEDIA/IMG_0006.MOV", (180, 320), 45),
}

# Rows of three dots.
DIGITS = {1: ".#.##..#..#.###", 2: "###..#####..###", 3: "###..####..####", 4: "#.##.####..#..#",
          5: "####..###..####"}


def is_colour(pixel, colour):
    return all(abs(channel - wanted) <= FAR for channel, wanted in zip(pixel, colour))


def check_corners(picture, name):
    width, height = picture.size
    left, top = width // 8, height // 8
    right, bottom = width - left, height - top
    for position, colour in {(left, top): RED, (right, top): GREEN, (left, bottom): BLUE,
                             (right, bottom): YELLOW}.items():
        pixel = picture.getpixel(position)
        assert is_colour(pixel, colour), f"{name}: {pixel} at {position} instead of {colour}"


def dots(picture):
    """What stands in the middle, as in DIGITS."""
    dot = min(picture.size) // 10
    left, top = (picture.width - 3 * dot) // 2, (picture.height - 5 * dot) // 2
    places = [(left + column * dot + dot // 2, top + row * dot + dot // 2) for row in range(5) for column in range(3)]
    return "".join("#" if is_colour(picture.getpixel(place), WHITE) else "." for place in places)


def check_picture(picture, name, size, digit):
    upright = ImageOps.exif_transpose(picture).convert("RGB")
    assert upright.size == size, f"{name}: {upright.size} instead of {size}"
    check_corners(upright, name)
    assert digit is None or dots(upright) == DIGITS[digit], f"{name}: does not show {digit}"


def check_copy(path, backup, phone_path):
    stored = pathlib.Path(backup, hashlib.sha1((CAMERA_ROLL + phone_path).encode()).hexdigest())
    assert path.read_bytes() == stored.read_bytes(), f"{path}: differs from the backup's file"


def check_names(folder, pattern, wanted):
    names = sorted(path.name for path in folder.glob(pattern))
    assert names == sorted(wanted), f"{folder}: {names}"


def check_photos(backup, folder):
    check_names(folder, "*", [*PHOTOS, *THUMBNAILS])
    for name, (phone_path, size, digit) in PHOTOS.items():
        check_copy(folder / name, backup, phone_path)
        check_picture(Image.open(folder / name), name, size, digit)
    for name, digit in THUMBNAILS.items():
        picture = Image.open(folder / name)
        assert picture.format == "JPEG", f"{name}: {picture.format}"
        check_picture(picture, name, THUMBNAIL_SIZE, digit)


def frame_count(path):
    probe = subprocess.run(
        ["ffprobe", "-v", "error", "-count_frames", "-select_streams", "v", "-show_entries", "stream=nb_read_frames",
         "-of", "json", str(path)], check=True, capture_output=True)
    assert not probe.stderr, f"{path}: {probe.stderr.decode()}"
    return int(json.loads(probe.stdout)["streams"][0]["nb_read_frames"])


def first_frame(path):
    """As a player shows it: turned by the display matrix."""
    frame = subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-i", str(path), "-frames:v", "1", "-f", "image2pipe",
                            "-c:v", "ppm", "-"], check=True, capture_output=True)
    return Image.open(io.BytesIO(frame.stdout))


def check_movies(backup, folder):
    check_names(folder, "*.MOV", MOVIES)
    for name, (phone_path, size, frames) in MOVIES.items():
        check_copy(folder / name, backup, phone_path)
        assert frame_count(folder / name) == frames, f"{name}: {frame_count(folder / name)} frames"
        check_picture(first_frame(folder / name), name, size, 1)


def main(backup, folder):
    check_photos(backup, pathlib.Path(folder, "Photo"))
    check_movies(backup, pathlib.Path(folder))


if __name__ == "__main__":
    main(*sys.argv[1:])
