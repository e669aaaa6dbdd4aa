// A slow, independent solution of the solvers' problem: a primal-dual interior-point method
// (Wright, "Primal-Dual Interior-Point Methods", 1997) on dense matrices.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <stdexcept>
#include <utility>
#include <vector>

namespace zeltest {

using Vector = std::vector<double>;

inline double dot(const Vector& a, const Vector& b) {
  double sum = 0;
  for (std::size_t i = 0; i < a.size(); ++i) sum += a[i] * b[i];
  return sum;
}

// Gaussian elimination with row pivots; the rows are M's.
inline Vector solveLinear(std::vector<Vector> M, Vector right) {
  const std::size_t n = right.size();
  for (std::size_t k = 0; k < n; ++k) {
    std::size_t pivot = k;
    for (std::size_t i = k + 1; i < n; ++i)
      if (std::abs(M[i][k]) > std::abs(M[pivot][k])) pivot = i;
    std::swap(M[k], M[pivot]);
    std::swap(right[k], right[pivot]);
    for (std::size_t i = k + 1; i < n; ++i) {
      const double factor = M[i][k] / M[k][k];
      for (std::size_t j = k; j < n; ++j) M[i][j] -= factor * M[k][j];
      right[i] -= factor * right[k];
    }
  }
  for (std::size_t k = n; k-- > 0;) {
    for (std::size_t j = k + 1; j < n; ++j) right[k] -= M[k][j] * right[j];
    right[k] /= M[k][k];
  }
  return right;
}

// Minimise x'Qx / 2 + p'x subject to A x = b, 0 <= x <= u; Q is positive semidefinite.
struct QuadraticProgram {
  std::vector<Vector> Q;
  Vector p;
  std::vector<Vector> A;
  Vector b;
  Vector u;

  [[nodiscard]] Vector gradient(const Vector& x) const {
    Vector g = p;
    for (std::size_t i = 0; i < x.size(); ++i) g[i] += dot(Q[i], x);
    return g;
  }
  [[nodiscard]] double objective(const Vector& x) const {
    return (dot(gradient(x), x) + dot(p, x)) / 2;
  }
};

// The minimiser, its objective within about 1e-10. Throws when it is not reached.
inline Vector interiorPoint(const QuadraticProgram& qp) {
  const std::size_t n = qp.p.size();
  const std::size_t m = qp.A.size();
  Vector x = qp.u;
  for (double& value : x) value /= 2;
  Vector y(m);     // multipliers of the equations
  Vector z(n, 1);  // of the lower bounds
  Vector w(n, 1);  // of the upper ones
  for (int iteration = 0; iteration < 200; ++iteration) {
    double products = 0;  // of bounds' slacks and multipliers; all equal on the central path
    for (std::size_t i = 0; i < n; ++i) products += x[i] * z[i] + (qp.u[i] - x[i]) * w[i];
    const double mu = 0.1 * products / static_cast<double>(2 * n);

    // Newton's equations for x and y, those for z and w eliminated.
    std::vector<Vector> M = qp.Q;
    Vector right = qp.gradient(x);
    double residual = 0;
    for (std::size_t i = 0; i < n; ++i) {
      const double slack = qp.u[i] - x[i];
      right[i] = -right[i];
      for (std::size_t r = 0; r < m; ++r) right[i] += qp.A[r][i] * y[r];
      residual = std::max(residual, std::abs(right[i] + z[i] - w[i]));
      right[i] += mu / x[i] - mu / slack;
      M[i][i] += z[i] / x[i] + w[i] / slack + 1e-9;  // definite where the objective is flat
      for (std::size_t r = 0; r < m; ++r) M[i].push_back(-qp.A[r][i]);
    }
    for (std::size_t r = 0; r < m; ++r) {
      M.push_back(qp.A[r]);
      M.back().resize(n + m);
      right.push_back(qp.b[r] - dot(qp.A[r], x));
      residual = std::max(residual, std::abs(right.back()));
    }
    if (products < 1e-11 && residual < 1e-10) return x;
    const Vector d = solveLinear(M, right);

    double length = 1;
    const auto keepPositive = [&](double value, double change) {
      if (change < 0) length = std::min(length, -0.995 * value / change);
    };
    Vector dz(n);
    Vector dw(n);
    for (std::size_t i = 0; i < n; ++i) {
      const double slack = qp.u[i] - x[i];
      dz[i] = (mu - z[i] * d[i]) / x[i] - z[i];
      dw[i] = (mu + w[i] * d[i]) / slack - w[i];
      keepPositive(x[i], d[i]);
      keepPositive(slack, -d[i]);
      keepPositive(z[i], dz[i]);
      keepPositive(w[i], dw[i]);
    }
    for (std::size_t i = 0; i < n; ++i) {
      x[i] += length * d[i];
      z[i] += length * dz[i];
      w[i] += length * dw[i];
    }
    for (std::size_t r = 0; r < m; ++r) y[r] += length * d[n + r];
  }
  throw std::runtime_error("the interior-point method did not converge");
}

}  // namespace zeltest
