"""Measures the library beside its peers, in one run, and prints a table.

Of a case every contender measures in turn, nine times, and the medians count. A ratio says how many times as long as
ours a peer takes.
"""

import argparse
import json
import platform
import re
import statistics
import subprocess
import tempfile
import time
from pathlib import Path

import numpy

try:
    import PIL.Image
except ImportError:
    PIL = None

import chart
import programs

ROUNDS = 9


class Server:
    """ztOverlayBenchmarks: answers a line of words with a line of JSON."""

    def __init__(self, program, is_trial):
        self._process = subprocess.Popen([program] + ["--try"] * is_trial, stdin=subprocess.PIPE,
                                         stdout=subprocess.PIPE, text=True)

    def ask(self, *words):
        self._process.stdin.write("\t".join(words) + "\n")
        self._process.stdin.flush()
        return json.loads(self._process.stdout.readline())


class Served:
    """A contender in the server."""

    def __init__(self, server, name, measures, draws):
        self.name, self.is_missing, self.draws = name, not measures, draws
        self._server = server

    def measure(self):
        return self._server.ask("measure", self.name)

    def picture(self):
        with tempfile.NamedTemporaryFile() as file:
            self._server.ask("picture", self.name, file.name)
            return numpy.fromfile(file.name, numpy.uint8)


class Pillow:
    """Resampling with the filter of the library."""

    name, is_missing, draws = "Pillow", PIL is None, True

    def __init__(self, source, size):
        self._source, self._size = source, size

    def _resize(self):
        return self._image.resize(self._size, PIL.Image.BILINEAR)

    def measure(self):
        height, width, _ = self._source.shape
        self._image = PIL.Image.frombytes("RGBa", (width, height), self._source.tobytes())
        return {"seconds": seconds_of(self._resize)}

    def picture(self):
        self.measure()
        return numpy.frombuffer(self._resize().tobytes(), numpy.uint8)


class Program:
    """A whole program that reads and writes files."""

    draws = False

    def __init__(self, name, command, output_folder):
        self.name, self.is_missing = name, command is None
        self._command, self._folder = command, output_folder

    def measure(self):
        start = time.perf_counter()
        subprocess.run(self._command, check=True)
        seconds = time.perf_counter() - start
        return {"seconds": seconds, "bytes": sum(file.stat().st_size for file in Path(self._folder).iterdir())}


def seconds_of(work, enough=0.02):
    runs, seconds = 0, 0.0
    start = time.perf_counter()
    while seconds < enough:
        work()
        runs += 1
        seconds = time.perf_counter() - start
    return seconds / runs


def weights(size, source_size):
    """The triangle filter's, a row for each new pixel, in double precision."""
    factor = source_size / size
    centers = (numpy.arange(size)[:, None] + 0.5) * factor
    distances = numpy.abs(numpy.arange(source_size)[None, :] + 0.5 - centers) / max(factor, 1.0)
    triangle = numpy.maximum(1.0 - distances, 0.0)
    return triangle / triangle.sum(axis=1, keepdims=True)


def resampled(source, size):
    rows = numpy.tensordot(weights(size[1], source.shape[0]), source.astype(float), 1)
    return numpy.einsum("xw,ywc->yxc", weights(size[0], source.shape[1]), rows, optimize=True)


class Resampling:
    """Judges pictures by a reference in double precision."""

    def __init__(self, name, source_bytes):
        width, height, *self.size = map(int, re.fullmatch(r"scale (\d+)x(\d+) to (\d+)x(\d+)", name).groups())
        self.source = source_bytes.reshape(height, width, 4)
        self._reference = resampled(self.source, self.size)

    def error_of(self, contender):
        return float(numpy.abs(contender.picture().reshape(self._reference.shape) - self._reference).max())


def contenders_of(server, case):
    """The contenders of a case, and what to judge their pictures by, or None."""
    contenders = [Served(server, **one) for one in server.ask("open", case)]
    source = next((one for one in contenders if one.name == "source"), None)
    if not source:
        return contenders, None
    contenders.remove(source)
    judge = Resampling(case, source.picture())
    return contenders + [Pillow(judge.source, judge.size)], judge


def compare(contenders, judge, rounds):
    """What each contender has measured, by its name; None for one that is missing."""
    samples = {one.name: [] for one in contenders if not one.is_missing}
    for _ in range(rounds):
        for one in contenders:
            if not one.is_missing:
                samples[one.name].append(one.measure())
    results = {one.name: None for one in contenders}
    for name, measured in samples.items():
        results[name] = {key: statistics.median(sample[key] for sample in measured) for key in measured[0]}
        results[name]["all seconds"] = [sample["seconds"] for sample in measured]
    if judge:
        for one in contenders:
            if one.draws and not one.is_missing:
                results[one.name]["error"] = round(judge.error_of(one), 2)
    return results


def with_unit(seconds):
    for unit, factor in (("s", 1), ("ms", 1e3), ("us", 1e6)):
        if seconds * factor >= 1:
            return f"{seconds * factor:.3g} {unit}"
    return f"{seconds * 1e9:.3g} ns"


def cell_of(result, ours):
    facts = "".join(f", {key} {value:,.10g}" for key, value in result.items() if key not in ("seconds", "all seconds"))
    ratio = f" **{result['seconds'] / ours['seconds']:.2f}**" if result is not ours else ""
    return with_unit(result["seconds"]) + ratio + facts


def row_of(case, results):
    ours, *peers = results.items()
    cells = [f"{name} {cell_of(result, ours[1]) if result else 'missing'}" for name, result in peers]
    return f"| {case:40} | {cell_of(ours[1], ours[1]):8} | {'; '.join(cells)} |"


def processor():
    models = [line.split(":")[1].strip() for line in open("/proc/cpuinfo") if line.startswith("model name")]
    return f"{models[0]}, {len(models)} cores" if models else platform.processor()


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter,
                                     prog="Scripts/benchmark")
    parser.add_argument("cases", nargs="*", metavar="PATTERN", help="only cases whose name has one of these in it")
    parser.add_argument("--json", metavar="FILE", help="write the results there")
    parser.add_argument("--chart", metavar="FILE", help="draw the ratios there")
    parser.add_argument("--try", dest="is_trial", action="store_true",
                        help="run everything once, to see that it works; the figures mean nothing")
    parser.add_argument("--program", required=True, help=argparse.SUPPRESS)
    parser.add_argument("--stamp", required=True, help=argparse.SUPPRESS)
    options = parser.parse_args()

    rounds = 1 if options.is_trial else ROUNDS
    server = Server(options.program, options.is_trial)
    results = {}

    def measure(case, contenders, judge=None):
        results[case] = compare(contenders, judge, rounds)
        print(row_of(case, results[case]), flush=True)

    def is_chosen(case):
        return not options.cases or any(pattern in case for pattern in options.cases)

    print("| Case | Ours | Peers, **how many times as long** |\n|---|---|---|")
    for case in filter(is_chosen, server.ask("cases")):
        measure(case, *contenders_of(server, case))
    with tempfile.TemporaryDirectory() as folder:
        for case, commands in programs.cases(options.stamp, folder, 2 if options.is_trial else 100, is_chosen):
            measure(case, [Program(*command) for command in commands])
    run = {"processor": processor(), "cases": results}
    if options.json:
        Path(options.json).write_text(json.dumps(run, indent=1) + "\n")
    if options.chart:
        chart.draw(run, options.chart)


if __name__ == "__main__":
    main()
