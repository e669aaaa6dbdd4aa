"""Support vector machines at home in scikit-learn, reproducible to the bit."""

from importlib.metadata import version as _version

from zelsvm._classification import SVC, NuSVC
from zelsvm._one_class import OneClassSVM
from zelsvm._regression import SVR, NuSVR

__all__ = ["SVC", "SVR", "NuSVC", "NuSVR", "OneClassSVM"]
__version__ = _version("zelsvm")
