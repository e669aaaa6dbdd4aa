// Models as text files: a header of keyword lines and one line per support vector.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "files/user_file_reader.h"
#include "model/generic_model.h"
#include "parameters/svm_context.h"

namespace zelsvm {

// Writes the model; throws AppException for one of a precomputed kernel, when a number in it is not
// finite, for a gamma of 0, which would be read as a computed one, and when the file cannot be
// written completely.
template <typename T>
void writeModel(const std::string& path, std::uint64_t indexBase, const SvmContext<T>& context,
                const GenericModel<T>& model);

// A model read back, with the parameter record that it carries. The matrix looks at the reader's
// arrays.
template <typename T>
struct LoadedModel {
  std::unique_ptr<UserFileReader<T>> reader;
  std::unique_ptr<SvmContext<T>> context;
  std::unique_ptr<GenericModel<T>> model;
};

// Reads a model file, its rows sparse or dense, for use on the machine; or a file of modelBytes.
// Throws AppException for a file that is no model, bad parameters or numbers that are not finite,
// RuntimeException for broken contents.
template <typename T>
LoadedModel<T> readModel(const std::string& path, std::uint64_t indexBase, bool dense,
                         const Machine& machine);

}  // namespace zelsvm
