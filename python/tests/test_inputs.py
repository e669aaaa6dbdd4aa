"""Arrays as they come, and what is refused."""

import pickle
import re

import numpy as np
import pytest
from scipy import sparse
from sklearn.base import clone
from sklearn.exceptions import ConvergenceWarning, NotFittedError

from support import classes, curve, data_for, outcome
from zelsvm import SVC, SVR, NuSVC, NuSVR, OneClassSVM


def thinned(X):
    return np.where(np.abs(X) < 0.7, 0, X).astype(np.float32).astype(np.float64)


def with_indices(X, dtype):
    rows = sparse.csr_array(X)
    rows.indices, rows.indptr = rows.indices.astype(dtype), rows.indptr.astype(dtype)
    return rows


def with_repeats(X):
    """Each value as two entries of half its size, columns in descending order."""
    rows = sparse.csr_array(X)
    halves = sparse.csr_array(
        (np.repeat(rows.data / 2, 2), np.repeat(rows.indices, 2), rows.indptr * 2), X.shape
    )
    for i in range(X.shape[0]):
        span = slice(halves.indptr[i], halves.indptr[i + 1])
        halves.indices[span] = halves.indices[span][::-1].copy()
        halves.data[span] = halves.data[span][::-1].copy()
    return halves


def test_the_arrays_form_changes_no_bit(machine, tmp_path):
    X, y = data_for(machine)
    X = thinned(X)
    np.save(tmp_path / "x.npy", X)
    wide = np.zeros((len(y), 2 * X.shape[1]))
    wide[:, ::2] = X
    expected = outcome(machine(gamma=0.2).fit(X, y), X)
    for form in (
        X.astype(np.float32),
        np.asfortranarray(X),
        wide[:, ::2],
        X[::-1][::-1],
        np.load(tmp_path / "x.npy", mmap_mode="r"),
        X.tolist(),
    ):
        assert np.array_equal(outcome(machine(gamma=0.2).fit(form, y), form), expected)
    thin = outcome(machine(gamma=0.2).fit(sparse.csr_matrix(X), y), X)
    for form in (
        with_indices(X, np.int64),
        sparse.csr_array(X).astype(np.float32),
        with_repeats(X),
        sparse.csc_array(X),
    ):
        copy = form.copy()
        assert np.array_equal(outcome(machine(gamma=0.2).fit(form, y), form), thin)
        assert (form != copy).nnz == 0
    assert np.allclose(thin, expected)


def test_gamma_scale_is_the_same_for_all_forms():
    X, y = curve(300)
    X = thinned(X) + 2.0 * (np.arange(4) == 1)
    exact = SVR(gamma=1 / (4 * X.var())).fit(X, y).predict(X)
    for form in (X, X.astype(np.float32), sparse.csr_array(X)):
        assert np.allclose(SVR().fit(form, y).predict(X), exact, rtol=1e-6)


def test_pickles_bytes_and_files_keep_models(machine, tmp_path):
    X, y = data_for(machine)
    X[0] = 0
    for rows in (X, sparse.csr_array(thinned(X))):
        fitted = machine(scale=(-1, 1)).fit(rows, y)
        again = pickle.loads(pickle.dumps(fitted))
        assert again.get_params() == fitted.get_params()
        exact = machine.from_bytes(fitted.to_bytes())
        for other in (again, exact):
            assert np.array_equal(outcome(other, X), outcome(fitted, X))
            assert np.array_equal(other.dual_coef_, fitted.dual_coef_)
            assert np.array_equal(other.support_, fitted.support_)
        fitted.save(tmp_path / "text.model")
        text = machine.load(tmp_path / "text.model")
        assert np.allclose(outcome(text, X), outcome(fitted, X), atol=1e-3)
    with pytest.raises(ValueError, match="another formulation"):
        (SVC if machine is SVR else SVR).from_bytes(fitted.to_bytes())
    with pytest.raises(RuntimeError):
        machine.from_bytes(fitted.to_bytes()[:-1])


def test_scaling_is_remembered():
    X, y = curve(200)
    X = X * [1, 10, 100, 0.1] + [0, 5, 0, -3]
    low, high = X.min(axis=0), X.max(axis=0)
    scaled = 2 * (X - low) / (high - low) - 1
    weights = np.random.default_rng(3).uniform(0.5, 2, len(y))
    for given in (None, weights):
        expected = SVR(tol=1e-8).fit(scaled, y, given).predict(scaled)
        for rows in (X, sparse.csr_array(X)):
            found = SVR(tol=1e-8, scale=(-1, 1)).fit(rows, y, given).predict(X)
            assert np.allclose(found, expected, atol=1e-5)


def test_constant_targets_make_constant_functions():
    X, y = curve(50)
    flat = SVR(epsilon=10.0).fit(X, y)
    assert np.allclose(flat.predict(X), (y.min() + y.max()) / 2) and flat.dual_coef_.shape == (1, 0)
    again = pickle.loads(pickle.dumps(NuSVR().fit(X, y * 0 + 3, sample_weight=y > 0)))
    assert np.array_equal(again.predict(X[:4]), [3, 3, 3, 3])


def test_classes_too_light_for_nu_lose_their_pairs():
    X, y = classes(120, [0, 1, 2])
    weights = {0: 1000.0, 1: 0.001, 2: 0.002}
    settings = {"nu": 0.37, "kernel": "linear", "tol": 1e-8, "decision_function_shape": "ovo"}
    model = NuSVC(class_weight=weights, **settings).fit(X, y)
    rows = y > 0
    pair = NuSVC(class_weight={1: 1.0, 2: 2.0}, **settings).fit(X[rows], y[rows])
    decided = model.decision_function(X)
    assert np.all(decided[:, :2] == 1) and np.all(model.predict(X) == 0)
    assert np.allclose(decided[:, 2], -pair.decision_function(X), atol=1e-4)
    assert np.allclose(decided, X @ model.coef_.T + model.intercept_)
    assert np.array_equal(model.support_vectors_, X[model.support_])


