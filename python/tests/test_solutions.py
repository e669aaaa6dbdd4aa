"""Solutions against what NumPy makes of their attributes."""

from itertools import combinations

import numpy as np
import pytest
from scipy import sparse
from sklearn.metrics.pairwise import pairwise_kernels

from support import classes, curve
from zelsvm import SVC, SVR, NuSVC, NuSVR, OneClassSVM

TOL = 1e-6
KERNELS = [
    {"kernel": "linear"},
    {"kernel": "poly", "gamma": 0.3, "coef0": 1.0, "degree": 2},
    {"kernel": "rbf", "gamma": "scale"},
    {"kernel": "sigmoid", "gamma": 0.05, "coef0": -0.5},
]


def gram(kernel, X, Y, fitted_on):
    settings = dict(kernel)
    name = settings.pop("kernel")
    if settings.get("gamma") == "scale":
        settings["gamma"] = 1 / (fitted_on.shape[1] * np.var(fitted_on))
    return pairwise_kernels(X, Y, metric=name, **settings)


def pair_decisions(model, values):
    """By the one-vs-one layout of dual_coef_; values: kernel of rows and support vectors."""
    k = len(model.classes_)
    ends = np.cumsum(model.n_support_)
    spans = [slice(end - n, end) for end, n in zip(ends, model.n_support_)]
    columns = []
    for p, (i, j) in enumerate(combinations(range(k), 2)):
        columns.append(
            values[:, spans[i]] @ model.dual_coef_[j - 1, spans[i]]
            + values[:, spans[j]] @ model.dual_coef_[i, spans[j]]
            + model.intercept_[p]
        )
    return np.column_stack(columns)


def assert_optimal(gradient, alpha, sign, upper):
    """No pair of multipliers can move to a smaller objective by more than the tolerance."""
    assert np.all(alpha >= 0) and np.all(alpha <= upper)
    steep = -sign * gradient
    up = np.where(sign > 0, alpha < upper, alpha > 0)
    low = np.where(sign > 0, alpha > 0, alpha < upper)
    assert steep[up].max() - steep[low].min() <= TOL * 1.01


@pytest.mark.parametrize("kernel", KERNELS, ids=lambda k: k["kernel"])
@pytest.mark.parametrize("labels", [[-1, 1], [3, 5, 9, 20], ["b", "a", "c"]], ids=str)
def test_classification_is_optimal_and_decides_as_told(kernel, labels):
    X, y = classes(150, labels)
    rng = np.random.default_rng(5)
    weights = rng.uniform(0.1, 2, len(y))
    weights[::7] = 0
    shares = {label: 0.5 + i for i, label in enumerate(labels)}
    model = SVC(C=2.0, tol=TOL, class_weight=shares, decision_function_shape="ovo", **kernel)
    model.fit(X, y, sample_weight=weights)
    used = weights > 0

    assert list(model.classes_) == sorted(labels)
    assert np.array_equal(model.support_vectors_, X[model.support_])
    assert np.all(np.diff(np.searchsorted(model.classes_, y[model.support_])) >= 0)
    assert [np.sum(y[model.support_] == c) for c in model.classes_] == list(model.n_support_)
    settings = dict(kernel)
    if settings.get("gamma") == "scale":
        mean = np.average(X.mean(axis=1), weights=weights)
        settings["gamma"] = 1 / (
            X.shape[1] * np.average(np.square(X - mean).mean(axis=1), weights=weights)
        )
    values = gram(settings, X, model.support_vectors_, X)
    decisions = pair_decisions(model, values)
    told = model.decision_function(X)
    assert np.allclose(decisions if told.ndim == 2 else decisions[:, 0], told, atol=1e-9)

    # Each pair's multipliers, and the gradient of its problem from the decision values.
    upper = 2.0 * weights * np.array([shares[label] for label in y])
    pairs = decisions if told.ndim == 2 else -decisions
    sizes = np.zeros((len(y), len(labels) - 1))
    sizes[model.support_] = np.abs(model.dual_coef_.T)
    for p, (i, j) in enumerate(combinations(range(len(labels)), 2)):
        first, second = (used & (y == model.classes_[c]) for c in (i, j))
        sign = np.where(first, 1.0, -1.0)
        alpha = np.where(first, sizes[:, j - 1], sizes[:, i])
        intercept = model.intercept_[p] * (1 if told.ndim == 2 else -1)
        gradient = sign * (pairs[:, p] - intercept) - 1
        both = first | second
        assert abs(np.sum((sign * alpha)[both])) < 1e-9
        assert_optimal(gradient[both], alpha[both], sign[both], upper[both])


