// Models as bytes, which keep every bit: what a model predicts is the same before and after.
#pragma once

#include <string>
#include <string_view>

#include "model/model_file.h"

namespace zelsvm {

// Throws AppException for a model with numbers that are not finite.
template <typename T>
std::string modelBytes(const SvmContext<T>& context, const GenericModel<T>& model);

// What modelBytes made, for use on the machine. Every length is compared with the bytes that are
// left before memory is taken for it. Throws AppException for bytes that are no model, bad
// parameters or numbers that are not finite, RuntimeException for damaged ones.
template <typename T>
LoadedModel<T> modelFromBytes(std::string_view bytes, const Machine& machine);

// Whether there is a file that holds such bytes, by how it begins. Pipes are left alone.
bool holdsModelBytes(const std::string& path);
// Throws AppException for a file that cannot be read.
std::string wholeFile(const std::string& path);

}  // namespace zelsvm
