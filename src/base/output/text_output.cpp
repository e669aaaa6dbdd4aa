#include "base/output/text_output.h"

#include <cstring>

#include "base/numbers.h"

namespace zel {

TextOutput& TextOutput::put(std::string_view text) {
  if (text.size() > buffer.size() - used) flush();
  if (text.size() > buffer.size()) {
    arrive(text);
  } else {
    std::memcpy(buffer.data() + used, text.data(), text.size());
    used += text.size();
  }
  return *this;
}

TextOutput& TextOutput::put(double value) { return usedUpTo(formatDouble(roomForNumber(), value)); }

TextOutput& TextOutput::put(double value, double resolution) {
  return usedUpTo(formatDouble(roomForNumber(), value, resolution));
}

TextOutput& TextOutput::put(std::int32_t value) {
  return usedUpTo(formatInteger(roomForNumber(), value));
}

TextOutput& TextOutput::put(std::uint64_t value) {
  return usedUpTo(formatUnsigned(roomForNumber(), value));
}

void TextOutput::flush() {
  const std::size_t length = used;
  used = 0;
  arrive({buffer.data(), length});
}

void TextOutput::arrive(std::string_view text) {
  if (file != nullptr)
    file->write(text.data(), text.size());
  else
    string->append(text);
}

char* TextOutput::roomForNumber() {
  if (buffer.size() - used < numberCapacity) flush();
  return buffer.data() + used;
}

TextOutput& TextOutput::usedUpTo(const char* end) {
  used = static_cast<std::size_t>(end - buffer.data());
  return *this;
}

}  // namespace zel
