"""Judges streams and layers of overlay-stamp by the plain formula and oiiotool: pipes.py OVERLAY_STAMP [OIIOTOOL]"""
import random
import struct
import subprocess
import sys
from pathlib import Path

PIXELS = 40 * 30
PAM = "P7\nWIDTH 40\nHEIGHT 30\nDEPTH %d\nMAXVAL %d\n%sENDHDR\n"
LAYER = (PAM % (4, 255, "TUPLTYPE RGB_ALPHA\n"), 4, 255)  # header, channels, maxval
FORMS = [
    LAYER,
    ("P6\n# a # comment\n40 30\n255\n", 3, 255),
    ("P6 40\t30 #\n15\r", 3, 15),
    ("P6\n40 30\n65535\n", 3, 65535),
    (PAM % (1, 510, "\n#\n"), 1, 510),
    (PAM % (2, 65535, ""), 2, 65535),
]
LABELS = """{"overlays": [{"text": "{index}", "size": 9}, {"text": "x", "size": 7, "anchor": [%d, %d],
    "backgroundColor": [1, 0.2, 0.4], "backgroundTransparency": [0.4, 0.5, 0.6]}]}"""


def stamp(*arguments, stream=b""):
    command = [sys.argv[1], "--quiet", "--overlays", "labels.json", "--output", *arguments]
    done = subprocess.run(command, input=stream, capture_output=True)
    assert (done.returncode, done.stderr) == (0, b""), done
    return done.stdout


def code(form):
    return ">%d%s" % (PIXELS * form[1], "B" if form[2] < 256 else "H")


def create(form):
    return form[0].encode() + struct.pack(code(form), *[random.randint(0, form[2]) for _ in range(PIXELS * form[1])])


def take(form, stream):
    """The pixels of the first picture, and what is behind it."""
    assert stream.startswith(form[0].encode()), stream[:99]
    end = len(form[0]) + struct.calcsize(code(form))
    samples = struct.unpack(code(form), stream[len(form[0]):end])
    return [samples[i:i + form[1]] for i in range(0, len(samples), form[1])], stream[end:]


def over(layer, below, maxval):
    """A layer's pixel of straight alpha over another, with their alpha behind them, but for gray to a 255th."""
    colors = [round(c * layer[3] / 255) / 255 for c in layer[:3]]
    if len(below) < 3:
        colors = [0.2126 * colors[0] + 0.7152 * colors[1] + 0.0722 * colors[2]]
    alpha_below = (below[-1] / maxval if len(below) % 2 == 0 else 1) * (1 - layer[3] / 255)
    alpha = layer[3] / 255 + alpha_below
    return [(c * maxval + below[i] * alpha_below) / alpha for i, c in enumerate(colors)] + [alpha * maxval]


def check_forms():
    stream = b"".join(map(create, FORMS))
    stamped = stamp("-", "--jobs", "8", "-", stream=stream)
    assert stamped == stamp("-", "--jobs", "1", "-", stream=stream)
    layers = stamp("-", "--layer", "40x30", "--count", str(len(FORMS)))
    for form in FORMS:
        (before, stream), (after, stamped), (layer, layers) = take(form, stream), take(form, stamped), take(LAYER, layers)
        assert 0 < sum(pixel[3] > 0 for pixel in layer) < PIXELS / 2
        for was, now, top in zip(before, after, layer):
            right = now == was if top[3] == 0 else all(abs(x - y) < 0.505 for x, y in zip(now, over(top, was, form[2])))
            assert right, (form, was, now, top)
    assert stamped == layers == b""


def check_files(most):
    """What is stamped onto a file and what is streamed differ by so much at most, a layer that is merged by 1 more."""
    distance = lambda a, b: max(abs(x - y) for x, y in zip(a[-PIXELS * 3:], b[-PIXELS * 3:]))
    frame = create(FORMS[1])
    Path("frame.ppm").write_bytes(frame)
    stamp("stamped.ppm", "frame.ppm")
    stamp("layer.##.png", "--layer", "40x30", "--frames", "1")
    direct = Path("stamped.ppm").read_bytes()
    streamed = stamp("-", "-", stream=frame)
    assert distance(direct, streamed) <= most
    stamp("still.##.ppm", "-", stream=frame)
    assert Path("still.00.ppm").read_bytes() == streamed
    if sys.argv[2:]:
        merge = "--iconfig oiio:UnassociatedAlpha 1 layer.01.png --premult frame.ppm --ch R,G,B,A=1 --over --ch R,G,B"
        subprocess.run([sys.argv[2], *merge.split(), "-d", "uint8", "-o", "merged.ppm"], check=True)
        assert distance(direct, Path("merged.ppm").read_bytes()) <= 1 + most


random.seed(22)
for anchor, most in ((1, 0), (0, 1)):
    Path("labels.json").write_text(LABELS % (anchor, anchor))
    check_forms()
    check_files(most)
