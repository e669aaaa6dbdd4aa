"""Label pairs, one against one, in the order of sorted classes.

The engine takes labels in the order in which it meets them and has a decision function for each
pair of them, above 0 for the pair's first. Here pairs are those of the classes in ascending order.
"""

from __future__ import annotations

from itertools import combinations

import numpy as np


class Pairs:
    """For each pair of classes the engine's function and the sign that it takes.

    order: for every label of the engine its place among the classes.
    """

    def __init__(self, order: np.ndarray):
        k = len(order)
        found = {}
        for function, (a, b) in enumerate(combinations(order.tolist(), 2)):
            found[min(a, b), max(a, b)] = (function, 1.0 if a < b else -1.0)
        pairs = [found[pair] for pair in combinations(range(k), 2)]
        self.functions = np.array([function for function, _ in pairs], dtype=np.intp)
        self.signs = np.array([sign for _, sign in pairs])
        # For each class its pairs in the order of the other classes, and whether it comes first.
        places = {pair: p for p, pair in enumerate(combinations(range(k), 2))}
        others = [[o for o in range(k) if o != c] for c in range(k)]
        self.of_class = np.array(
            [[places[min(c, o), max(c, o)] for o in others[c]] for c in range(k)], dtype=np.intp
        )
        self.is_first = np.array([[c < o for o in others[c]] for c in range(k)])

    def arranged(self, functions: np.ndarray) -> np.ndarray:
        """Values of the engine's functions (last axis) as those of the pairs."""
        return functions[..., self.functions] * self.signs

    def votes(self, decisions: np.ndarray) -> np.ndarray:
        """One column per class: how many of its pairs a sample decides for it."""
        return ((decisions >= 0)[:, self.of_class] == self.is_first).sum(axis=2)

    def ranks(self, decisions: np.ndarray) -> np.ndarray:
        """Votes, and among equal votes the sum of decision values squeezed into a third."""
        signs = np.where(self.is_first, 1.0, -1.0)
        sums = (decisions[:, self.of_class] * signs).sum(axis=2)
        return self.votes(decisions) + sums / (3 * (np.abs(sums) + 1))
