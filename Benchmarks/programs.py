"""Frames of a rendering, and the command lines that stamp labels and a logo onto all of them."""

import shutil
from pathlib import Path

import numpy
import PIL.Image

DATA = Path(__file__).resolve().parent.parent / "Examples/Data"

# Fonts, colours, what a label is placed by, and sizes and offsets in fractions of the height, as in overlays.json.
LABELS = [
    ("Noto-Serif-Regular", "#fff2db", "none", "NorthWest", 0.056, 0.05, 0.03, "Still life, late light"),
    ("DejaVu-Sans-Mono", "#edf5f7", "#080f148c", "NorthEast", 0.032, 0.035, 0.045,
     " Camera 1\n angle   40° \n height  2.75 \n depth   13.20 \n frame   %p/100 "),
    ("DejaVu-Sans-Mono", "#ffcc6b", "#00000073", "SouthWest", 0.032, 0.045, 0.045, " 10:24:07:12  %f "),
    ("Noto-Sans-Regular", "#ffffff", "#0d2933a6", "NorthEast", 0.044, 0.4, 0.18, "  The sea · البحر · समुद्र  "),
]
LOGO_SIZE, LOGO_OFFSET = 0.17, 0.04


def make_frames(folder, suffix, size, count):
    """The sample frame, moved and lit anew for each. Its values are dithered a little, as a renderer's are."""
    picture = PIL.Image.open(DATA / "frame.png").convert("RGB").resize(size, PIL.Image.LANCZOS)
    rendering = numpy.asarray(picture, numpy.float32)
    random = numpy.random.default_rng(1)
    folder.mkdir(parents=True)
    for i in range(count):
        light = (1 + 0.1 * numpy.sin(i / 7 + numpy.arange(3))).astype(numpy.float32)
        noise = 0.4 + 0.2 * random.random((size[1], size[0], 1), numpy.float32)
        frame = numpy.roll(rendering, 8 * i, axis=1) * light + noise
        image = PIL.Image.fromarray(numpy.clip(frame, 0, 255).astype(numpy.uint8))
        image.save(folder / f"frame_{i:03}.{suffix}", compress_level=1, quality=95, dpi=(72, 72))


def peer_arguments(height):
    """What ImageMagick draws."""
    def offset(x, y):
        return f"+{round(x * height)}+{round(y * height)}"

    arguments = []
    for font, color, background, gravity, size, x, y, text in LABELS:
        arguments += ["-font", font, "-fill", color, "-undercolor", background, "-gravity", gravity,
                      "-pointsize", str(round(size * height)), "-annotate", offset(x, y), text]
    place, size = round(LOGO_OFFSET * height), round(LOGO_SIZE * height)
    return arguments + ["-gravity", "SouthEast", "-draw", f"image over {place},{place} {size},{size} '{DATA / 'logo.png'}'"]


def cases(stamp, folder, count, is_chosen):
    """Makes frames in a folder for the cases that are chosen by their names. Yields the name of a case and its
    contenders: name, command, folder of the outputs. A program that isn't installed has no command."""
    for suffix, size, frames in (("png", (1920, 1080), count), ("jpg", (1920, 1080), count),
                                 ("png", (3840, 2160), max(1, count // 10))):
        name = f"overlay-stamp, {frames} {suffix} {size[0]}x{size[1]}"
        if not is_chosen(name):
            continue
        case = Path(folder) / name
        make_frames(case / "in", suffix, size, frames)
        inputs = sorted(map(str, (case / "in").iterdir()))
        ours = [stamp, "--quiet", "--overlays", str(DATA / "overlays.json"), *inputs, "--output-dir"]
        peer = ["mogrify", *peer_arguments(size[1]), "-path"]
        commands = {
            "ours": [*ours, str(case / "ours"), "--jobs", "2"],
            "ours, one job": [*ours, str(case / "ours, one job"), "--jobs", "1"],
            "ImageMagick": [*peer, str(case / "ImageMagick"), *inputs] if shutil.which("mogrify") else None,
        }
        for contender in commands:
            (case / contender).mkdir()
        yield name, [(one, commands[one], case / one) for one in commands]
