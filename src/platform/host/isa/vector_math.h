// exp, tanh and log of lanes: the same operations in the same order on every instruction set, and
// so the same bits wherever multiply-adds are fused. Right to 2 units in the last place, of double
// or of float. What is not a number stays that. The reductions are those of P. Tang, Table-driven
// implementation of the exponential function (1989) without its table, and Cody and Waite (1980);
// the polynomials are Chebyshev fits.
#pragma once

#include <iterator>

#include "platform/host/isa/lanes.h"

namespace zelsvm::ZEL_ISA {

template <typename T>
struct ExponentialConstants;

// expm1(r) = r + r² h(r); h from the highest power down.
template <>
struct ExponentialConstants<double> {
  static constexpr double h[] = {
      0x1.af38a9b0ec855p-26, 0x1.289185613a3d6p-22, 0x1.71de0dae63bb3p-19, 0x1.a019b90d2ae7ap-16,
      0x1.a01a01a7c41d5p-13, 0x1.6c16c1788bd90p-10, 0x1.11111111109b3p-7,  0x1.5555555553d63p-5,
      0x1.5555555555556p-3,  0x1.0000000000001p-1};
  // The high part of ln 2 is short: its products with exponents are exact.
  static constexpr double ln2High = 0x1.62e42fefa0000p-1;
  static constexpr double ln2Low = 0x1.cf79abc9e3b3ap-40;
  static constexpr double rounding = 0x1.8p52;
  static constexpr int fractionBits = 52;
  static constexpr int bias = 1023;
  static constexpr double least = -746;    // below, results are 0
  static constexpr double most = 710;      // above, infinite
  static constexpr double normal = 700;    // within ±, results need no care
  static constexpr double saturated = 44;  // from here on tanh of a half is 1
};

template <>
struct ExponentialConstants<float> {
  static constexpr double h[] = {0x1.6d1109p-10, 0x1.120b6ep-7, 0x1.555519p-5, 0x1.5554dcp-3,
                                 0x1p-1};
  static constexpr double ln2High = 0x1.62e400p-1;
  static constexpr double ln2Low = 0x1.7f7d1cp-20;
  static constexpr double rounding = 0x1.8p23;
  static constexpr int fractionBits = 23;
  static constexpr int bias = 127;
  static constexpr double least = -104;
  static constexpr double most = 89;
  static constexpr double normal = 80;
  static constexpr double saturated = 20;
};

// exp(t) = 2^exponent exp(r + lost), lost being what r cannot hold, and expm1(r) = r + r² h.
template <typename T>
struct ReducedExponential {
  using Integers = hn::Vec<hn::RebindToSigned<typename Lanes<T>::Tag>>;
  Integers exponent;
  Lanes<T> r;
  Lanes<T> lost;
  Lanes<T> h;
};

// Of arguments that lie between least and most, or are not numbers.
template <typename T>
HWY_INLINE ReducedExponential<T> reduceExponential(Lanes<T> t) {
  using C = ExponentialConstants<T>;
  constexpr double log2e = 0x1.71547652b82fep+0;
  const hn::RebindToSigned<typename Lanes<T>::Tag> integers;
  const Lanes<T> rounded = fusedMultiplyAdd(t, Lanes<T>(log2e), Lanes<T>(C::rounding));
  const Lanes<T> k = rounded - C::rounding;
  const Lanes<T> high = fusedMultiplyAdd(k, Lanes<T>(-C::ln2High), t);
  const Lanes<T> r = fusedMultiplyAdd(k, Lanes<T>(-C::ln2Low), high);
  Lanes<T> h = C::h[0];
  for (std::size_t i = 1; i < std::size(C::h); ++i) h = fusedMultiplyAdd(h, r, Lanes<T>(C::h[i]));
  return {hn::Sub(hn::BitCast(integers, rounded.v), hn::BitCast(integers, Lanes<T>(C::rounding).v)),
          r, fusedMultiplyAdd(k, Lanes<T>(-C::ln2Low), high - r), h};
}

// 2^k for k that normal numbers have.
template <typename T, typename Integers>
HWY_INLINE Lanes<T> powerOfTwo(Integers k) {
  using C = ExponentialConstants<T>;
  const hn::RebindToSigned<typename Lanes<T>::Tag> integers;
  const auto biased = hn::Add(k, hn::Set(integers, C::bias));
  return hn::BitCast(typename Lanes<T>::Tag(), hn::ShiftLeft<C::fractionBits>(biased));
}

template <typename T>
HWY_INLINE Lanes<T> exp(Lanes<T> t) {
  using C = ExponentialConstants<T>;
  const typename Lanes<T>::Tag tag;
  const Lanes<T> above = hn::IfThenElse(hn::Gt(t.v, Lanes<T>(C::most).v), Lanes<T>(C::most).v, t.v);
  const Lanes<T> within =
      hn::IfThenElse(hn::Lt(above.v, Lanes<T>(C::least).v), Lanes<T>(C::least).v, above.v);
  const ReducedExponential<T> reduced = reduceExponential(within);
  const Lanes<T> r = reduced.r;
  const Lanes<T> fraction = fusedMultiplyAdd(r * r, reduced.h, r) + 1.0;
  if (HWY_LIKELY(hn::AllTrue(tag, hn::Lt(hn::Abs(t.v), Lanes<T>(C::normal).v))))
    return fraction * powerOfTwo<T>(reduced.exponent);
  // In two steps, of which only the second rounds: a result may be subnormal or infinite.
  const auto half = hn::ShiftRight<1>(reduced.exponent);
  return fraction * powerOfTwo<T>(half) * powerOfTwo<T>(hn::Sub(reduced.exponent, half));
}

// E / (E + 2) with E = expm1(2 |x|), corrected once for what the sums and the quotient lost.
template <typename T>
HWY_INLINE Lanes<T> tanh(Lanes<T> x) {
  using C = ExponentialConstants<T>;
  const Lanes<T> twice = hn::Abs((x + x).v);
  const Lanes<T> y =
      hn::IfThenElse(hn::Gt(twice.v, Lanes<T>(C::saturated).v), Lanes<T>(C::saturated).v, twice.v);
  const ReducedExponential<T> reduced = reduceExponential(y);
  const Lanes<T> scale = powerOfTwo<T>(reduced.exponent);
  const Lanes<T> tail = fusedMultiplyAdd(reduced.r * reduced.r, reduced.h, reduced.lost);
  const Lanes<T> large = fusedMultiplyAdd(scale, reduced.r, scale - 1.0);
  const Lanes<T> E = fusedMultiplyAdd(scale, tail, large);
  const Lanes<T> lostOfE = fusedMultiplyAdd(scale, tail, large - E);
  const Lanes<T> sum = E + 2.0;
  const Lanes<T> lostOfSum = lostOfE + (E - (sum - 2.0));
  const Lanes<T> reciprocal = Lanes<T>(1.0) / sum;
  const Lanes<T> q = E * reciprocal;
  const Lanes<T> negative = hn::Neg(q.v);
  const Lanes<T> missing =
      fusedMultiplyAdd(negative, sum, E) + fusedMultiplyAdd(negative, lostOfSum, lostOfE);
  return hn::CopySign(fusedMultiplyAdd(missing, reciprocal, q).v, x.v);
}

// x = 2^e m with m around 1, and log(m) = 2 artanh(s) with s = (m - 1) / (m + 1), in which m - 1 is
// exact.
HWY_INLINE Lanes<double> log(Lanes<double> x) {
  using D = Lanes<double>;
  using C = ExponentialConstants<double>;
  constexpr double Q[] = {0x1.2b5900de53b32p-3, 0x1.39fe51a7c18f9p-3, 0x1.7462b51cb66b1p-3,
                          0x1.c71c62e3f11e6p-3, 0x1.2492492df281ap-2, 0x1.99999999952d7p-2,
                          0x1.5555555555558p-1};
  constexpr double leastNormal = 0x1p-1022;
  constexpr double infinity = __builtin_inf();
  const D::Tag tag;
  const hn::RebindToSigned<D::Tag> integers;
  const auto tiny = hn::Lt(x.v, D(leastNormal).v);
  const D scaled = hn::IfThenElse(tiny, (x * 0x1p54).v, x.v);
  // The bits of 1/√2 taken off, the exponent is that of a number around 1.
  const auto low = hn::Set(integers, 0x3fe6a09e667f3bcdLL);
  const auto bits = hn::BitCast(integers, scaled.v);
  const auto shifted = hn::Sub(bits, low);
  const auto whole = hn::And(shifted, hn::Set(integers, static_cast<std::int64_t>(0xfffull << 52)));
  const D m = hn::BitCast(tag, hn::Sub(bits, whole));
  // The exponent, put into the low bits of a number that has units there.
  const auto biased = hn::ShiftRight<52>(
      hn::BitCast(hn::RebindToUnsigned<D::Tag>(), hn::Add(whole, hn::Set(integers, 1LL << 62))));
  const D magic = 0x1p52;
  const D e =
      D(hn::BitCast(tag, hn::Or(hn::BitCast(integers, biased), hn::BitCast(integers, magic.v)))) -
      (0x1p52 + 1024) - D(hn::IfThenElseZero(tiny, D(54.0).v));
  const D f = m - 1.0;
  const D s = f / (f + 2.0);
  const D z = s * s;
  D q = Q[0];
  for (unsigned i = 1; i < sizeof Q / sizeof Q[0]; ++i) q = fusedMultiplyAdd(q, z, D(Q[i]));
  const D correction = s * (f - z * q) - e * C::ln2Low;
  const D result = fusedMultiplyAdd(e, D(C::ln2High), f - correction);
  const D nan = __builtin_nan("");
  const D ordinary = hn::IfThenElse(hn::Lt(x.v, D(infinity).v), result.v, x.v);
  return hn::IfThenElse(hn::Eq(x.v, D(0.0).v), D(-infinity).v,
                        hn::IfThenElse(hn::Lt(x.v, D(0.0).v), nan.v, ordinary.v));
}

}  // namespace zelsvm::ZEL_ISA
