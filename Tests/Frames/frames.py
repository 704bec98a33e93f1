# Frames of any depth: what overlay-stamp writes, judged by OpenImageIO and NumPy. Usage: frames.py PROGRAM
import os, re, shutil, struct, subprocess, sys, tempfile, zlib

import numpy as np
import OpenImageIO as oiio

PROGRAM = os.path.abspath(sys.argv[1])
OPAQUE, CLEAR = (255, 128, 0, 255), (0, 128, 255, 128)  # two labels of 16 by 8 pixels, at the top left and at (16, 24)
EXR = {"compression": "zip", "Make": "Acme", "smpte:TimeCode": ("timecode", (0x01020304, 0)), "PixelAspectRatio": 2.0}
STRAIGHT = {"oiio:UnassociatedAlpha": 1}
TIFF, PNG = {"compression": "lzw", "Artist": "Ann", "Exif:FNumber": 2.8}, {**STRAIGHT, "Description": "dusk"}
FRAMES = {
    "half.exr": {"type": "half", "channels": "RGBA", "attributes": EXR}, "tiled.exr": {"type": "half", "tile": 32},
    "float.exr": {"type": "float", "attributes": {"compression": "piz"}}, "light.hdr": {"type": "float"},
    "undated.exr": {"type": "half", "attributes": {"DateTime": 0}}, "signed.tif": {"type": "int16"},
    "half.tif": {"type": "half", "attributes": {"tiff:half": 1, "DateTime": 0}},
    "lossy.exr": {"type": "half", "attributes": {"compression": "dwaa"}}, "parts.exr": {"type": "half"},
    "noise.exr": {"type": "half"}, "noise.dpx": {"type": "uint16"}, "noise.tif": {"type": "float"},
    "mixed.exr": {"type": "half", "channels": "RGBAZI"}, "16.dpx": {"type": "uint16"},
    "cropped.exr": {"type": "half", "data": (20, 10), "display": (128, 80)},
    "overscan.exr": {"type": "half", "data": (-16, -8), "display": (64, 48)},
    "8.dpx": {"type": "uint8", "attributes": {"smpte:TimeCode": EXR["smpte:TimeCode"]}},
    "10.dpx": {"type": "uint16", "attributes": {"oiio:BitsPerSample": 10}},
    "12.dpx": {"type": "uint16", "attributes": {"oiio:BitsPerSample": 12}},
    "8.tif": {"type": "uint8", "attributes": TIFF}, "float.tif": {"type": "float", "channels": "RGBA"},
    "16.tif": {"type": "uint16", "channels": "RGBA", "attributes": STRAIGHT},
    "16.png": {"type": "uint16", "channels": "RGBA", "attributes": PNG},
    "8.tga": {"type": "uint8", "channels": "RGBA", "attributes": {**STRAIGHT, "compression": "rle"}}}
oiio.attribute("debug", 0)  # says what isn't wrong
SCENE = """camera {look_at z} background {rgb <0.1, 0.2, 0.3>} light_source {<-2, 2, -2>, rgb 1}
           sphere {3 * z, 1 pigment {rgb <0.9, 0.5, 0.1>} finish {phong 1}}"""
if shutil.which("povray"):
    FRAMES["rendered.png"] = {"type": "uint16"}
else:
    print("A rendered frame is left out: there is no povray")
CONVERSIONS = {"half.png": "half.exr", "half.tif": "half.exr", "c.dpx": "cropped.exr", "16.exr": "16.png",
               "10.tif": "10.dpx", "16b.dpx": "16.tif"}


def linear(v):
    return np.where(v <= 0.04045, v / 12.92, ((v + 0.055) / 1.055) ** 2.4)


