// A vector of lanes as a number: what the rules are written for takes it in place of one. As wide
// as the instruction set that a source is compiled for.
#pragma once

#include <hwy/highway.h>

#include <cstdint>

namespace zelsvm::ZEL_ISA {

namespace hn = hwy::HWY_NAMESPACE;

template <typename T>
struct Lanes {
  using Tag = hn::ScalableTag<T>;
  using Vector = hn::Vec<Tag>;
  static constexpr std::uint64_t count = HWY_LANES(T);

  Vector v;

  Lanes() = default;
  HWY_INLINE Lanes(Vector v) : v(v) {}
  HWY_INLINE Lanes(double x) : v(hn::Set(Tag(), static_cast<T>(x))) {}

  static HWY_INLINE Lanes all(T x) { return hn::Set(Tag(), x); }
  static HWY_INLINE Lanes load(const T* p) { return hn::Load(Tag(), p); }
  HWY_INLINE void store(T* p) const { hn::Store(v, Tag(), p); }

  friend HWY_INLINE Lanes operator+(Lanes a, Lanes b) { return hn::Add(a.v, b.v); }
  friend HWY_INLINE Lanes operator-(Lanes a, Lanes b) { return hn::Sub(a.v, b.v); }
  friend HWY_INLINE Lanes operator*(Lanes a, Lanes b) { return hn::Mul(a.v, b.v); }
  friend HWY_INLINE Lanes operator/(Lanes a, Lanes b) { return hn::Div(a.v, b.v); }
  // a * b + c, rounded once where the processor can.
  friend HWY_INLINE Lanes fusedMultiplyAdd(Lanes a, Lanes b, Lanes c) {
    return hn::MulAdd(a.v, b.v, c.v);
  }
  // a where x >= 0, else b.
  friend HWY_INLINE Lanes ifNotNegative(Lanes x, Lanes a, Lanes b) {
    return hn::IfThenElse(hn::Ge(x.v, hn::Zero(Tag())), a.v, b.v);
  }
};

}  // namespace zelsvm::ZEL_ISA
