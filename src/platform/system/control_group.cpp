#include "platform/system/control_group.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "platform/system/small_file.h"

namespace zel::inline ZEL_PLATFORM {
namespace {

// Names of one controller version's files.
struct Version {
  const char* limit;
  const char* usage;
  const char* droppable;  // key in memory.stat
};

constexpr Version first{"/memory.limit_in_bytes", "/memory.usage_in_bytes", "total_inactive_file "};
constexpr Version second{"/memory.max", "/memory.current", "inactive_file "};

void tighten(MemoryLimit& limit, const std::string& group, const Version& version) {
  const auto total = SmallFile((group + version.limit).c_str()).numberAfter("");
  const auto used = SmallFile((group + version.usage).c_str()).numberAfter("");
  if (!total || !used) return;
  const auto cache = SmallFile((group + "/memory.stat").c_str()).numberAfter(version.droppable);
  const std::uint64_t held = *used - std::min(cache.value_or(0), *used);
  limit.total = std::min(limit.total, *total);
  limit.free = std::min(limit.free, *total - std::min(held, *total));
}

// Groups that are not visible from here have no files and change nothing.
void tightenUpwards(MemoryLimit& limit, const std::string& mount, std::string_view path,
                    const Version& version) {
  while (!path.empty() && path != "/") {
    tighten(limit, mount + std::string(path), version);
    path = path.substr(0, path.rfind('/'));
  }
  tighten(limit, mount, version);
}

// Path of the group in a membership line "number:controllers:path" of the wanted controllers.
std::optional<std::string_view> groupPath(std::string_view line, std::string_view controllers) {
  const std::size_t begin = line.find(':');
  if (begin == std::string_view::npos) return std::nullopt;
  const std::size_t end = line.find(':', begin + 1);
  if (end == std::string_view::npos) return std::nullopt;
  if (line.substr(begin + 1, end - begin - 1) != controllers) return std::nullopt;
  return line.substr(end + 1);
}

}  // namespace

MemoryLimit controlGroupMemory(const char* membership, const char* root) {
  const SmallFile groups(membership);
  MemoryLimit limit;
  std::string_view rest = groups.text();
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    const std::string_view line = rest.substr(0, end);
    if (const auto path = groupPath(line, "memory"))
      tightenUpwards(limit, std::string(root) + "/memory", *path, first);
    else if (const auto unified = groupPath(line, ""))
      tightenUpwards(limit, root, *unified, second);
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return limit;
}

}  // namespace zel::inline ZEL_PLATFORM