def write(name, type, channels="RGB", attributes={}, data=(0, 0), display=(96, 64), tile=0, pixels=None):
    if pixels is None:
        pixels = np.random.default_rng(1).random((64, 96, len(channels)), np.float32)
    spec = oiio.ImageSpec(*pixels.shape[1::-1], len(channels), type)
    spec.channelnames, (spec.x, spec.y), (spec.full_width, spec.full_height) = tuple(channels), data, display
    spec.tile_width = spec.tile_height = tile
    for key, value in attributes.items():
        spec.attribute(key, *(value if isinstance(value, tuple) else (value,)))
    if name == "half.exr":
        pixels[60, :3, 0] = np.nan, np.inf, -1e5
    output = oiio.ImageOutput.create(name)
    assert output.open(name, spec) and output.write_image(pixels) and output.close(), output.geterror()
    if name == "rendered.png":
        open("scene.pov", "w").write(SCENE)
        subprocess.run(["povray", "+FN16", "+W96", "+H64", "-D", "+Iscene.pov", "+O" + name], capture_output=True, check=True)
    if name.startswith("noise"):
        subprocess.run(["oiiotool", "--pattern", "noise:mono=0", "96x64", "3", "-d", type, "-o", name], check=True)
    if name == "parts.exr":
        subprocess.run(["oiiotool", name, "lossy.exr", "--siappend", "-o", name], check=True)
    if name == "mixed.exr":
        subprocess.run(["oiiotool", name, "--chnames", "R,G,B,A,Z,I", "-d", "Z=float", "-d", "I=uint32", "-o", name], check=True)


def read(name, part=0):
    # The spec of a part, and each channel over the display window in its own type.
    wish = oiio.ImageSpec()
    wish.attribute("oiio:UnassociatedAlpha", 1)
    file = oiio.ImageInput.open(name, wish)
    assert file, f"{name}: {oiio.geterror()}"
    file.seek_subimage(part, 0)
    s, channels = file.spec(), {}
    for i, channel in enumerate(s.channelnames):
        pixels = file.read_image(part, 0, i, i + 1, str(s.channelformat(i)))[..., 0]
        wide = np.zeros((300, 300), pixels.dtype)
        wide[99 + s.y:99 + s.y + s.height, 99 + s.x:99 + s.x + s.width] = pixels
        channels[channel] = wide[99:99 + s.full_height, 99:99 + s.full_width]
    return s, channels


def scaled(pixels):
    return pixels / np.iinfo(pixels.dtype).max if pixels.dtype.kind in "ui" else pixels


def stamped(before, place, color, space, is_straight):
    over, alpha = np.array(color[:3]) / 255, color[3] / 255
    over = linear(over) if space == "linear" else over
    below = scaled(before["A"][place]) if "A" in before else 1
    after = {"A": alpha + below * (1 - alpha)}
    for channel, value in zip("RGB", over):
        share = below * (1 - alpha) / after["A"] if is_straight else 1 - alpha
        after[channel] = value * alpha / (after["A"] if is_straight else 1) + scaled(before[channel][place]) * share
    return after


def check_same(name, part=0):
    spec, before = read(name, part)
    now, after = read("out/" + name, part)
    said = [{(a.name, str(a.value)) for a in s.extra_attribs} | {("channels", s.channelnames), ("type", str(s.format)),
            ("size", s.full_width, s.full_height), ("tiles", s.tile_width)} for s in (spec, now)]
    assert said[0] == said[1], f"{name}: {said[0] ^ said[1]}"
    space = "linear" if scaled(before["R"]).dtype == before["R"].dtype else "sRGB"
    tolerance = 2 ** -7 if name == "light.hdr" else 1 / 255 if before["R"].dtype == np.uint8 else 1e-3
    labels = () if name == "lossy.exr" or part else ((np.s_[0:8, 0:16], OPAQUE), (np.s_[24:32, 16:32], CLEAR))
    for place, color in labels:
        expected = stamped(before, place, color, space, bool(spec.get_int_attribute("oiio:UnassociatedAlpha")))
        for channel in set("RGBA") & before.keys():
            error = np.abs(scaled(after[channel][place]) - expected[channel]).max()
            assert error <= tolerance, f"{name}: {channel} of {color} is off by {error}"
            before[channel][place] = after[channel][place]
    first = 32 if name == "lossy.exr" else 0  # below the chunk of the labels
    for channel in before:
        assert before[channel][first:].tobytes() == after[channel][first:].tobytes(), f"{name}: {channel} has changed"


