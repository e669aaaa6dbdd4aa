"""What all estimators share: from validated arrays to a trained model and back."""

from __future__ import annotations

import math
import os
import warnings
from abc import ABCMeta, abstractmethod
from typing import Any, ClassVar, Self

import numpy as np
from scipy import sparse
from sklearn.base import BaseEstimator
from sklearn.exceptions import ConvergenceWarning
from sklearn.utils.validation import _check_sample_weight, check_is_fitted, validate_data

from zelsvm import _engine
from zelsvm._parameters import check_parameters
from zelsvm._samples import rows, scale_gamma
from zelsvm._threads import thread_count

_KERNELS = {
    "linear": _engine.Kernel.LINEAR,
    "poly": _engine.Kernel.POLYNOMIAL,
    "rbf": _engine.Kernel.RADIAL,
    "sigmoid": _engine.Kernel.SIGMOID,
    "precomputed": _engine.Kernel.PRECOMPUTED,
}
_MOST_CACHE = 4095  # megabytes
_FORMS: dict[str, Any] = {
    "accept_sparse": "csr",
    "dtype": [np.float64, np.float32],
    "accept_large_sparse": True,
}


class BaseMachine(BaseEstimator, metaclass=ABCMeta):
    """An estimator whose model the engine trains."""

    _formulation: ClassVar[_engine.Formulation]
    _numeric_targets: ClassVar[bool] = False

    def __sklearn_tags__(self) -> Any:
        tags = super().__sklearn_tags__()
        tags.input_tags.sparse = self.kernel != "precomputed"
        tags.input_tags.pairwise = self.kernel == "precomputed"
        return tags

    # What a formulation adds.

    @abstractmethod
    def _targets(self, y: Any, weights: np.ndarray | None) -> np.ndarray:
        """The engine's targets; keeps what is to be known of y."""

    @abstractmethod
    def _set_parameters(self, parameters: _engine.Parameters) -> None:
        """Sets what the formulation has of its own."""

    def _constants(self, y: np.ndarray, weights: np.ndarray | None) -> np.ndarray | None:
        """The intercepts where the optimum is constant, without any support vector."""
        return None

    # Training.

    def _fit(self, X: Any, y: Any, sample_weight: Any) -> None:
        check_parameters(self)
        X, y = self._validated(X, y)
        weights = self._validated_weights(sample_weight, X)
        targets = self._targets(y, weights)
        self.shape_fit_ = X.shape
        constants = self._constants(targets, weights)
        if constants is None:
            self._train(X, targets, weights)
        else:
            self._keep_constants(X, constants)
        self._warn()

    def _validated(self, X: Any, y: Any) -> tuple[Any, Any]:
        return self._checked(X, y, y_numeric=self._numeric_targets)

    def _checked(self, *arrays: Any, **settings: Any) -> Any:
        # Kernel values are dense.
        forms = {**_FORMS, "accept_sparse": False} if self.kernel == "precomputed" else _FORMS
        checked = validate_data(self, *arrays, **forms, **settings)
        X = checked[0] if isinstance(checked, tuple) else checked
        if sparse.issparse(X):
            X.check_format()
        return checked

    @staticmethod
    def _validated_weights(sample_weight: Any, X: Any) -> np.ndarray | None:
        if sample_weight is None:
            return None
        weights = _check_sample_weight(sample_weight, X, dtype=np.float64)
        if (weights < 0).any():
            raise ValueError("Negative values in data passed to `sample_weight`.")
        if not weights.any():
            raise ValueError("Sample weights must contain at least one non-zero number.")
        return weights

    def _train(self, X: Any, targets: np.ndarray, weights: np.ndarray | None) -> None:
        parameters = self._engine_parameters(self._gamma_of(X, weights))
        self._model = self._trained(X, targets, weights, parameters)
        self._keep_solution(self._model)
        # Kernel values have no vectors.
        self.support_vectors_ = (
            np.empty((0, 0)) if self.kernel == "precomputed" else X[self.support_]
        )
        solves = self._model.solves()
        self.n_iter_ = self._by_pair([solve.iterations for solve in solves], np.int32)
        self.objective_ = self._by_pair([solve.objective for solve in solves], np.float64)
        self.gap_ = self._by_pair([solve.gap for solve in solves], np.float64)
        self.fit_status_ = int(not all(solve.converged for solve in solves))

    def _trained(
        self,
        X: Any,
        targets: np.ndarray,
        weights: np.ndarray | None,
        parameters: _engine.Parameters,
    ) -> Any:
        return _engine.train(
            self._training_samples(X),
            targets,
            parameters,
            weights,
            thread_count(self.n_jobs),
            (lambda text: print(text, end="", flush=True)) if self.verbose else None,
        )

    def _training_samples(self, X: Any) -> _engine.Samples:
        if callable(self.kernel):
            return _engine.Samples.kernel(self._kernel_values(X, X), False)
        if self.kernel != "precomputed":
            return rows(X)
        if X.shape[0] != X.shape[1]:
            raise ValueError(
                "Precomputed matrix must be a square matrix. "
                f"Input is a {X.shape[0]}x{X.shape[1]} matrix."
            )
        return _engine.Samples.kernel(X, False)

    def _kernel_values(self, X: Any, Y: Any) -> np.ndarray:
        values = np.asarray(self.kernel(X, Y), dtype=np.float64)
        if values.shape != (X.shape[0], Y.shape[0]):
            raise ValueError(
                f"The kernel gave values of the shape {values.shape} in place of "
                f"{(X.shape[0], Y.shape[0])}."
            )
        return values

    def _gives_kernel(self) -> bool:
        return callable(self.kernel) or self.kernel == "precomputed"

    def _gamma_of(self, X: Any, weights: np.ndarray | None) -> float:
        if not isinstance(self.gamma, str):
            return float(self.gamma)
        if self.gamma == "auto" or self._gives_kernel() or self.kernel == "linear":
            return 1.0 / X.shape[1]
        return scale_gamma(X, weights, self.scale)

    def _engine_parameters(self, gamma: float) -> _engine.Parameters:
        parameters = _engine.Parameters()
        parameters.formulation = self._formulation
        parameters.kernel = _KERNELS["precomputed" if self._gives_kernel() else self.kernel]
        parameters.gamma = gamma
        parameters.coef0 = float(self.coef0)
        parameters.degree = float(self.degree)
        parameters.tolerance = float(self.tol)
        parameters.shrinking = bool(self.shrinking)
        parameters.cache_megabytes = min(math.ceil(self.cache_size), _MOST_CACHE)
        parameters.max_iterations = max(int(self.max_iter), 0)
        if self.scale is not None:
            parameters.feature_scale = _engine.Interval(*map(float, self.scale))
        self._set_parameters(parameters)
        return parameters

    # What is kept of a model.

    def _keep_solution(self, model: _engine.Model) -> None:
        """Support vectors, coefficients and offset of a model with one function."""
        self.support_ = model.support_indices().astype(np.int32)
        self.dual_coef_ = model.dual_coefficients()
        self.n_support_ = np.array([self.dual_coef_.shape[1]], dtype=np.int32)
        self.intercept_ = model.intercepts()

    def _keep_constants(self, X: Any, intercepts: np.ndarray) -> None:
        self._model = None
        self.support_ = np.empty(0, dtype=np.int32)
        self.support_vectors_ = X[:0]
        self.dual_coef_ = np.empty((1, 0))
        self.n_support_ = np.zeros(1, dtype=np.int32)
        self.intercept_ = intercepts
        self.n_iter_, self.objective_, self.gap_, self.fit_status_ = 0, 0.0, 0.0, 0

    def _by_pair(self, values: list[Any], dtype: Any) -> Any:
        """One value for the one solve."""
        return dtype(values[0]).item()

    def _warn(self) -> None:
        if self.fit_status_:
            warnings.warn(
                f"{type(self).__name__} stopped short of its tolerance, after "
                f"{int(np.max(self.n_iter_))} iterations (max_iter={self.max_iter}). Scale the "
                "features, with StandardScaler or scale=(-1, 1), or raise max_iter or tol.",
                ConvergenceWarning,
                stacklevel=4,
            )

    # Prediction.

    def _predicted_samples(self, X: Any) -> _engine.Samples:
        if callable(self.kernel):
            vectors = self.support_vectors_[self._vector_order()]
            return _engine.Samples.kernel(self._kernel_values(X, vectors), True)
        return _engine.Samples.kernel(X, False) if self.kernel == "precomputed" else rows(X)

    def _apply(self, method: str, X: Any) -> np.ndarray:
        """What the engine's model says of the rows; a constant model has its intercepts to say."""
        check_is_fitted(self)
        X = self._checked(X, reset=False)
        if self._model is None:
            return np.tile(self.intercept_, (X.shape[0], 1))
        call = getattr(self._model, method)
        return call(self._predicted_samples(X), thread_count(self.n_jobs))

    def _vector_order(self) -> Any:
        """The support vectors as the engine has them."""
        return slice(None)

    @property
    def coef_(self) -> Any:
        """Weights of the features, where the kernel is linear."""
        if self.kernel != "linear":
            raise AttributeError("coef_ is only available when using a linear kernel")
        check_is_fitted(self)
        return self._weights()

    def _weights(self) -> Any:
        return _product(self.dual_coef_, self.support_vectors_)

    # Files and bytes.

    def save(self, path: str | os.PathLike[str]) -> None:
        """Writes the tools' model file: text, with six digits a number."""
        self._fitted_model().save(os.fspath(path))

    def to_bytes(self) -> bytes:
        """The model to the last bit, as the tools and from_bytes() read it."""
        return self._fitted_model().to_bytes()

    @classmethod
    def load(cls, path: str | os.PathLike[str]) -> Self:
        """An estimator that predicts by a model file of either form."""
        return cls._of_model(_engine.Model.load(os.fspath(path)))

    @classmethod
    def from_bytes(cls, content: bytes) -> Self:
        """An estimator that predicts by the model in the bytes."""
        return cls._of_model(_engine.Model.from_bytes(content))

    def _fitted_model(self) -> _engine.Model:
        check_is_fitted(self)
        if not isinstance(self._model, _engine.Model):
            raise ValueError("A model with a constant decision function cannot be written.")
        return self._model

    @classmethod
    def _of_model(cls, model: _engine.Model) -> Self:
        if model.formulation() != cls._formulation:
            raise ValueError(f"The model is one of another formulation than {cls.__name__}.")
        known = model.parameters()
        kernel = next(name for name, value in _KERNELS.items() if value == known.kernel)
        estimator = cls(
            kernel=kernel,
            gamma=known.gamma,
            coef0=known.coef0,
            degree=known.degree,
            tol=known.tolerance,
        )
        estimator._model = model
        estimator.n_features_in_ = model.feature_count()
        estimator._keep_labels(model)
        estimator._keep_solution(model)
        return estimator

    def _keep_labels(self, model: _engine.Model) -> None:
        """Keeps what a loaded model has of labels."""


def _product(coefficients: np.ndarray, vectors: Any) -> Any:
    if sparse.issparse(vectors):
        return type(vectors)(sparse.csr_array(coefficients) @ vectors)
    return coefficients @ vectors
