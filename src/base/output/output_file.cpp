#include "base/output/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>

#include "base/errors.h"

namespace zel {
namespace {

constexpr std::size_t gatheredSize = std::size_t{64} << 10;
constexpr mode_t allBits = 07777;
constexpr mode_t usualMode = 0666;

using Kind = OutputTarget::Kind;

bool writeAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = ::write(descriptor, text.data(), text.size());
    if (count < 0 && errno != EINTR) return false;
    if (count > 0) text.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

// A random name, so that no two writers share one; empty when the system has no random numbers.
std::string newTemporaryName() {
  std::uint64_t number = 0;
  if (::getentropy(&number, sizeof number) != 0) return {};
  char name[32];
  std::snprintf(name, sizeof name, ".zelsvm-%016lx", number);
  return name;
}

}  // namespace

std::unique_ptr<OutputFile> OutputFile::open(const std::string& path) {
  std::unique_ptr<OutputFile> file(new OutputFile(OutputTarget(path)));
  const Kind kind = file->target.kind;
  if (kind == Kind::unusable || (kind != Kind::absent && !file->openPlace())) return nullptr;
  if (kind == Kind::open || file->openTemporary()) return file;
  // The file is writable if not its folder.
  const bool refused = errno == EACCES || errno == EPERM;
  return kind == Kind::regular && refused ? std::move(file) : nullptr;
}

OutputFile::~OutputFile() { removeTemporary(); }

bool OutputFile::openPlace() {
  place = Descriptor(::open(target.path.c_str(), O_WRONLY | O_NOCTTY | O_CLOEXEC));
  return place.isOpen();
}

bool OutputFile::openTemporary() {
  const std::filesystem::path parent = target.path.parent_path();
  folder =
      Descriptor(::open(parent.empty() ? "." : parent.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  temporaryName = newTemporaryName();
  if (!folder.isOpen() || temporaryName.empty()) return false;
  // Noted before the file exists, as a signal may come right behind its creation.
  unfinished.emplace(folder.get(), temporaryName);
  const mode_t mode = target.kind == Kind::regular ? target.status.st_mode & allBits : usualMode;
  temporary = Descriptor(
      ::openat(folder.get(), temporaryName.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
  if (!temporary.isOpen()) {
    temporaryName.clear();
    unfinished.reset();
    return false;
  }
  if (target.kind == Kind::regular) takeOverOwner();
  return true;
}

void OutputFile::takeOverOwner() {
  const struct stat& wanted = target.status;
  struct stat status {};
  mayReplace = ::fstat(temporary.get(), &status) == 0 &&
               ((status.st_uid == wanted.st_uid && status.st_gid == wanted.st_gid) ||
                ::fchown(temporary.get(), wanted.st_uid, wanted.st_gid) == 0) &&
               (status.st_mode == wanted.st_mode ||
                ::fchmod(temporary.get(), wanted.st_mode & allBits) == 0);
}

bool OutputFile::write(std::string_view text) {
  if (gathered.size() + text.size() <= gatheredSize) {
    gathered.append(text);
    return true;
  }
  const bool arrived = writeOut(gathered) && writeOut(text);
  gathered.clear();
  return arrived;
}

bool OutputFile::writeOut(std::string_view text) {
  if (temporary.isOpen()) return writeAll(temporary.get(), text);
  // Pipes and devices hold nothing that could be removed.
  if (!std::exchange(emptied, true) && ::ftruncate(place.get(), 0) != 0 && errno != EINVAL)
    return false;
  return writeAll(place.get(), text);
}

bool OutputFile::finish() {
  const bool arrived = writeOut(gathered);
  gathered.clear();
  return arrived && (temporary.isOpen() || place.close());
}

bool OutputFile::publish() {
  if (!finish()) return false;
  if (temporaryName.empty()) return true;
  if (!temporary.close()) return false;
  const std::string name = target.path.filename();
  if (mayReplace &&
      ::renameat(folder.get(), temporaryName.c_str(), folder.get(), name.c_str()) == 0) {
    temporaryName.clear();
    unfinished.reset();
    return true;
  }
  return copyIntoPlace();
}

// For a file that has to stay the one that it is, such as another owner's or a mounted one.
bool OutputFile::copyIntoPlace() {
  const Descriptor whole(::openat(folder.get(), temporaryName.c_str(), O_RDONLY | O_CLOEXEC));
  if (!place.isOpen() || !whole.isOpen() || ::ftruncate(place.get(), 0) != 0) return false;
  std::array<char, gatheredSize> piece;
  ssize_t count = 0;
  while ((count = ::read(whole.get(), piece.data(), piece.size())) > 0)
    if (!writeAll(place.get(), {piece.data(), static_cast<std::size_t>(count)})) return false;
  return count == 0 && place.close();
}

void OutputFile::removeTemporary() {
  if (!temporaryName.empty()) ::unlinkat(folder.get(), temporaryName.c_str(), 0);
  temporaryName.clear();
  unfinished.reset();
}

void requireWritable(const std::string& path) {
  if (path.empty()) throwAppException("missing file path.");
  const bool usable = OutputTarget(path).kind == Kind::open
                          ? ::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0
                          : OutputFile::open(path) != nullptr;
  if (!usable) throwAppException("failed to open %s.", path.c_str());
}

}  // namespace zel