def stamp(*arguments, errors="", code=0, **environment):
    done = subprocess.run([PROGRAM, "--overlays", "labels.json", "--quiet", *arguments], capture_output=True, text=True,
                          env={**os.environ, "QT_QPA_PLATFORM": "offscreen", **environment})
    assert (done.returncode, bool(re.fullmatch(errors, done.stderr))) == (code, True), f"{arguments}: {done}"


def patched(name, place, format, *numbers):
    content = bytearray(open(name, "rb").read())
    struct.pack_into(format, content, place if isinstance(place, int) else content.index(place) + len(place) + 4, *numbers)
    return content


def profile(kind, *numbers, offset=144):
    # With a single element, of 40 bytes.
    element = kind + struct.pack(f">{len(numbers) + 1}I", 0, *numbers)
    return bytes(128) + struct.pack(">I4sII", 1, b"cprt", offset, 40) + element.ljust(40, b"\0")


def check_profiles():
    rows = {"true": (profile(b"mluc", 1, 12, 0, 12, 28), profile(b"desc", 28)),
            "wrong": (profile(b"mluc", 1, 12, 0, 13, 28), profile(b"mluc", 1 << 31), profile(b"desc", 29),
                      profile(b"desc", 0), profile(b"text")[:-1], profile(b"text", offset=0xffffffe0))}
    for kind, profiles in rows.items():
        names = []
        for i, given in enumerate(profiles):
            names += [f"{kind}{i}.tif", f"{kind}{i}.jpg"]
            typed = (f"uint8[{len(given)}]", np.frombuffer(given, np.uint8))
            write(names[-2], "uint8", attributes={"ICCProfile": typed})
            write(names[-1], "uint8")
            segment = struct.pack(">BBBH", 255, 255, 0xe2, len(given) + 16) + b"ICC_PROFILE\0\1\1" + given
            content = open(names[-1], "rb").read()
            open(names[-1], "wb").write(content[:2] + segment + content[2:])
        errors = "".join(f"{name}: can't read it: .* profile is damaged\n" for name in names) + "12 of 12 frames failed\n"
        stamp("--output-dir", "rest", "--frame-space", "sRGB", *names, errors="" if kind == "true" else errors,
              code=0 if kind == "true" else 1)


def check_hostile():
    box, cut = b"dataWindow\0box2i\0", lambda name: open(name, "rb").read()[:5000]
    subprocess.run(["oiiotool", "half.exr", "-otex", "mip.exr"], check=True)
    write("ink.tif", "uint8", attributes={"tiff:ColorSpace": "CMYK"})
    rows = {"cut.exr": (cut("half.exr"), "end of file"), "cut.dpx": (cut("10.dpx"), "cut off"),
            "cut.tif": (cut("16.tif"), "read"), "cut.png": (cut("16.png"), "image data"),
            "huge.exr": (patched("half.exr", b"displayWindow\0box2i\0", "<4i", 0, 0, 99999, 99999), "above the limit"),
            "none.exr": (patched("half.exr", box, "<4i", 0, 0, -1, -1), "data window"),
            "offset.dpx": (patched("10.dpx", 4, ">I", 10 ** 7), "cut off"), "empty.exr": (b"", "format"),
            "mip.exr": (open("mip.exr", "rb").read(), "levels"), "ink.tif": (open("ink.tif", "rb").read(), "CMYK"),
            "user.dpx": (patched("10.dpx", 32, ">I", 0xf0f0f0f0), "cut off"),
            "bits.tif": (open("8.tif", "rb").read().replace(b"\2\1\3\0", b"\xe8\xfd\3\0"), "how many bits"),
            "rows.dpx": (patched("12.dpx", 812, ">I", 0x70707070), "cut off"),
            "deep.ppm": (b"P6\n# maxval\n1 1\n65535\n123456", "16 bits")}
    for name, (content, _) in rows.items():
        open(name, "wb").write(content)
    lines = "".join(f"{name}: can't read it: .*{reason}.*\n" for name, (_, reason) in rows.items())
    stamp("--output-dir", "rest", *rows, "half.exr", errors=lines + "14 of 15 frames failed\n", code=1)
    assert os.listdir("rest") == ["half.exr"]
    stamp("--output-dir", "x", "--frame-space", "linaer", "half.exr", code=2,
          errors='--frame-space: .*linear, sRGB, Rec709, got "linaer", did you mean "linear"\\?\n')
    stamp("--output-dir", "x", "half.exr", OCIO="no.ocio", code=2, errors="OCIO: .*no.ocio.*\n")


