// Open files by their numbers, closed at the end.
#pragma once

#include <unistd.h>

#include <utility>

namespace zel {

// Owns an open file, or none (-1).
class Descriptor {
 public:
  explicit Descriptor(int number = -1) noexcept : number(number) {}
  Descriptor(Descriptor&& other) noexcept : number(std::exchange(other.number, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number, other.number);
    return *this;
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() { close(); }

  [[nodiscard]] bool isOpen() const { return number >= 0; }
  [[nodiscard]] int get() const { return number; }
  // False where the system says only now that something written did not arrive.
  bool close() { return !isOpen() || ::close(std::exchange(number, -1)) == 0; }

 private:
  int number;
};

}  // namespace zel
