"""What the engine reads, made of validated arrays."""

from __future__ import annotations

from typing import Any

import numpy as np
from scipy import sparse

from zelsvm import _engine

_CHUNK = 1 << 16  # numbers that are widened at a time


def rows(X: Any) -> _engine.Samples:
    """The rows of a dense array or a CSR matrix, borrowed."""
    if not sparse.issparse(X):
        return _engine.Samples.dense(X)
    if not X.has_canonical_format:
        X = X.copy()
        X.sum_duplicates()
    return _engine.Samples.csr(X.data, X.indices, X.indptr, X.shape[1])


def scale_gamma(X: Any, weights: np.ndarray | None, interval: Any) -> float:
    """One over the number of features times the variance of all values, each row weighted.

    interval: what the features are scaled to before, or None.
    """
    if weights is not None:
        X, weights = X[weights > 0], weights[weights > 0]
    counts = np.ones(X.shape[0]) if weights is None else weights
    factors, offsets = (1.0, 0.0) if interval is None else _scaling(X, interval)
    measure = _sparse_variance if sparse.issparse(X) else _variance
    variance = measure(X, counts, factors, offsets)
    return 1.0 / (X.shape[1] * variance) if variance > 0 else 1.0


def _scaling(X: Any, interval: Any) -> tuple[np.ndarray, np.ndarray]:
    """What takes each feature's range to the interval, as the model will."""
    low, high = X.min(axis=0), X.max(axis=0)
    if sparse.issparse(X):
        low, high = low.toarray().ravel(), high.toarray().ravel()
    low, high = low.astype(np.float64), high.astype(np.float64)
    spread = np.where(high > low, high - low, np.inf)
    factors = (interval[1] - interval[0]) / spread
    return factors, np.where(high > low, interval[0] - low * factors, 0.0)


def _variance(X: np.ndarray, counts: np.ndarray, factors: Any, offsets: Any) -> float:
    step = max(1, _CHUNK // X.shape[1])
    total = counts.sum() * X.shape[1]

    def mean(term: Any) -> float:
        sums = 0.0
        for i in range(0, X.shape[0], step):
            block = X[i : i + step].astype(np.float64) * factors + offsets
            sums += float(np.sum(term(block).sum(axis=1) * counts[i : i + step]))
        return sums / total

    centre = mean(lambda block: block)
    return mean(lambda block: np.square(block - centre))


def _sparse_variance(X: Any, counts: np.ndarray, factors: Any, offsets: Any) -> float:
    """The same of rows whose other values are 0."""
    columns = X.shape[1]
    total = counts.sum() * columns
    weights = np.repeat(counts, np.diff(X.indptr))
    zeros = counts.sum() - np.bincount(X.indices, weights, minlength=columns)
    factors, offsets = np.broadcast_to(factors, columns), np.broadcast_to(offsets, columns)
    values = X.data * factors[X.indices] + offsets[X.indices]

    def mean(term: Any) -> float:
        return float(np.sum(term(values) * weights) + np.sum(term(offsets) * zeros)) / total

    centre = mean(lambda value: value)
    return mean(lambda value: np.square(value - centre))