def check_conversions():
    subprocess.run("oiiotool half.exr --origin +9+9 --fullpixels -o far.exr", shell=True, check=True)
    stamp("--output", "far.bmp", "far.exr")
    for target, source in CONVERSIONS.items():
        stamp("--output", target, source)
        (spec, was), (now, after) = read("out/" + source), read(target)
        for channel in "RGB":
            a, b, alpha = (scaled(c)[:60].astype(float) for c in (was[channel], after[channel], was.get("A", after["R"])))
            a = a / alpha if target == "half.png" else linear(a) * alpha if target == "16.exr" else a
            b = linear(b) if target in ("half.png", "c.dpx") else b
            assert np.abs(np.minimum(a, 1) - b).max() < 2e-3, f"{target}: {channel}"


def check_metadata():
    chunk = lambda kind, data: struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    segment = lambda marker, data: struct.pack(">BBH", 255, marker, len(data) + 2) + data
    exif = lambda turned: segment(0xe1, b"Exif\0\0MM\0*" + struct.pack(">IHHHIHHI", 8, 1, 0x112, 3, 1, turned, 0, 0))
    kept = [segment(0xe2, b"ICC_PROFILE\0\1\1" + bytes(16) + b"RGB " + bytes(9)), segment(0xed, b"Photoshop"),
            segment(0xe1, b"http://ns.adobe.com/xap/1.0/\0<x/>"), segment(0xfe, b"note")]
    ink = segment(0xe2, b"ICC_PROFILE\0\1\1" + bytes(16) + b"CMYK" + bytes(9))
    chunks = [chunk(b"gAMA", struct.pack(">I", 45455)), chunk(b"tIME", bytes(7)), chunk(b"eXIf", b"MM\0*"),
              chunk(b"zTXt", b"Z\0\0" + zlib.compress(b"z")), chunk(b"pHYs", struct.pack(">IIB", 5000, 6000, 1))]
    rows = (("j.jpg", "uint8", 2, [*kept, exif(6)], [*kept, exif(1)]), ("ink.jpg", "uint8", 2, [ink, kept[3]], kept[3:]),
            ("l.hdr", "float", 11, [b"EXPOSURE=2\n"], [b"EXPOSURE=2\n"]), ("p.png", "uint8", 33, chunks, chunks),
            ("p16.png", "uint16", 33, chunks, chunks))
    for name, type, place, given, expected in rows:
        write(name, type)
        content = open(name, "rb").read()
        open(name, "wb").write(content[:place] + b"".join(given) + content[place:])
        stamp("--output", "meta-" + name, name)
        result = open("meta-" + name, "rb").read()
        assert [p in result for p in given + expected] == [p in expected for p in given + expected], f"{name}: {result}"


with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    for name, color in (("opaque.png", OPAQUE), ("clear.png", CLEAR)):
        write(name, "uint8", "RGBA", STRAIGHT, display=(16, 8), pixels=np.full((8, 16, 4), color, np.uint8))
    open("labels.json", "w").write("""{"overlays": [
        {"contentType": "image", "image": "opaque.png", "size": 8, "anchor": [0, 1]},
        {"contentType": "image", "image": "clear.png", "size": 8, "anchor": [0, 1], "offset": [16, -24]}]}""")
    for name, frame in FRAMES.items():
        write(name, **frame)
    stamp("--output-dir", "out", "--jobs", "4", *FRAMES)
    stamp("--output-dir", "again", "--jobs", "1", *FRAMES)
    for name in FRAMES:
        for part in range(2 if name == "parts.exr" else 1):
            check_same(name, part)
        assert open("out/" + name, "rb").read() == open("again/" + name, "rb").read(), f"{name}: jobs change it"
    check_conversions()
    check_hostile()
    check_profiles()
    check_metadata()
