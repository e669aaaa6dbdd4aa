"""Which values the estimators' parameters may have."""

from __future__ import annotations

import math
from collections.abc import Callable, Mapping
from numbers import Integral, Real
from typing import Any

KERNELS = ("linear", "poly", "rbf", "sigmoid", "precomputed")


def _is_number(value: Any) -> bool:
    return isinstance(value, Real) and not isinstance(value, bool) and math.isfinite(value)


def _is_integer(value: Any) -> bool:
    return isinstance(value, Integral) and not isinstance(value, bool)


def _is_one_of(value: Any, names: tuple[str, ...]) -> bool:
    return isinstance(value, str) and value in names


def _is_interval(value: Any) -> bool:
    return (
        isinstance(value, (tuple, list))
        and len(value) == 2
        and all(map(_is_number, value))
        and value[0] < value[1]
    )


def _are_weights(value: Any) -> bool:
    return isinstance(value, Mapping) and all(_is_number(v) and v > 0 for v in value.values())


def _is_flag(value: Any) -> bool:
    return isinstance(value, bool) or type(value).__name__ in ("bool_", "bool")


# Of each parameter the test and the words for what passes it.
_RULES: dict[str, tuple[Callable[[Any], bool], str]] = {
    "C": (lambda v: _is_number(v) and v > 0, "a finite number above 0"),
    "nu": (lambda v: _is_number(v) and 0 < v <= 1, "a number above 0 and at most 1"),
    "epsilon": (lambda v: _is_number(v) and v >= 0, "a finite number, 0 or more"),
    "kernel": (
        lambda v: callable(v) or _is_one_of(v, KERNELS),
        f"a callable or one of {', '.join(map(repr, KERNELS))}",
    ),
    "degree": (lambda v: _is_number(v) and v >= 0, "a finite number, 0 or more"),
    "gamma": (
        lambda v: _is_one_of(v, ("scale", "auto")) or (_is_number(v) and v >= 0),
        "'scale', 'auto' or a finite number, 0 or more",
    ),
    "coef0": (_is_number, "a finite number"),
    "shrinking": (_is_flag, "True or False"),
    "tol": (lambda v: _is_number(v) and v > 0, "a finite number above 0"),
    "cache_size": (lambda v: _is_number(v) and v > 0, "a finite number above 0"),
    "class_weight": (
        lambda v: v is None or _is_one_of(v, ("balanced",)) or _are_weights(v),
        "None, 'balanced' or a dict of finite numbers above 0",
    ),
    "max_iter": (lambda v: _is_integer(v) and v >= -1, "an integer, -1 or more"),
    "decision_function_shape": (lambda v: _is_one_of(v, ("ovr", "ovo")), "'ovr' or 'ovo'"),
    "break_ties": (_is_flag, "True or False"),
    "n_jobs": (lambda v: v is None or (_is_integer(v) and v != 0), "None or an integer but 0"),
    "scale": (
        lambda v: v is None or _is_interval(v),
        "None or two finite numbers in ascending order",
    ),
    "coupling": (_is_flag, "True or False"),
}


_ABSENT = object()  # what an estimator without the parameter has


def check_parameters(estimator: Any) -> None:
    """Raises ValueError for the first parameter that is out of its range."""
    for name, (accepts, words) in _RULES.items():
        value = getattr(estimator, name, _ABSENT)
        if value is not _ABSENT and not accepts(value):
            raise ValueError(
                f"The {name!r} parameter of {type(estimator).__name__} must be {words}. "
                f"Got {value!r} instead."
            )