@pytest.mark.parametrize("kernel", KERNELS, ids=lambda k: k["kernel"])
def test_other_formulations_decide_as_told(kernel):
    X, y = curve(200)
    for model in (
        SVR(C=3.0, epsilon=0.05, tol=TOL, **kernel),
        NuSVR(C=3.0, nu=0.3, tol=TOL, **kernel),
        OneClassSVM(nu=0.3, tol=TOL, **kernel),
    ):
        model.fit(X, y)
        values = gram(kernel, X, model.support_vectors_, X)
        expected = values @ model.dual_coef_[0] + model.intercept_
        outlier = isinstance(model, OneClassSVM)
        told = model.decision_function(X) if outlier else model.predict(X)
        assert np.allclose(expected, told, atol=1e-9)
        coefficients = np.zeros(len(y))
        coefficients[model.support_] = model.dual_coef_[0]
        if outlier:
            assert_optimal(told, coefficients, np.ones(len(y)), np.ones(len(y)))
            assert np.mean(told < 0) <= 0.3
            assert np.isclose(coefficients.sum(), 0.3 * len(y))
            assert np.array_equal(model.score_samples(X), told + model.offset_)
            assert np.array_equal(model.predict(X), np.where(told >= 0, 1, -1))
        elif isinstance(model, SVR):
            residuals = y - told
            assert_tube(residuals, coefficients, 3.0, 0.05)
        else:
            assert abs(coefficients.sum()) < 1e-9
            assert np.isclose(np.abs(coefficients).sum(), 3.0 * 0.3 * len(y))


def assert_tube(residuals, coefficients, cost, epsilon):
    free = (np.abs(coefficients) > 0) & (np.abs(coefficients) < cost)
    assert np.allclose(residuals[free], np.sign(coefficients[free]) * epsilon, atol=TOL)
    assert np.all(np.abs(residuals[coefficients == 0]) <= epsilon + TOL)
    bound = np.abs(coefficients) == cost
    assert np.all(residuals[bound] * np.sign(coefficients[bound]) >= epsilon - TOL)
    assert abs(coefficients.sum()) < 1e-9


def test_shapes_signs_and_votes():
    X, y = classes(90, ["x", "y", "z"])
    ovo = NuSVC(nu=0.3, decision_function_shape="ovo", kernel="linear").fit(X, y)
    ovr = NuSVC(nu=0.3, break_ties=True, kernel="linear").fit(X, y)
    pairs = ovo.decision_function(X)
    assert np.allclose(pairs, X @ ovo.coef_.T + ovo.intercept_)
    votes = np.zeros((len(y), 3))
    sums = np.zeros((len(y), 3))
    for p, (i, j) in enumerate(combinations(range(3), 2)):
        for row, value in enumerate(pairs[:, p]):
            votes[row, i if value >= 0 else j] += 1
            sums[row, i] += value
            sums[row, j] -= value
    assert np.allclose(ovr.decision_function(X), votes + sums / (3 * (abs(sums) + 1)))
    assert np.array_equal(ovo.predict(X), ovo.classes_[votes.argmax(axis=1)])
    assert np.array_equal(ovr.predict(X), ovr.classes_[ovr.decision_function(X).argmax(axis=1)])
    with pytest.raises(ValueError, match="break_ties must be False"):
        ovo.set_params(break_ties=True).predict(X)

    two = SVC(kernel="linear").fit(X[y != "z"], y[y != "z"])
    decided = two.decision_function(X)
    assert np.array_equal(two.predict(X), np.where(decided > 0, "y", "x"))
    assert two.coef_.shape == (1, 4) and np.allclose(decided, X @ two.coef_[0] + two.intercept_)
    with pytest.raises(AttributeError, match="linear kernel"):
        SVC().fit(X, y).coef_  # noqa: B018


def test_coupled_probabilities_follow_the_votes():
    X, y = classes(240, [0, 1, 2])
    model = SVC(coupling=True).fit(X, y)
    probabilities = model.coupled_proba(X)
    assert np.allclose(probabilities.sum(axis=1), 1) and np.all(probabilities >= 0)
    assert np.mean(probabilities.argmax(axis=1) == model.predict(X)) > 0.9
    again, other = (
        SVC(coupling=True, random_state=s).fit(X, y).coupled_proba(X) for s in (None, 5)
    )
    assert np.array_equal(again, probabilities)
    assert not np.array_equal(other, probabilities) and np.allclose(other, probabilities, atol=0.1)


@pytest.mark.parametrize("multiclass", [False, True])
def test_given_kernels_are_as_good_as_computed_ones(multiclass):
    X, y = classes(120, [0, 1, 2] if multiclass else [0, 1])
    new = X[::3] + 0.1
    settings = {"gamma": 0.3, "tol": 1e-10}
    computed = SVC(kernel="rbf", **settings).fit(X, y).decision_function(new)

    def kernel(A, B):
        return pairwise_kernels(A, B, metric="rbf", gamma=0.3)

    called = SVC(kernel=kernel, **settings).fit(X, y)
    given = SVC(kernel="precomputed", **settings).fit(kernel(X, X), y)
    assert np.allclose(called.decision_function(new), computed, atol=1e-8)
    assert np.allclose(given.decision_function(kernel(new, X)), computed, atol=1e-8)
    assert given.support_vectors_.shape == (0, 0)
    with pytest.raises(ValueError, match="square matrix"):
        given.fit(kernel(X, X)[:, :-1], y)
    with pytest.raises(ValueError, match="shape"):
        SVC(kernel=lambda A, B: np.ones(3)).fit(X, y)


def test_linear_weights_of_sparse_rows_stay_sparse():
    X, y = classes(60, [0, 1, 2], features=30)
    X[X < 0.5] = 0
    dense = SVC(kernel="linear").fit(X, y)
    thin = SVC(kernel="linear").fit(sparse.csr_array(X), y)
    assert sparse.issparse(thin.support_vectors_) and sparse.issparse(thin.coef_)
    assert np.allclose(thin.coef_.toarray(), dense.coef_)
