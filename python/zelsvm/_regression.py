"""Regression with a tube of no loss around the function."""

from __future__ import annotations

from typing import Any

import numpy as np
from sklearn.base import RegressorMixin
from sklearn.utils.validation import column_or_1d

from zelsvm import _engine
from zelsvm._base import BaseMachine


class BaseRegressor(RegressorMixin, BaseMachine):
    """Targets are numbers, and so are predictions."""

    _numeric_targets = True

    def fit(self, X: Any, y: Any, sample_weight: Any = None) -> Any:
        """Trains on the rows of X and their targets y; returns the estimator."""
        self._fit(X, y, sample_weight)
        return self

    def _targets(self, y: Any, weights: np.ndarray | None) -> np.ndarray:
        return np.ascontiguousarray(column_or_1d(y, warn=True), dtype=np.float64)

    def _tube(self) -> float:
        """The width of the tube that is given."""
        return 0.0

    def _constants(self, y: np.ndarray, weights: np.ndarray | None) -> np.ndarray | None:
        counting = y if weights is None else y[weights > 0]
        low, high = counting.min(), counting.max()
        if high - low - self._tube() > self.tol:
            return None
        return np.array([low + (high - low) / 2])

    def predict(self, X: Any) -> np.ndarray:
        """The function's values at the rows of X."""
        return self._apply("predict", X).reshape(-1)


class SVR(BaseRegressor):
    """Epsilon-regression: epsilon is half the tube's width."""

    _formulation = _engine.Formulation.EPSILON_REGRESSION

    def __init__(
        self,
        *,
        kernel: Any = "rbf",
        degree: float = 3,
        gamma: Any = "scale",
        coef0: float = 0.0,
        tol: float = 1e-3,
        C: float = 1.0,
        epsilon: float = 0.1,
        shrinking: bool = True,
        cache_size: float = 200,
        verbose: bool = False,
        max_iter: int = -1,
        n_jobs: int | None = None,
        scale: Any = None,
    ):
        self.kernel = kernel
        self.degree = degree
        self.gamma = gamma
        self.coef0 = coef0
        self.tol = tol
        self.C = C
        self.epsilon = epsilon
        self.shrinking = shrinking
        self.cache_size = cache_size
        self.verbose = verbose
        self.max_iter = max_iter
        self.n_jobs = n_jobs
        self.scale = scale

    def _tube(self) -> float:
        return 2 * self.epsilon

    def _set_parameters(self, parameters: _engine.Parameters) -> None:
        parameters.cost = float(self.C)
        parameters.epsilon = float(self.epsilon)


class NuSVR(BaseRegressor):
    """Nu-regression: nu bounds the share of samples outside of the tube, which finds its width."""

    _formulation = _engine.Formulation.NU_REGRESSION

    def __init__(
        self,
        *,
        nu: float = 0.5,
        C: float = 1.0,
        kernel: Any = "rbf",
        degree: float = 3,
        gamma: Any = "scale",
        coef0: float = 0.0,
        shrinking: bool = True,
        tol: float = 1e-3,
        cache_size: float = 200,
        verbose: bool = False,
        max_iter: int = -1,
        n_jobs: int | None = None,
        scale: Any = None,
    ):
        self.nu = nu
        self.C = C
        self.kernel = kernel
        self.degree = degree
        self.gamma = gamma
        self.coef0 = coef0
        self.shrinking = shrinking
        self.tol = tol
        self.cache_size = cache_size
        self.verbose = verbose
        self.max_iter = max_iter
        self.n_jobs = n_jobs
        self.scale = scale

    def _set_parameters(self, parameters: _engine.Parameters) -> None:
        parameters.cost = float(self.C)
        parameters.nu = float(self.nu)
