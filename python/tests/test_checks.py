"""scikit-learn's own checks, all of them."""

import pytest
from sklearn.base import clone
from sklearn.utils.estimator_checks import estimator_checks_generator

from zelsvm import SVC, SVR, NuSVC, NuSVR, OneClassSVM

# Solutions with weights and with copies are compared to seven digits, and each class needs room for
# its share of nu.
OF_WEIGHTS = "check_sample_weight_equivalence"
FINE = {"tol": 1e-12}
ESTIMATORS = [
    (SVC(), FINE),
    (NuSVC(), {**FINE, "nu": 0.2}),
    (OneClassSVM(), FINE),
    (SVR(), FINE),
    (NuSVR(), FINE),
]


def checks():
    for default, fine in ESTIMATORS:
        for estimator, check in estimator_checks_generator(default):
            name = check.func.__name__
            if name.startswith(OF_WEIGHTS):
                estimator = clone(default).set_params(**fine)
            yield pytest.param(estimator, check, id=f"{type(default).__name__}-{name}")


@pytest.mark.parametrize(("estimator", "check"), list(checks()))
def test_estimators_keep_the_rules(estimator, check):
    check(estimator)
