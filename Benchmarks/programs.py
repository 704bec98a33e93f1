"""Frames of a rendering, and the command lines that stamp labels and a logo onto all of them."""

import json
import re
import shutil
import subprocess
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
    logo = f"image over {place},{place} {size},{size} '{DATA / 'logo.png'}'"
    return arguments + ["-gravity", "SouthEast", "-draw", logo]


def pictures(stamp, case, suffix, size, count):
    """Files beside ImageMagick's."""
    make_frames(case / "in", suffix, size, count)
    inputs = sorted(map(str, (case / "in").iterdir()))
    ours = [stamp, "--quiet", "--overlays", str(DATA / "overlays.json"), *inputs, "--output-dir"]
    peer = ["mogrify", *peer_arguments(size[1]), "-path"]
    return {
        "ours": [*ours, str(case / "ours"), "--jobs", "2"],
        "ours, one job": [*ours, str(case / "ours, one job"), "--jobs", "1"],
        "ImageMagick": [*peer, str(case / "ImageMagick"), *inputs] if shutil.which("mogrify") else None,
    }


def half_floats(stamp, case, suffix, size, count):
    """EXR files beside those of oiiotool, which draws the texts alone, without what is behind them."""
    make_frames(case / "png", "png", size, count)
    (case / "in").mkdir()
    frames = f"0-{count - 1}"
    subprocess.run(["oiiotool", "--frames", frames, case / "png/frame_%03d.png", "--colorconvert", "sRGB", "linear",
                    "-d", "half", "--compression", "zip", "-o", case / "in/frame_%03d.exr"], check=True)
    texts = []
    for font, color, _, _, height, x, y, text in LABELS:
        place = f"x={round(x * size[1])}:y={round((y + 0.1) * size[1])}:size={round(height * size[1])}"
        texts += [f"--text:{place}:font={font_file(font)}", text.replace("%p/", "")]
    return {
        "ours": [stamp, "--quiet", "--overlays", str(DATA / "overlays.json"), "--jobs", "2", "--output-dir",
                 str(case / "ours"), *sorted(map(str, (case / "in").iterdir()))],
        "oiiotool --text": ["oiiotool", "--frames", frames, str(case / "in/frame_%03d.exr"), *texts, "-o",
                            str(case / "oiiotool --text/frame_%03d.exr")],
    }


def video(stamp, case, suffix, size, count):
    """A video's frames through pipes beside those of ffmpeg's own filter. None is encoded."""
    make_frames(case / "in", "png", size, count)
    film, labels = case / "in.mkv", case / "labels.json"
    subprocess.run(["ffmpeg", "-v", "error", "-i", case / "in/frame_%03d.png", "-c:v", "mpeg4", "-q:v", "2", film],
                   check=True)
    overlays = json.loads((DATA / "overlays.json").read_text())["overlays"]
    texts = [{**one, "text": one["text"].replace("/{count}", "")} for one in overlays if "text" in one]
    labels.write_text(json.dumps({"overlays": texts}))
    boxes = []
    for i, (font, color, background, _, height, x, y, text) in enumerate(LABELS):
        (case / f"{i}.txt").write_text(text.replace("%p/100", "%{n}").replace("%f", "-"))
        boxes.append(f"drawtext=fontfile={font_file(font)}:textfile={case}/{i}.txt:fontcolor={color}:"
                     f"fontsize={round(height * size[1])}:x={round(x * size[1])}:y={round(y * size[1])}"
                     + (f":box=1:boxcolor={background}" if background != "none" else ""))
    read, drawn = f"ffmpeg -v error -i '{film}'", f"-vf '{','.join(boxes)}'"
    to_pipe, from_pipe = "-f image2pipe -c:v pam -", "ffmpeg -v error -f image2pipe -c:v pam -i - -f null -"
    ours = f"'{stamp}' --quiet --overlays '{labels}' --output - -"
    return {name: ["bash", "-c", "set -o pipefail; " + command] for name, command in {
        "ours, by pipe": f"{read} {to_pipe} | {ours} | {from_pipe}",
        "ffmpeg drawtext, by pipe": f"{read} {drawn} {to_pipe} | cat | {from_pipe}",
        "cat, by pipe": f"{read} {to_pipe} | cat | {from_pipe}",
        "ffmpeg drawtext": f"{read} {drawn} -f null -"}.items()}


def font_file(name):
    family = re.sub("-Regular$", "", name).replace("-", " ")
    return subprocess.run(["fc-match", "-f", "%{file}", family], check=True, capture_output=True, text=True).stdout


def cases(stamp, folder, count, is_chosen):
    """Makes frames in a folder for the cases that are chosen by their names. Yields the name of a case and its
    contenders: name, command, folder of the outputs. A program that isn't installed has no command."""
    full, large = (1920, 1080), (3840, 2160)
    for make, suffix, size, frames in ((pictures, "png", full, count), (pictures, "jpg", full, count),
                                       (pictures, "png", large, max(1, count // 10)), (half_floats, "exr", full, count),
                                       (video, "video frames", full, 2 * count)):
        name = f"overlay-stamp, {frames} {suffix} {size[0]}x{size[1]}"
        if not is_chosen(name):
            continue
        case = Path(folder) / re.sub("[ ,]+", "-", name)
        commands = make(stamp, case, suffix, size, frames)
        for contender in commands:
            (case / contender).mkdir(parents=True, exist_ok=True)
        yield name, [(one, commands[one], case / one) for one in commands]
