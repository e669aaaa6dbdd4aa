"""How many threads a call to the engine may take."""

from __future__ import annotations

import os

from joblib import effective_n_jobs
from joblib.parallel import get_active_backend


def thread_count(n_jobs: int | None) -> int:
    """The engine's number of threads: n_jobs as joblib counts, 0 for as many as there are.

    Where joblib already runs jobs on threads, one each; its processes come with OMP_NUM_THREADS set
    to their share, which the engine keeps to.
    """
    if n_jobs is not None:
        return 1 if n_jobs == 1 else effective_n_jobs(n_jobs)
    backend, _ = get_active_backend()
    return int((backend.nesting_level or 0) > 0 and "OMP_NUM_THREADS" not in os.environ)
