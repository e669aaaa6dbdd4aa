"""Data that the tests share."""

from __future__ import annotations

import numpy as np

from zelsvm import SVR, NuSVR


def classes(rows: int, labels: list, features: int = 4, seed: int = 0):
    """Overlapping clouds, the labels' rows mixed so that the last label comes first."""
    rng = np.random.default_rng(seed)
    y = np.array(labels)[::-1][np.arange(rows) % len(labels)]
    centres = dict(zip(labels, rng.normal(size=(len(labels), features)), strict=True))
    return rng.normal(size=(rows, features)) + np.array([centres[label] for label in y]), y


def curve(rows: int, features: int = 4, seed: int = 0):
    rng = np.random.default_rng(seed)
    X = rng.normal(size=(rows, features))
    return X, np.sin(X[:, 0]) + 0.3 * X[:, 1] + 0.1 * rng.normal(size=rows)


def data_for(estimator, rows: int = 120):
    name = estimator if isinstance(estimator, type) else type(estimator)
    return curve(rows) if name in (SVR, NuSVR) else classes(rows, [0, 1, 2])


def outcome(estimator, X):
    """What the estimator says of X, every bit of it."""
    method = getattr(estimator, "decision_function", estimator.predict)
    return method(X)
