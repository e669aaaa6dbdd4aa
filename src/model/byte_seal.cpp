#include "model/byte_seal.h"

#include "base/errors.h"
#include "model/byte_stream.h"

namespace zelsvm {
namespace {

constexpr std::size_t headBytes = modelMagic.size() + sizeof(std::uint32_t) + sizeof(std::uint64_t);
constexpr std::size_t sumBytes = sizeof(std::uint64_t);

// Fowler, Noll and Vo. Each byte is a bijection of the sum, so that one wrong byte always shows.
std::uint64_t checksum(std::string_view bytes) {
  std::uint64_t sum = 0xcbf29ce484222325;
  for (const char byte : bytes) sum = (sum ^ static_cast<unsigned char>(byte)) * 0x100000001b3;
  return sum;
}

}  // namespace

std::string sealed(std::string_view content) {
  ByteWriter writer;
  writer.bytes.reserve(headBytes + content.size() + sumBytes);
  writer.bytes += modelMagic;
  writer.whole(modelBytesVersion);
  writer.whole(std::uint64_t{content.size()});
  writer.bytes += content;
  writer.whole(checksum(writer.bytes));
  return std::move(writer.bytes);
}

std::string_view unsealed(std::string_view bytes) {
  if (!bytes.starts_with(modelMagic)) throw zel::AppException("Invalid model file format.");
  ByteReader::require(bytes.size() >= headBytes + sumBytes);
  ByteReader head(bytes.substr(modelMagic.size()));
  if (head.whole<std::uint32_t>() != modelBytesVersion)
    throw zel::RuntimeException("The bytes of the model are of a version that is not known here.");
  ByteReader::require(head.whole<std::uint64_t>() == bytes.size() - headBytes - sumBytes);
  const std::string_view summed = bytes.substr(0, bytes.size() - sumBytes);
  ByteReader sum(bytes.substr(summed.size()));
  ByteReader::require(sum.whole<std::uint64_t>() == checksum(summed));
  return summed.substr(headBytes);
}

}  // namespace zelsvm