@pytest.mark.parametrize(
    ("parameters", "words"),
    [
        ({"C": 0.0}, "'C' parameter of SVC must be .* Got 0.0"),
        ({"C": float("nan")}, "'C' parameter"),
        ({"C": "1"}, "'C' parameter"),
        ({"kernel": "rbff"}, "'kernel' parameter"),
        ({"degree": -1}, "'degree' parameter"),
        ({"gamma": "scaled"}, "'gamma' parameter"),
        ({"gamma": -0.1}, "'gamma' parameter"),
        ({"coef0": float("inf")}, "'coef0' parameter"),
        ({"shrinking": "no"}, "'shrinking' parameter"),
        ({"tol": 0}, "'tol' parameter"),
        ({"cache_size": -1}, "'cache_size' parameter"),
        ({"class_weight": "even"}, "'class_weight' parameter"),
        ({"class_weight": {0: -1.0}}, "'class_weight' parameter"),
        ({"max_iter": -2}, "'max_iter' parameter"),
        ({"decision_function_shape": None}, "'decision_function_shape' parameter"),
        ({"break_ties": 2}, "'break_ties' parameter"),
        ({"n_jobs": 0}, "'n_jobs' parameter"),
        ({"scale": (1, -1)}, "'scale' parameter"),
    ],
    ids=str,
)
def test_bad_parameters_are_refused_by_name(parameters, words):
    X, y = classes(20, [0, 1])
    with pytest.raises(ValueError, match=words):
        SVC(**parameters).fit(X, y)


def test_bad_data_are_refused_in_the_usual_words():
    X, y = classes(20, [0, 1])
    bad = X.copy()
    bad[3, 1] = np.nan
    infinite = sparse.csr_array(np.where(np.isnan(bad), np.inf, bad))
    weights = np.ones(20)
    cases = [
        (bad, y, None, "Input X contains NaN"),
        (infinite, y, None, "Input X contains infinity"),
        (X, np.zeros(20), None, "number of classes has to be greater than one; got 1 class"),
        (X, y + 0.5, None, "Unknown label type"),
        (X, y[:-1], None, "inconsistent numbers of samples"),
        (X[:0], y[:0], None, "Found array with 0 sample"),
        (X, y, weights[:-1], "sample_weight.shape"),
        (X, y, -weights, "Negative values"),
        (X, y, weights * np.nan, "NaN"),
        (X, y, weights * 0, "at least one non-zero"),
        (X, y, weights * y, "got 1 class"),
    ]
    for rows, labels, weight, words in cases:
        with pytest.raises(ValueError, match=re.escape(words)):
            SVC().fit(rows, labels, sample_weight=weight)
    with pytest.raises(NotFittedError):
        SVC().predict(X)
    with pytest.raises(ValueError, match="3 features, but SVC is expecting 4"):
        SVC().fit(X, y).predict(X[:, :3])
    with pytest.raises(ValueError, match="nu"):
        NuSVC(nu=0.9).fit(X, np.arange(20) > 17)
    for array, value in (("indices", 4), ("indices", -1), ("indptr", 1000), ("indptr", -3)):
        torn = sparse.csr_array(X)
        getattr(torn, array)[3] = value
        with pytest.raises(ValueError, match="ind"):
            SVC().fit(torn, y)
    huge = np.where(np.arange(4) == 0, X * 1e300, X)
    with pytest.raises(ValueError):
        OneClassSVM(kernel="poly", gamma=1.0).fit(huge)


def test_weights_of_nothing_and_one_are_nothing_and_one(machine):
    X, y = data_for(machine)
    weights = (np.arange(len(y)) % 5 > 0).astype(float)
    some = machine(gamma=0.2).fit(X, y, sample_weight=weights)
    rest = machine(gamma=0.2).fit(X[weights > 0], y[weights > 0])
    assert np.array_equal(outcome(some, X), outcome(rest, X))
    assert np.array_equal(some.support_vectors_, rest.support_vectors_)
    assert np.array_equal(np.flatnonzero(weights)[rest.support_], some.support_)


def test_balanced_weights_count_weights():
    X, y = classes(90, [0, 1, 2])
    weights = 1.0 + np.arange(90) % 4
    balanced = SVC(class_weight="balanced", tol=1e-10).fit(X, y, sample_weight=weights)
    copies = np.repeat(np.arange(90), weights.astype(int))
    copied = SVC(class_weight="balanced", tol=1e-10).fit(X[copies], y[copies])
    assert np.allclose(balanced.class_weight_, copied.class_weight_)
    assert np.allclose(balanced.decision_function(X), copied.decision_function(X), atol=1e-6)


def test_what_stops_early_says_so(machine):
    X, y = data_for(machine)
    model = clone(machine(max_iter=2, tol=1e-9))
    with pytest.warns(ConvergenceWarning, match="max_iter=2"):
        model.fit(X, y)
    assert model.fit_status_ == 1 and np.max(model.n_iter_) == 2 and np.all(model.gap_ > 1e-9)
    model.set_params(max_iter=-1).fit(X, y)
    assert model.fit_status_ == 0 and np.all(model.gap_ <= 1e-9)
