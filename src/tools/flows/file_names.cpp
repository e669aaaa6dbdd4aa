#include "tools/flows/file_names.h"

#include <filesystem>
#include <system_error>

#include "base/errors.h"
#include "base/output/output_target.h"

namespace zelsvm_main {

void requireOtherFile(const NamedFile& written, const NamedFile& read) {
  std::error_code unknown;
  if (std::filesystem::exists(read.path, unknown)) requireTwoFiles(written, read);
}

void requireTwoFiles(const NamedFile& written, const NamedFile& other) {
  if (zel::leadToSameFile(written.path, other.path))
    zel::throwAppException("The %s must not be the %s: %s.", written.role, other.role,
                           written.path.c_str());
}

}  // namespace zelsvm_main
