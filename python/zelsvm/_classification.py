"""Classification: any number of classes, one against one."""

from __future__ import annotations

from itertools import combinations
from typing import Any

import numpy as np
from sklearn.base import ClassifierMixin
from sklearn.utils import check_random_state
from sklearn.utils.class_weight import compute_class_weight
from sklearn.utils.multiclass import check_classification_targets
from sklearn.utils.validation import column_or_1d

from zelsvm import _engine
from zelsvm._base import BaseMachine, _product
from zelsvm._pair_models import Constant, PairModel, PairModels
from zelsvm._pairs import Pairs


class BaseClassifier(ClassifierMixin, BaseMachine):
    """Decision functions of label pairs and what follows from them."""

    def fit(self, X: Any, y: Any, sample_weight: Any = None) -> Any:
        """Trains on the rows of X and their classes y; returns the estimator."""
        self._fit(X, y, sample_weight)
        return self

    def _targets(self, y: Any, weights: np.ndarray | None) -> np.ndarray:
        y = column_or_1d(y, warn=True)
        check_classification_targets(y)
        # Samples without weight are as if they were not there.
        counting = y if weights is None else y[weights > 0]
        self.classes_ = np.unique(counting)
        if len(self.classes_) < 2:
            raise ValueError(
                f"The number of classes has to be greater than one; got {len(self.classes_)} class"
            )
        self.class_weight_ = self._class_weights(counting, weights)
        places = np.searchsorted(self.classes_, y)
        return self._labels()[np.minimum(places, len(self.classes_) - 1)]

    def _class_weights(self, counting: np.ndarray, weights: np.ndarray | None) -> np.ndarray:
        if self.class_weight is None:
            return np.ones(len(self.classes_))
        return compute_class_weight(
            self.class_weight,
            classes=self.classes_,
            y=counting,
            sample_weight=None if weights is None else weights[weights > 0],
        )

    def _labels(self) -> np.ndarray:
        """The classes as the engine's labels: themselves if they are numbers, else places."""
        if self.classes_.dtype.kind in "iuf":
            numbers = self.classes_.astype(np.float64)
            if np.all(np.diff(numbers) > 0):
                return numbers
        return np.arange(len(self.classes_), dtype=np.float64)

    def _keep_labels(self, model: _engine.Model) -> None:
        labels = np.sort(model.labels())
        whole = np.all(labels == labels.astype(np.int64))
        self.classes_ = labels.astype(np.int64) if whole else labels

    def _set_parameters(self, parameters: _engine.Parameters) -> None:
        parameters.class_weights = dict(
            zip(self._labels().tolist(), self.class_weight_.tolist(), strict=True)
        )
        parameters.probability = bool(self.coupling)
        # Without a state the folds of probabilities are the same on each run.
        if self.random_state is not None:
            parameters.random_seed = check_random_state(self.random_state).randint(2**31)

    def _keep_solution(self, model: _engine.Model) -> None:
        order = np.searchsorted(self._labels(), model.labels())
        pairs = self._pairs = Pairs(order)
        self._order = order
        counts = model.support_counts()
        ends = np.cumsum(counts)
        blocks = [np.arange(end - count, end) for end, count in zip(ends, counts, strict=True)]
        by_class = np.concatenate([blocks[place] for place in np.argsort(order)])
        self._engine_order = np.argsort(by_class)
        self.n_support_ = counts[np.argsort(order)].astype(np.int32)
        # A model file of text has no indices.
        indices = model.support_indices()
        self.support_ = (indices[by_class] if len(indices) else indices).astype(np.int32)
        functions = pairs.arranged(model.dual_coefficients().T)[by_class]  # one row per vector
        classes = np.repeat(np.arange(len(order)), self.n_support_)
        coefficients = np.take_along_axis(functions, pairs.of_class[classes], axis=1).T
        # With two classes, above 0 is for the second.
        sign = -1.0 if len(order) == 2 else 1.0
        self.dual_coef_ = np.ascontiguousarray(sign * coefficients)
        self.intercept_ = sign * pairs.arranged(model.intercepts())

    def _by_pair(self, values: list[Any], dtype: Any) -> Any:
        return np.array(values, dtype=dtype)[self._pairs.functions]

    def _vector_order(self) -> Any:
        return self._engine_order

    def _decide(self, X: Any) -> np.ndarray:
        """One column per pair of classes, above 0 for its first."""
        decisions = self._apply("decide", X)
        return self._pairs.arranged(decisions)

    def decision_function(self, X: Any) -> np.ndarray:
        """For two classes one value a row, above 0 for the second; else by decision_function_shape."""
        decisions = self._decide(X)
        if len(self.classes_) == 2:
            return -decisions[:, 0]
        return decisions if self.decision_function_shape == "ovo" else self._pairs.ranks(decisions)

    def predict(self, X: Any) -> np.ndarray:
        """The classes of the rows of X."""
        if self.break_ties and self.decision_function_shape == "ovo":
            raise ValueError("break_ties must be False when decision_function_shape is 'ovo'")
        decisions = self._decide(X)
        if len(self.classes_) == 2:
            return self.classes_[(decisions[:, 0] < 0).astype(np.intp)]
        rank = self._pairs.ranks if self.break_ties else self._pairs.votes
        return self.classes_[rank(decisions).argmax(axis=1)]

    def coupled_proba(self, X: Any) -> np.ndarray:
        """Probabilities of the classes by sigmoids of label pairs, coupled; with coupling=True."""
        if not self.coupling:
            raise AttributeError("coupled_proba is only available after a fit with coupling=True")
        probabilities = self._apply("probabilities", X)
        return probabilities[:, np.argsort(self._order)]

    def _weights(self) -> Any:
        if len(self.classes_) == 2:
            return super()._weights()
        ends = np.cumsum(self.n_support_)
        spans = [slice(end - n, end) for end, n in zip(ends, self.n_support_, strict=True)]
        coefficients = np.zeros((len(self.intercept_), len(self.support_)))
        for pair, (i, j) in enumerate(combinations(range(len(self.classes_)), 2)):
            coefficients[pair, spans[i]] = self.dual_coef_[j - 1, spans[i]]
            coefficients[pair, spans[j]] = self.dual_coef_[i, spans[j]]
        return _product(coefficients, self.support_vectors_)


