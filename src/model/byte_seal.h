// The frame around a model's bytes, by which they are recognised and damage is found.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace zelsvm {

// A file that begins so is a model's bytes. No text does.
inline constexpr std::string_view modelMagic{"\x93zelsvm\n", 8};
inline constexpr std::uint32_t modelBytesVersion = 1;

// Magic, version (32 bits), length of the content (64 bits), content, and the FNV-1a checksum (64
// bits) of all before it.
std::string sealed(std::string_view content);

// The content, which looks at the bytes. Throws AppException for bytes without the magic,
// RuntimeException for an unknown version, another length or a wrong checksum.
std::string_view unsealed(std::string_view bytes);

}  // namespace zelsvm
