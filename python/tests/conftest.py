import pytest

from zelsvm import SVC, SVR, NuSVC, NuSVR, OneClassSVM


@pytest.fixture(params=[SVC, NuSVC, OneClassSVM, SVR, NuSVR], ids=lambda c: c.__name__)
def machine(request):
    return request.param
