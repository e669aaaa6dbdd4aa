// The kernel functions, each described in one place. All are functions of the dot product and the
// two squared norms, and of the dot product alone unless they read the norms.
#pragma once

#include "rules/elementary_functions.h"
#include "rules/kernel_rules.h"
#include "rules/kernel_type.h"

namespace zelsvm {

// A kernel function's parameters as its rules read them; gamma is above 0.
struct KernelConstants {
  double gamma;
  double coef0;
  unsigned degree;
};

// A value is function(constants, argument(constants, product, normA, normB), 1).
// name: what model files call it. takesGamma, takesCoef0, takesDegree: parameters that it has, and
// model files with it. isProduct: it is the dot product itself. readsNorms: the argument
// takes the squared norms, which else may be anything. unitDiagonal: K(x, x) is always 1.
// isArithmetic: the function takes no exponential. nanoseconds: what a value costs one
// thread, the product apart. V is double, or on the host a vector of lanes with `one` as its unit.
template <SVM_KERNEL K>
struct KernelFunction;

template <>
struct KernelFunction<SVM_KERNEL_LINEAR> {
  static constexpr const char* name = "linear";
  static constexpr bool takesGamma = false;
  static constexpr bool takesCoef0 = false;
  static constexpr bool takesDegree = false;
  static constexpr bool isProduct = true;
  static constexpr bool readsNorms = false;
  static constexpr bool unitDiagonal = false;
  static constexpr bool isArithmetic = true;
  static constexpr double nanoseconds = 0;

  template <typename V>
  ZEL_RULE static V argument(const KernelConstants& /*c*/, V product, V /*normA*/, V /*normB*/) {
    return product;
  }
  template <typename V>
  ZEL_RULE static V function(const KernelConstants& /*c*/, V t, V /*one*/) {
    return t;
  }
};

template <>
struct KernelFunction<SVM_KERNEL_POLYNOMIAL> {
  static constexpr const char* name = "polynomial";
  static constexpr bool takesGamma = true;
  static constexpr bool takesCoef0 = true;
  static constexpr bool takesDegree = true;
  static constexpr bool isProduct = false;
  static constexpr bool readsNorms = false;
  static constexpr bool unitDiagonal = false;
  static constexpr bool isArithmetic = true;
  static constexpr double nanoseconds = 1.5;

  template <typename V>
  ZEL_RULE static V argument(const KernelConstants& c, V product, V /*normA*/, V /*normB*/) {
    return fusedMultiplyAdd(V(c.gamma), product, V(c.coef0));
  }
  template <typename V>
  ZEL_RULE static V function(const KernelConstants& c, V t, V one) {
    return binaryPower(t, c.degree, one);
  }
};

template <>
struct KernelFunction<SVM_KERNEL_RADIAL> {
  static constexpr const char* name = "radial";
  static constexpr bool takesGamma = true;
  static constexpr bool takesCoef0 = false;
  static constexpr bool takesDegree = false;
  static constexpr bool isProduct = false;
  static constexpr bool readsNorms = true;
  static constexpr bool unitDiagonal = true;
  static constexpr bool isArithmetic = false;
  static constexpr double nanoseconds = 1.5;

  template <typename V>
  ZEL_RULE static V argument(const KernelConstants& c, V product, V normA, V normB) {
    return radialExponent(V(-c.gamma), normA, normB, product);
  }
  template <typename V>
  ZEL_RULE static V function(const KernelConstants& /*c*/, V t, V /*one*/) {
    return exp(t);
  }
};

template <>
struct KernelFunction<SVM_KERNEL_SIGMOID> {
  static constexpr const char* name = "sigmoid";
  static constexpr bool takesGamma = true;
  static constexpr bool takesCoef0 = true;
  static constexpr bool takesDegree = false;
  static constexpr bool isProduct = false;
  static constexpr bool readsNorms = false;
  static constexpr bool unitDiagonal = false;
  static constexpr bool isArithmetic = false;
  static constexpr double nanoseconds = 1.5;

  template <typename V>
  ZEL_RULE static V argument(const KernelConstants& c, V product, V /*normA*/, V /*normB*/) {
    return fusedMultiplyAdd(V(c.gamma), product, V(c.coef0));
  }
  template <typename V>
  ZEL_RULE static V function(const KernelConstants& /*c*/, V t, V /*one*/) {
    return tanh(t);
  }
};

// K of two samples.
template <typename Function>
ZEL_RULE double kernelValue(const KernelConstants& c, double product, double normA, double normB) {
  return Function::function(c, Function::argument(c, product, normA, normB), 1.0);
}

// use.operator()<KernelFunction<type>>(): how code that is made for each kernel function is chosen.
template <unsigned first = 0, typename Use>
constexpr auto withKernel(SVM_KERNEL type, const Use& use) {
  if constexpr (first + 1 < SVM_KERNEL_UNSUPPORTED)
    if (type != first) return withKernel<first + 1>(type, use);
  return use.template operator()<KernelFunction<static_cast<SVM_KERNEL>(first)>>();
}

}  // namespace zelsvm
