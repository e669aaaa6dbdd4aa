// Vectors of lanes, as wide as the instruction set that this file is compiled for.
#pragma once

#ifdef __x86_64__
#include <immintrin.h>
#endif

#include <cstdint>

namespace zelsvm::ZEL_ISA {

#if defined(__AVX512F__)
inline constexpr int lanes = 8;
#elif defined(__AVX__)
inline constexpr int lanes = 4;
#else
inline constexpr int lanes = 2;
#endif

using Pack = double __attribute__((vector_size(8 * lanes)));
using Mask = std::int64_t __attribute__((vector_size(8 * lanes)));

__attribute__((always_inline)) inline Pack splat(double v) {
  Pack p;
  for (int k = 0; k < lanes; ++k) p[k] = v;
  return p;
}

__attribute__((always_inline)) inline Pack load(const double* p) {
  Pack v;
  __builtin_memcpy(&v, p, sizeof v);
  return v;
}

__attribute__((always_inline)) inline Pack broadcast(const double* p) {
#if defined(__AVX__) && !defined(__AVX512F__)
  return _mm256_broadcast_sd(p);
#else
  return splat(*p);
#endif
}

struct PackPair {
  Pack first;
  Pack second;
};

__attribute__((always_inline)) inline PackPair loadPair(const double* p) {
  return {load(p), load(p + lanes)};
}

// Whole numbers as doubles, their lanes where mixed puts them.
__attribute__((always_inline)) inline PackPair loadPair(const std::int32_t* p) {
#if defined(__AVX2__) && !defined(__AVX512F__)
  // The instruction that converts is slow here. Put into the low bits of 2^52 + 2^31, a number is
  // converted by one subtraction.
  const __m256i sign = _mm256_set1_epi32(INT32_MIN);
  const __m256i high = _mm256_set1_epi32(0x43300000);
  const __m256i x = _mm256_xor_si256(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)), sign);
  const Pack excess = splat(0x1p52 + 0x1p31);
  return {_mm256_castsi256_pd(_mm256_unpacklo_epi32(x, high)) - excess,
          _mm256_castsi256_pd(_mm256_unpackhi_epi32(x, high)) - excess};
#else
  using Whole = std::int32_t __attribute__((vector_size(4 * lanes)));
  Whole first;
  Whole second;
  __builtin_memcpy(&first, p, sizeof first);
  __builtin_memcpy(&second, p + lanes, sizeof second);
  return {__builtin_convertvector(first, Pack), __builtin_convertvector(second, Pack)};
#endif
}

// Brings lanes into the order of loadPair of such elements, or back.
template <typename Element>
__attribute__((always_inline)) inline PackPair mixed(const PackPair& pair) {
#if defined(__AVX2__) && !defined(__AVX512F__)
  if constexpr (sizeof(Element) < sizeof(double))
    return {_mm256_permute2f128_pd(pair.first, pair.second, 0x20),
            _mm256_permute2f128_pd(pair.first, pair.second, 0x31)};
#endif
  return pair;
}

__attribute__((always_inline)) inline void store(double* p, Pack v) {
  __builtin_memcpy(p, &v, sizeof v);
}

__attribute__((always_inline)) inline void storePair(double* p, const PackPair& pair) {
  store(p, pair.first);
  store(p + lanes, pair.second);
}

// a * b + c, rounded once where the processor can.
__attribute__((always_inline)) inline Pack multiplyAdd(Pack a, Pack b, Pack c) {
#if defined(__AVX512F__)
  return _mm512_fmadd_pd(a, b, c);
#elif defined(__FMA__)
  return _mm256_fmadd_pd(a, b, c);
#else
  return a * b + c;
#endif
}

// Bit k is lane k's sign.
__attribute__((always_inline)) inline unsigned signBits(Mask m) {
#if defined(__AVX512DQ__)
  return _mm512_movepi64_mask(reinterpret_cast<__m512i>(m));
#elif defined(__AVX__)
  return static_cast<unsigned>(_mm256_movemask_pd(reinterpret_cast<__m256d>(m)));
#elif defined(__SSE2__)
  return static_cast<unsigned>(_mm_movemask_pd(reinterpret_cast<__m128d>(m)));
#else
  unsigned bits = 0;
  for (int k = 0; k < lanes; ++k) bits |= static_cast<unsigned>(m[k] < 0) << k;
  return bits;
#endif
}

// a > b ? a : b by lane, for which the compiler needs no help where there are masks.
__attribute__((always_inline)) inline Pack larger(Pack a, Pack b) {
#if defined(__AVX__) && !defined(__AVX512F__)
  return _mm256_max_pd(a, b);
#else
  return a > b ? a : b;
#endif
}

// a < b ? a : b by lane.
__attribute__((always_inline)) inline Pack smaller(Pack a, Pack b) {
#if defined(__AVX__) && !defined(__AVX512F__)
  return _mm256_min_pd(a, b);
#else
  return a < b ? a : b;
#endif
}

// One byte per lane, its sign spread.
__attribute__((always_inline)) inline Mask loadBytes(const unsigned char* bytes) {
#if defined(__AVX512F__)
  static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__);
  std::uint64_t word;
  __builtin_memcpy(&word, bytes, sizeof word);
  constexpr Mask shifts = {56, 48, 40, 32, 24, 16, 8, 0};
  return ((Mask{} + static_cast<std::int64_t>(word)) << shifts) >> 56;
#elif defined(__AVX2__)
  return reinterpret_cast<Mask>(_mm256_cvtepi8_epi64(_mm_loadu_si32(bytes)));
#else
  Mask lane;
  for (int k = 0; k < lanes; ++k) lane[k] = static_cast<signed char>(bytes[k]);
  return lane;
#endif
}

}  // namespace zelsvm::ZEL_ISA
