"""Estimators where scikit-learn's users put them."""

import _thread
import signal
import threading
import time

import numpy as np
import pytest
from joblib import parallel_config
from sklearn.calibration import CalibratedClassifierCV
from sklearn.ensemble import StackingClassifier
from sklearn.experimental import enable_halving_search_cv  # noqa: F401
from sklearn.feature_selection import RFE
from sklearn.inspection import permutation_importance
from sklearn.linear_model import LogisticRegression
from sklearn.model_selection import GridSearchCV, HalvingGridSearchCV, cross_val_score
from sklearn.pipeline import make_pipeline
from sklearn.preprocessing import StandardScaler

from support import classes, curve
from zelsvm import SVC, SVR, NuSVC


@pytest.mark.parametrize("backend", ["loky", "threading"])
def test_searches_find_the_same_bits_on_any_backend(backend):
    X, y = classes(300, ["a", "b", "c"])
    grid = {"svc__C": [0.1, 1, 10], "svc__kernel": ["linear", "rbf"]}
    search = GridSearchCV(make_pipeline(StandardScaler(), SVC()), grid, cv=3)
    alone = search.fit(X, y).cv_results_["mean_test_score"]
    decided = search.best_estimator_.decision_function(X)
    with parallel_config(backend, n_jobs=2):
        shared = search.fit(X, y).cv_results_["mean_test_score"]
    assert np.array_equal(alone, shared) and len(set(alone)) > 1
    assert np.array_equal(search.best_estimator_.decision_function(X), decided)


def test_searches_by_halves():
    X, y = curve(400)
    search = HalvingGridSearchCV(SVR(), {"C": [1e-4, 1.0], "gamma": [1e-4, 0.2]}, cv=3)
    assert search.fit(X, y).best_params_ == {"C": 1.0, "gamma": 0.2}


def test_features_are_ranked():
    rng = np.random.default_rng(0)
    X = rng.normal(size=(200, 6))
    y = (X[:, 2] + 2 * X[:, 4] > 0).astype(int)
    chosen = RFE(SVC(kernel="linear"), n_features_to_select=2).fit(X, y).support_
    assert list(np.flatnonzero(chosen)) == [2, 4]
    found = permutation_importance(SVC().fit(X, y), X, y, n_repeats=3, random_state=0)
    assert set(np.argsort(found.importances_mean)[-2:]) == {2, 4}


def test_estimators_are_stacked_and_calibrated():
    X, y = classes(1200, [0, 1], seed=2)
    stack = StackingClassifier([("a", SVC()), ("b", NuSVC(nu=0.2))], LogisticRegression())
    single = cross_val_score(SVC(), X, y, cv=3).mean()
    assert cross_val_score(stack, X, y, cv=3).mean() > single - 0.03
    calibrated = CalibratedClassifierCV(SVC(), ensemble=False, cv=3).fit(X, y)
    said = calibrated.predict_proba(X)[:, 1]
    for low, high in ((0.0, 0.3), (0.3, 0.7), (0.7, 1.0)):
        within = (said >= low) & (said <= high)
        assert abs(said[within].mean() - y[within].mean()) < 0.1


def test_fits_side_by_side_make_the_same_models():
    X, y = classes(600, [0, 1])
    expected = SVC().fit(X, y).decision_function(X)
    found = [None] * 6

    def fit(i):
        found[i] = SVC().fit(X, y).decision_function(X)

    threads = [threading.Thread(target=fit, args=(i,)) for i in range(6)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert all(np.array_equal(values, expected) for values in found)


def test_interrupts_end_a_fit_at_once():
    X, y = classes(6000, [0, 1], features=20)
    y = np.random.default_rng(1).permutation(y)
    moments = []

    def interrupt():
        time.sleep(0.3)
        moments.append(time.monotonic())
        _thread.interrupt_main()

    waits, ended = [], []
    before = signal.signal(signal.SIGINT, signal.default_int_handler)  # ignored in the background
    for _ in range(5):
        thread = threading.Thread(target=interrupt)
        thread.start()
        with pytest.raises(KeyboardInterrupt):
            SVC(C=1e6, gamma=0.1, tol=1e-9, cache_size=1).fit(X, y)
            ended.append(True)
            time.sleep(5)
        waits.append(time.monotonic() - moments[-1])
        thread.join()
    signal.signal(signal.SIGINT, before)
    # Others may keep the processors busy, but not five times.
    assert not ended and min(waits) < 0.1 and max(waits) < 1
