// Arrays in host memory: one family that knows whether it owns its memory.
#pragma once

#include <cstdint>
#include <cstring>

#include "base/memory.h"

namespace zel {

// Elements are trivially copyable; new memory is not cleared. A wrapping vector looks at memory
// owned elsewhere, which must outlive it: it never frees it and refuses to be resized.
template <typename T>
class AbstractVector {
 public:
  AbstractVector(const AbstractVector&) = delete;
  AbstractVector& operator=(const AbstractVector&) = delete;
  AbstractVector(AbstractVector&& other) noexcept { take(other); }
  AbstractVector& operator=(AbstractVector&& other) noexcept {
    if (this != &other) {
      release();
      take(other);
    }
    return *this;
  }
  virtual ~AbstractVector() { release(); }

  // Copies count elements from source, starting at sourceOffset, to targetOffset of this vector. No
  // bounds are checked; an empty source or a count of 0 copies nothing.
  virtual void copyFrom(const AbstractVector& source, std::uint64_t targetOffset,
                        std::uint64_t sourceOffset, std::uint64_t count) {
    if (source.count == 0 || count == 0) return;
    std::memcpy(memory + targetOffset, source.memory + sourceOffset, count * sizeof(T));
  }

  [[nodiscard]] virtual std::uint64_t size() const { return count; }

  [[nodiscard]] std::uint64_t capacity() const { return reserved; }
  [[nodiscard]] MemoryKind kind() const { return space; }
  [[nodiscard]] bool wrapped() const { return borrowed; }
  [[nodiscard]] T* data() { return memory; }
  [[nodiscard]] const T* data() const { return memory; }

  // True if the memory was replaced; then the old contents are gone. Memory never shrinks.
  // Throws RuntimeException on a wrapping vector.
  bool resize(std::uint64_t newCount) {
    if (borrowed) throwWrappedResize();
    if (reserved >= newCount) {
      count = newCount;
      return false;
    }
    release();
    allocate(newCount);
    return true;
  }

  // Frees owned memory; the vector is empty afterwards.
  void release() noexcept {
    if (!borrowed) freeMemory(memory, reserved, sizeof(T));
    memory = nullptr;
    reserved = 0;
    count = 0;
  }

 protected:
  explicit AbstractVector(MemoryKind kind) : space(kind) {}
  AbstractVector(MemoryKind kind, std::uint64_t count) : space(kind) { allocate(count); }
  AbstractVector(std::uint64_t count, T* data, MemoryKind kind)
      : count(count), memory(data), space(kind), borrowed(true) {}

 private:
  void allocate(std::uint64_t newCount) {
    const std::uint64_t newCapacity = roundedCapacity(newCount);
    memory = static_cast<T*>(allocateMemory(newCapacity, sizeof(T), space));
    reserved = newCapacity;
    count = newCount;
  }

  void take(AbstractVector& other) noexcept {
    reserved = other.reserved;
    count = other.count;
    memory = other.memory;
    space = other.space;
    borrowed = other.borrowed;
    other.memory = nullptr;
    other.reserved = 0;
    other.count = 0;
  }

  std::uint64_t reserved = 0;
  std::uint64_t count = 0;
  T* memory = nullptr;
  MemoryKind space;
  bool borrowed = false;
};

// Host memory without element operations.
template <typename T>
class HVector : public AbstractVector<T> {
 public:
  HVector() : AbstractVector<T>(MemoryKind::heap) {}
  explicit HVector(std::uint64_t count, MemoryKind kind = MemoryKind::heap)
      : AbstractVector<T>(kind, count) {}
  HVector(std::uint64_t count, T* data, MemoryKind kind = MemoryKind::heap)
      : AbstractVector<T>(count, data, kind) {}
};

// Storage of a table of host numbers.
template <typename T>
class MathVector : public HVector<T> {
 public:
  using HVector<T>::HVector;
};

// A list of row numbers.
template <typename T = unsigned long long>
class IndexList : public HVector<T> {
 public:
  using HVector<T>::HVector;
  [[nodiscard]] T operator[](std::uint64_t i) const { return this->data()[i]; }
  [[nodiscard]] T& operator[](std::uint64_t i) { return this->data()[i]; }
};

}  // namespace zel

namespace zelsvm {

// Host memory with element access. Indices are not checked.
template <typename T>
class HostVector : public zel::AbstractVector<T> {
 public:
  explicit HostVector(zel::MemoryKind kind = zel::MemoryKind::heap)
      : zel::AbstractVector<T>(kind) {}
  explicit HostVector(std::uint64_t count, zel::MemoryKind kind = zel::MemoryKind::heap)
      : zel::AbstractVector<T>(kind, count) {}
  // Wraps count elements at data.
  HostVector(std::uint64_t count, T* data, zel::MemoryKind kind = zel::MemoryKind::heap)
      : zel::AbstractVector<T>(count, data, kind) {}

  [[nodiscard]] virtual T* at(std::uint64_t i) { return this->data() + i; }
  [[nodiscard]] virtual const T* at(std::uint64_t i) const { return this->data() + i; }
  virtual void set(std::uint64_t i, T value) { this->data()[i] = value; }
  virtual void fill(T value) {
    T* const elements = this->data();
    const std::uint64_t count = zel::AbstractVector<T>::size();
    for (std::uint64_t i = 0; i < count; ++i) elements[i] = value;
  }

  [[nodiscard]] T operator[](std::uint64_t i) const { return *at(i); }
};

// The elements of a full-length array named by a row list: position i is element filter[i].
template <typename T>
class FilteredVector : public HostVector<T> {
 public:
  // Wraps count elements at data; the filter must outlive this vector.
  FilteredVector(std::uint64_t count, T* data, const zel::IndexList<>& filter)
      : HostVector<T>(count, data), filter(&filter) {}

  // Scatters source element k to filter[k], k from targetOffset on; callers pass equal offsets.
  void copyFrom(const zel::AbstractVector<T>& source, std::uint64_t targetOffset,
                std::uint64_t /*sourceOffset*/, std::uint64_t count) override {
    if (source.size() == 0 || count == 0) return;
    for (std::uint64_t k = targetOffset; k < targetOffset + count; ++k)
      this->data()[(*filter)[k]] = source.data()[k];
  }
  [[nodiscard]] std::uint64_t size() const override { return filter->size(); }
  [[nodiscard]] T* at(std::uint64_t i) override { return this->data() + (*filter)[i]; }
  [[nodiscard]] const T* at(std::uint64_t i) const override { return this->data() + (*filter)[i]; }
  void set(std::uint64_t i, T value) override { this->data()[(*filter)[i]] = value; }
  void fill(T value) override {
    for (std::uint64_t i = 0; i < filter->size(); ++i) set(i, value);
  }

 private:
  const zel::IndexList<>* filter;
};

}  // namespace zelsvm
