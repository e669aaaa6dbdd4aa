#include "base/output/output_target.h"

#include <linux/magic.h>
#include <sys/vfs.h>

#include <cerrno>
#include <system_error>

namespace zel {
namespace {

constexpr int mostLinks = 40;  // as many as the system follows

// The system lists open files there: what is written to such a name must reach the open file.
bool isInProc(const std::filesystem::path& path) {
  struct statfs system {};
  const std::filesystem::path folder = path.parent_path();
  return ::statfs(folder.empty() ? "." : folder.c_str(), &system) == 0 &&
         system.f_type == PROC_SUPER_MAGIC;
}

bool isSame(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

bool shareFolder(const std::filesystem::path& a, const std::filesystem::path& b) {
  struct stat first {};
  struct stat second {};
  return ::stat((a.parent_path() / ".").c_str(), &first) == 0 &&
         ::stat((b.parent_path() / ".").c_str(), &second) == 0 && isSame(first, second);
}

}  // namespace

OutputTarget::OutputTarget(const std::string& given) : path(given) {
  if (::stat(given.c_str(), &status) == 0)
    kind = S_ISREG(status.st_mode) ? Kind::regular : Kind::open;
  else if (errno == ENOENT)
    kind = Kind::absent;
  if (S_ISDIR(status.st_mode)) kind = Kind::unusable;
  if (kind != Kind::regular && kind != Kind::absent) return;
  std::error_code noLink;
  for (int links = 0; links < mostLinks; ++links) {
    const std::filesystem::path next = std::filesystem::read_symlink(path, noLink);
    if (noLink) return;
    if (isInProc(path)) {
      kind = Kind::open;
      path = given;
      return;
    }
    path = path.parent_path() / next;
  }
  kind = Kind::unusable;
}

bool leadToSameFile(const std::string& a, const std::string& b) {
  struct stat first {};
  struct stat second {};
  const bool firstExists = ::stat(a.c_str(), &first) == 0;
  const bool secondExists = ::stat(b.c_str(), &second) == 0;
  if (firstExists != secondExists) return false;
  if (firstExists) return S_ISREG(first.st_mode) && isSame(first, second);
  const OutputTarget one(a);
  const OutputTarget other(b);
  return one.path.filename() == other.path.filename() && shareFolder(one.path, other.path);
}

}  // namespace zel
