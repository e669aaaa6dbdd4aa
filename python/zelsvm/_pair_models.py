"""A model of each pair of classes, where class weights leave some pairs only a constant."""

from __future__ import annotations

from collections.abc import Callable
from dataclasses import dataclass
from typing import Any

import numpy as np

from zelsvm import _engine


@dataclass(frozen=True)
class PairModel:
    """One pair's decision function, above 0 for its first class."""

    rows: np.ndarray  # of the training samples
    model: _engine.Model
    sign: float  # that the model's function takes


@dataclass(frozen=True)
class Constant:
    """The class that outweighs the other, as 1 for the first and -1 for the second."""

    value: float
    iterations: int = 0
    converged: bool = True
    gap: float = 0.0
    objective: float = 0.0


class PairModels:
    """Tells what an engine's model tells, of labels in ascending order."""

    def __init__(self, labels: np.ndarray, places: np.ndarray, pairs: list[PairModel | Constant]):
        """places: for every training sample the place of its label."""
        self._labels = labels
        self._pairs = pairs
        coefficients = np.zeros((len(pairs), len(places)))
        for row, pair in zip(coefficients, pairs, strict=True):
            if isinstance(pair, PairModel):
                support = pair.rows[pair.model.support_indices()]
                row[support] = pair.sign * pair.model.dual_coefficients()[0]
        used = np.flatnonzero(coefficients.any(axis=0))
        self._support = used[np.argsort(places[used], kind="stable")]
        self._coefficients = coefficients[:, self._support]
        self._counts = np.bincount(places[used], minlength=len(labels))

    def labels(self) -> np.ndarray:
        return self._labels

    def support_counts(self) -> np.ndarray:
        return self._counts

    def support_indices(self) -> np.ndarray:
        return self._support

    def dual_coefficients(self) -> np.ndarray:
        return self._coefficients

    def intercepts(self) -> np.ndarray:
        return np.array(self._of_each(lambda pair: pair.sign * pair.model.intercepts()[0]))

    def solves(self) -> list[Any]:
        return [p if isinstance(p, Constant) else p.model.solves()[0] for p in self._pairs]

    def decide(self, samples: _engine.Samples, threads: int) -> np.ndarray:
        count = samples.rows()
        columns = self._of_each(lambda p: p.sign * p.model.decide(samples, threads)[:, 0])
        return np.column_stack([np.broadcast_to(column, count) for column in columns])

    def _of_each(self, value: Callable[[PairModel], Any]) -> list[Any]:
        return [p.value if isinstance(p, Constant) else value(p) for p in self._pairs]
