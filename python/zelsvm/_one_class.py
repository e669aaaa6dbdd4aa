"""Outlier detection by one-class machines."""

from __future__ import annotations

from typing import Any

import numpy as np
from sklearn.base import OutlierMixin

from zelsvm import _engine
from zelsvm._base import BaseMachine


class OneClassSVM(OutlierMixin, BaseMachine):
    """A boundary around most samples; nu bounds the share of those outside."""

    _formulation = _engine.Formulation.ONE_CLASS

    def __init__(
        self,
        *,
        kernel: Any = "rbf",
        degree: float = 3,
        gamma: Any = "scale",
        coef0: float = 0.0,
        tol: float = 1e-3,
        nu: float = 0.5,
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
        self.nu = nu
        self.shrinking = shrinking
        self.cache_size = cache_size
        self.verbose = verbose
        self.max_iter = max_iter
        self.n_jobs = n_jobs
        self.scale = scale

    def fit(self, X: Any, y: Any = None, sample_weight: Any = None) -> OneClassSVM:
        """Trains on the rows of X; y is ignored. Returns the estimator."""
        self._fit(X, None, sample_weight)
        return self

    def _keep_solution(self, model: _engine.Model) -> None:
        super()._keep_solution(model)
        # The boundary is known to within tol, and vectors on it are inside whichever way they round.
        self.intercept_ += self.tol
        self.offset_ = -self.intercept_

    def _validated(self, X: Any, y: Any) -> tuple[Any, Any]:
        X = self._checked(X, ensure_min_samples=2)
        return X, np.ones(X.shape[0])

    def _targets(self, y: Any, weights: np.ndarray | None) -> np.ndarray:
        return y

    def _set_parameters(self, parameters: _engine.Parameters) -> None:
        parameters.nu = float(self.nu)

    def decision_function(self, X: Any) -> np.ndarray:
        """Above 0 for rows within the boundary."""
        return self._apply("decide", X)[:, 0] + self.tol

    def score_samples(self, X: Any) -> np.ndarray:
        """decision_function before offset_ is taken away."""
        return self.decision_function(X) + self.offset_

    def predict(self, X: Any) -> np.ndarray:
        """1 for rows within the boundary, -1 for outliers."""
        return np.where(self.decision_function(X) >= 0, 1, -1)