class SVC(BaseClassifier):
    """C-classification."""

    _formulation = _engine.Formulation.C_CLASSIFICATION

    def __init__(
        self,
        *,
        C: float = 1.0,
        kernel: Any = "rbf",
        degree: float = 3,
        gamma: Any = "scale",
        coef0: float = 0.0,
        shrinking: bool = True,
        tol: float = 1e-3,
        cache_size: float = 200,
        class_weight: Any = None,
        verbose: bool = False,
        max_iter: int = -1,
        decision_function_shape: str = "ovr",
        break_ties: bool = False,
        random_state: Any = None,
        n_jobs: int | None = None,
        scale: Any = None,
        coupling: bool = False,
    ):
        self.C = C
        self.kernel = kernel
        self.degree = degree
        self.gamma = gamma
        self.coef0 = coef0
        self.shrinking = shrinking
        self.tol = tol
        self.cache_size = cache_size
        self.class_weight = class_weight
        self.verbose = verbose
        self.max_iter = max_iter
        self.decision_function_shape = decision_function_shape
        self.break_ties = break_ties
        self.random_state = random_state
        self.n_jobs = n_jobs
        self.scale = scale
        self.coupling = coupling

    def _set_parameters(self, parameters: _engine.Parameters) -> None:
        super()._set_parameters(parameters)
        parameters.cost = float(self.C)


class NuSVC(BaseClassifier):
    """Nu-classification: nu bounds the shares of margin errors and of support vectors."""

    _formulation = _engine.Formulation.NU_CLASSIFICATION

    def __init__(
        self,
        *,
        nu: float = 0.5,
        kernel: Any = "rbf",
        degree: float = 3,
        gamma: Any = "scale",
        coef0: float = 0.0,
        shrinking: bool = True,
        tol: float = 1e-3,
        cache_size: float = 200,
        class_weight: Any = None,
        verbose: bool = False,
        max_iter: int = -1,
        decision_function_shape: str = "ovr",
        break_ties: bool = False,
        random_state: Any = None,
        n_jobs: int | None = None,
        scale: Any = None,
        coupling: bool = False,
    ):
        self.nu = nu
        self.kernel = kernel
        self.degree = degree
        self.gamma = gamma
        self.coef0 = coef0
        self.shrinking = shrinking
        self.tol = tol
        self.cache_size = cache_size
        self.class_weight = class_weight
        self.verbose = verbose
        self.max_iter = max_iter
        self.decision_function_shape = decision_function_shape
        self.break_ties = break_ties
        self.random_state = random_state
        self.n_jobs = n_jobs
        self.scale = scale
        self.coupling = coupling

    def _set_parameters(self, parameters: _engine.Parameters) -> None:
        super()._set_parameters(parameters)
        parameters.nu = float(self.nu)

    def _trained(
        self,
        X: Any,
        targets: np.ndarray,
        weights: np.ndarray | None,
        parameters: _engine.Parameters,
    ) -> Any:
        """Where a class weighs less than half of nu of its pair, the margin of the pair's optimum is
        without bound and every sample belongs to the heavier class. Without class weights that is
        the caller's mistake."""
        counts = np.ones(len(targets)) if weights is None else weights
        labels = self._labels()
        places = np.searchsorted(labels, targets)
        masses = np.bincount(places, counts, minlength=len(labels)) * self.class_weight_
        pairs = list(combinations(range(len(labels)), 2))
        outweighed = [self._outweighs(masses[i], masses[j]) for i, j in pairs]
        # The tolerance is one for weights about 1.
        mean = masses.sum() / counts.sum()
        parameters.class_weights = dict(
            zip(labels.tolist(), self.class_weight_ / mean, strict=True)
        )
        if self.class_weight is None or not any(outweighed):
            return super()._trained(X, targets, weights, parameters)
        if self._gives_kernel() or self.coupling:
            raise ValueError("There is no feasible solution for nu with these class weights.")

        found: list[PairModel | Constant] = []
        for (i, j), is_constant in zip(pairs, outweighed, strict=True):
            if is_constant:
                found.append(Constant(1.0 if masses[i] > masses[j] else -1.0))
                continue
            rows = np.flatnonzero(((places == i) | (places == j)) & (counts > 0))
            factors = counts[rows] * (mean * counts[rows].sum() / (masses[i] + masses[j]))
            model = super()._trained(X[rows], targets[rows], factors, parameters)
            found.append(PairModel(rows, model, 1.0 if model.labels()[0] == labels[i] else -1.0))
        return PairModels(labels, places, found)

    def _outweighs(self, a: float, b: float) -> bool:
        return self.nu * (a + b) / 2 > min(a, b) * (1 + 1e-12)
