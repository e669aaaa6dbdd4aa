"""The jobs that bench/run times, and the data they take."""
import lzma
import os
import shutil
import subprocess
from dataclasses import dataclass
from pathlib import Path

TOP = Path(__file__).resolve().parent.parent


@dataclass(frozen=True)
class Job:
    name: str
    data: str
    options: str = ""  # of zelsvm-train, also where a prediction is timed
    tool: str = "zelsvm-train"
    full: bool = False  # too long for every day


# parse: predicting with a handful of support vectors is little more than reading.
JOBS = [
    Job("start-up", "cancer", "-x -1:1 -c 2"),
    Job("spam", "spam", "-c 10 -g 0.1"),
    Job("letter", "letter", "-c 16 -g 1"),
    Job("diamonds", "diamonds", "-s 3 -c 10 -g 0.11 -p 0.05"),
    Job("5000x100", "synthetic 5000 100", "-c 10 -g 0.05"),
    Job("20000x100-small-cache", "synthetic 20000 100", "-c 1 -g 0.05 -m 100", full=True),
    Job("20000x100", "synthetic 20000 100", "-c 10 -g 0.05 -m 1000", full=True),
    Job("10000x784", "synthetic 10000 784", "-c 1 -g 0.006 -m 100", full=True),
    Job("500000x50", "synthetic 500000 50", "-c 1 -g 0.02 -m 1000", full=True),
    Job("words", "words", "-c 1 -g 0.1 -m 1000", full=True),
    Job("predict-letter", "letter", "-c 16 -g 1", "zelsvm-predict"),
    Job("predict-5000x100", "synthetic 5000 100", "-c 10 -g 0.05", "zelsvm-predict"),
    Job("predict-20000x100", "synthetic 20000 100", "-c 10 -g 0.05 -m 1000", "zelsvm-predict", True),
    Job("parse", "lines 20000 100", "-t 0", "zelsvm-predict"),
    Job("parse-dense", "lines 20000 100", "-t 0 -X", "zelsvm-predict"),
]


class MissingData(Exception):
    """A data set that is not in the repository and was not given."""


class Store:
    """A folder of prepared data and models, made where they are missing."""

    def __init__(self, folder, build):
        self.folder = folder
        self.build = build
        folder.mkdir(parents=True, exist_ok=True)

    def command(self, job):
        """The job's argument list and the file that it writes."""
        train, test = self.files(job.data)
        output = self.folder / "output"
        if job.tool == "zelsvm-train":
            return [job.tool, *job.options.split(), train, output], output
        model = self.folder / f"{job.name}.model"
        if self._older(model, train):
            self._run("bin/zelsvm-train", *job.options.split(), train, model)
        dense = ["-X"] if "-X" in job.options.split() else []
        return [job.tool, *dense, test, model, output], output

    def files(self, data):
        """Training and test part of a data set."""
        kind, *sizes = data.split()
        train, test = (self.folder / f"{'-'.join([kind, *sizes])}{end}" for end in (".txt", ".t"))
        source = self._source(kind, "train")
        if self._older(train, source) or self._older(test, source):
            getattr(self, f"_make_{kind}", self._scale)(kind, sizes, train, test)
        return train, test

    def _source(self, kind, part):
        """What the data are made of."""
        if kind in ("synthetic", "lines"):
            return self.build / "bench/synthetic"
        if kind == "cancer":
            return TOP / "examples/cancer/cancer.txt"
        folder = os.environ.get("BENCH_DATA")
        for name in (f"{kind}_{part}.txt", f"{kind}_{part}.txt.xz"):
            if folder and (Path(folder) / name).exists():
                return Path(folder) / name
        raise MissingData(f"{kind}_{part}.txt[.xz] is not in the folder that BENCH_DATA names")

    def _make_cancer(self, kind, _sizes, train, test):
        for part in (train, test):
            shutil.copyfile(self._source(kind, ""), part)

    def _make_synthetic(self, _kind, sizes, train, test):
        samples, features = map(int, sizes)
        self._run("bench/synthetic", samples, features, max(1000, samples // 4), train, test)

    def _make_lines(self, _kind, sizes, train, test):
        """A few samples to train with, many to read."""
        self._run("bench/synthetic", 20, sizes[1], sizes[0], train, test)

    def _make_words(self, kind, _sizes, train, test):
        for part, target in (("train", train), ("test", test)):
            self._unpack(self._source(kind, part), target)

    def _scale(self, kind, _sizes, train, test):
        """Both parts by the ranges of the training part."""
        plain, record = self.folder / "plain", self.folder / "record"
        self._unpack(self._source(kind, "train"), plain)
        self._run("bin/zelsvm-scale", "-x", "-1:1", "-s", record, plain, train)
        self._unpack(self._source(kind, "test"), plain)
        self._run("bin/zelsvm-scale", "-r", record, plain, test)

    @staticmethod
    def _unpack(source, target):
        with (lzma.open if source.suffix == ".xz" else open)(source, "rb") as packed:
            with open(target, "wb") as plain:
                shutil.copyfileobj(packed, plain)

    @staticmethod
    def _older(made, source):
        return not made.exists() or made.stat().st_mtime < source.stat().st_mtime

    def _run(self, program, *arguments):
        command = [str(self.build / program), *map(str, arguments)]
        subprocess.run(command, check=True, stdout=subprocess.DEVNULL)
