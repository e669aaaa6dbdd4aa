// A slow, independent solution of the solvers' problem for tests: a primal-dual interior-point
// method (Wright, "Primal-Dual Interior-Point Methods", 1997) on dense matrices.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <stdexcept>
#include <vector>

namespace zeltest {

using Vector = std::vector<double>;

inline double dot(const Vector& a, const Vector& b) {
  double sum = 0;
  for (std::size_t i = 0; i < a.size(); ++i) sum += a[i] * b[i];
  return sum;
}

// Minimise x'Qx / 2 + p'x subject to A x = b, 0 <= x <= u; Q is positive semidefinite, row after
// row, and A has full rank.
struct QuadraticProgram {
  Vector Q;
  Vector p;
  std::vector<Vector> A;
  Vector b;
  Vector u;

  [[nodiscard]] Vector gradient(const Vector& x) const {
    Vector g = p;
    for (std::size_t i = 0; i < x.size(); ++i)
      for (std::size_t j = 0; j < x.size(); ++j) g[i] += Q[i * x.size() + j] * x[j];
    return g;
  }
  [[nodiscard]] double objective(const Vector& x) const {
    return (dot(gradient(x), x) + dot(p, x)) / 2;
  }
};

// Cholesky factor of a positive definite matrix.
class CholeskyFactor {
 public:
  CholeskyFactor(Vector matrix, std::size_t n) : l(std::move(matrix)), n(n) {
    for (std::size_t j = 0; j < n; ++j)
      for (std::size_t i = j; i < n; ++i) {
        double sum = l[i * n + j];
        for (std::size_t k = 0; k < j; ++k) sum -= l[i * n + k] * l[j * n + k];
        if (i == j && !(sum > 0)) throw std::runtime_error("not positive definite");
        l[i * n + j] = i == j ? std::sqrt(sum) : sum / l[j * n + j];
      }
  }
  [[nodiscard]] Vector solve(Vector x) const {
    for (std::size_t i = 0; i < n; ++i) {
      for (std::size_t k = 0; k < i; ++k) x[i] -= l[i * n + k] * x[k];
      x[i] /= l[i * n + i];
    }
    for (std::size_t i = n; i-- > 0;) {
      for (std::size_t k = i + 1; k < n; ++k) x[i] -= l[k * n + i] * x[k];
      x[i] /= l[i * n + i];
    }
    return x;
  }

 private:
  Vector l;
  std::size_t n;
};

class InteriorPoint {
 public:
  explicit InteriorPoint(const QuadraticProgram& program)
      : qp(program), n(program.p.size()), x(program.u), y(program.A.size()), z(n, 1), w(n, 1) {
    for (double& value : x) value /= 2;
  }

  // The minimiser, its objective within about 1e-10. Throws when it is not reached.
  Vector minimise() {
    for (int iteration = 0; iteration < 200; ++iteration) {
      double complementarity = 0;
      for (std::size_t i = 0; i < n; ++i) complementarity += x[i] * z[i] + slack(i) * w[i];
      if (complementarity < 1e-11 && infeasibility() < 1e-10) return x;
      step(0.1 * complementarity / static_cast<double>(2 * n));
    }
    throw std::runtime_error("the interior-point method did not converge");
  }

 private:
  // Keeps a flat objective's matrix definite; it slows steps and leaves their target alone.
  static constexpr double regularization = 1e-9;

  [[nodiscard]] double slack(std::size_t i) const { return qp.u[i] - x[i]; }
  // The worst residual of the equations and of the dual ones.
  [[nodiscard]] double infeasibility() const {
    double worst = 0;
    for (std::size_t r = 0; r < y.size(); ++r)
      worst = std::max(worst, std::abs(dot(qp.A[r], x) - qp.b[r]));
    const Vector gradient = qp.gradient(x);
    for (std::size_t i = 0; i < n; ++i) {
      double residual = gradient[i] - z[i] + w[i];
      for (std::size_t r = 0; r < y.size(); ++r) residual -= qp.A[r][i] * y[r];
      worst = std::max(worst, std::abs(residual));
    }
    return worst;
  }

  // One Newton step toward the point of the central path where all products are mu.
  void step(double mu) {
    Vector M = qp.Q;
    Vector right = qp.gradient(x);
    for (std::size_t i = 0; i < n; ++i) {
      M[i * n + i] += z[i] / x[i] + w[i] / slack(i) + regularization;
      right[i] = mu / x[i] - mu / slack(i) - right[i];
      for (std::size_t r = 0; r < y.size(); ++r) right[i] += qp.A[r][i] * y[r];
    }
    const CholeskyFactor factor(M, n);
    Vector dx = factor.solve(right);
    const Vector dy = multiplierStep(factor, dx);
    for (std::size_t r = 0; r < y.size(); ++r) {
      const Vector column = factor.solve(qp.A[r]);
      for (std::size_t i = 0; i < n; ++i) dx[i] += column[i] * dy[r];
    }
    double length = 1;
    const auto keepPositive = [&](double value, double change) {
      if (change < 0) length = std::min(length, -0.995 * value / change);
    };
    Vector dz(n);
    Vector dw(n);
    for (std::size_t i = 0; i < n; ++i) {
      dz[i] = mu / x[i] - z[i] - z[i] / x[i] * dx[i];
      dw[i] = mu / slack(i) - w[i] + w[i] / slack(i) * dx[i];
      keepPositive(x[i], dx[i]);
      keepPositive(slack(i), -dx[i]);
      keepPositive(z[i], dz[i]);
      keepPositive(w[i], dw[i]);
    }
    for (std::size_t i = 0; i < n; ++i) {
      x[i] += length * dx[i];
      z[i] += length * dz[i];
      w[i] += length * dw[i];
    }
    for (std::size_t r = 0; r < y.size(); ++r) y[r] += length * dy[r];
  }

  // Solves A M^-1 A' dy = b - A x - A dx for one or two rows of A.
  [[nodiscard]] Vector multiplierStep(const CholeskyFactor& factor, const Vector& dx) const {
    const std::size_t m = y.size();
    Vector S(m * m);
    Vector right(m);
    for (std::size_t r = 0; r < m; ++r) {
      const Vector column = factor.solve(qp.A[r]);
      for (std::size_t s = 0; s < m; ++s) S[s * m + r] = dot(qp.A[s], column);
      right[r] = qp.b[r] - dot(qp.A[r], x) - dot(qp.A[r], dx);
    }
    return CholeskyFactor(S, m).solve(right);
  }

  const QuadraticProgram& qp;
  std::size_t n;
  Vector x;  // minimiser
  Vector y;  // multipliers of the equations
  Vector z;  // multipliers of the lower bounds
  Vector w;  // multipliers of the upper bounds
};

}  // namespace zeltest
