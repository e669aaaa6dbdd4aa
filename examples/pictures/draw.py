"""draw.py KIND DATA PICTURE TITLE ...: the same pictures as the gnuplot scripts beside it."""

import sys

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt


def columns(path):
    """The columns of the file's lines of numbers."""
    with open(path) as lines:
        rows = [list(map(float, line.split())) for line in lines if line.strip()]
    return [list(column) for column in zip(*rows)]


def grid(data, measure, best, log2c, log2gamma):
    c, gamma, value = columns(data)
    best = float(best)
    span = (min(value) if best == max(value) else max(value)) - best
    if span != 0 and len(set(c)) > 1 and len(set(gamma)) > 1:
        steps = sorted([best] + [best + span / 2**k for k in range(1, 7)])
        plt.tricontourf(gamma, c, value, steps, extend="both",
                        norm=matplotlib.colors.BoundaryNorm(steps, 256, extend="both"),
                        cmap="viridis" if span < 0 else "viridis_r")
        plt.colorbar(label=measure)
    plt.plot(float(log2gamma), float(log2c), "rx", markersize=12)
    plt.xlabel("log2 gamma")
    plt.ylabel("log2 C")


def boundary(data, samples, xlabel, ylabel):
    x, y, label = columns(data)
    sx, sy, sample_label = columns(samples)
    across = len(set(x))
    image = [label[i:i + across] for i in range(0, len(label), across)]
    low, high = min(label + sample_label), max(label + sample_label)
    plt.imshow(image, origin="lower", aspect="auto", extent=(min(x), max(x), min(y), max(y)),
               cmap="Pastel1", vmin=low, vmax=high, interpolation="nearest")
    plt.scatter(sx, sy, c=sample_label, cmap="Set1", vmin=low, vmax=high, s=20,
                edgecolors="black", linewidths=0.5)
    plt.xlabel(xlabel)
    plt.ylabel(ylabel)


def calibration(data):
    predicted, observed, count = columns(data)
    plt.plot([0, 1], [0, 1], "--", color="gray")
    plt.plot(predicted, observed, "o-")
    for p, o, n in zip(predicted, observed, count):
        plt.annotate(f"{n:g}", (p, o), textcoords="offset points", xytext=(6, -12))
    plt.xlabel("predicted probability")
    plt.ylabel("observed frequency")


kind, data, picture, title = sys.argv[1:5]
plt.figure(figsize=(9, 7))
{"grid": grid, "boundary": boundary, "calibration": calibration}[kind](data, *sys.argv[5:])
plt.title(title)
plt.savefig(picture, dpi=100)
