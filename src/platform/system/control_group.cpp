#include "platform/system/control_group.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include "platform/system/small_file.h"

namespace zel {
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

// The group of a membership line "number:controllers:path".
struct Membership {
  std::string_view controllers;  // none in the second version
  std::string_view path;

  [[nodiscard]] bool isOf(std::string_view controller) const {
    for (std::string_view rest = controllers; !rest.empty();) {
      const std::size_t end = std::min(rest.find(','), rest.size());
      if (rest.substr(0, end) == controller) return true;
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return false;
  }
};

std::optional<Membership> membershipIn(std::string_view line) {
  const std::size_t begin = line.find(':');
  if (begin == std::string_view::npos) return std::nullopt;
  const std::size_t end = line.find(':', begin + 1);
  if (end == std::string_view::npos) return std::nullopt;
  return Membership{line.substr(begin + 1, end - begin - 1), line.substr(end + 1)};
}

// Calls visit(folder) for the group and all above it. Those that are not visible from here have no
// files.
template <typename Visit>
void forEachUpwards(const std::string& mount, std::string_view path, const Visit& visit) {
  while (!path.empty() && path != "/") {
    visit(mount + std::string(path));
    path = path.substr(0, path.rfind('/'));
  }
  visit(mount);
}

// Calls visitFirst or visitSecond, by the version, for the folders of the groups that the
// controller has put the process in.
template <typename VisitFirst, typename VisitSecond>
void forEachGroup(const char* membership, const std::string& root, const std::string& controller,
                  const VisitFirst& visitFirst, const VisitSecond& visitSecond) {
  const SmallFile groups(membership);
  for (std::string_view rest = groups.text(); !rest.empty();) {
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    const auto group = membershipIn(rest.substr(0, end));
    if (group && group->isOf(controller))
      forEachUpwards(root + "/" + controller, group->path, visitFirst);
    else if (group && group->controllers.empty())
      forEachUpwards(root, group->path, visitSecond);
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
}

// Infinity where one of them is not there or says that there is no limit.
double ratio(std::optional<std::uint64_t> quota, std::optional<std::uint64_t> period) {
  if (!quota || !period || *period == 0) return std::numeric_limits<double>::infinity();
  return static_cast<double>(*quota) / static_cast<double>(*period);
}

// "quota period", where the quota may be "max".
double processorsIn(const SmallFile& file) {
  const auto quota = file.numberAfter("");
  return ratio(quota, file.numberAfter(std::to_string(quota.value_or(0)) + " "));
}

}  // namespace

MemoryLimit controlGroupMemory(const char* membership, const char* root) {
  MemoryLimit limit;
  forEachGroup(
      membership, root, "memory",
      [&limit](const std::string& group) { tighten(limit, group, first); },
      [&limit](const std::string& group) { tighten(limit, group, second); });
  return limit;
}

double controlGroupProcessors(const char* membership, const char* root) {
  double processors = std::numeric_limits<double>::infinity();
  forEachGroup(
      membership, root, "cpu",
      [&processors](const std::string& group) {
        const auto quota = SmallFile((group + "/cpu.cfs_quota_us").c_str()).numberAfter("");
        const auto period = SmallFile((group + "/cpu.cfs_period_us").c_str()).numberAfter("");
        processors = std::min(processors, ratio(quota, period));
      },
      [&processors](const std::string& group) {
        processors = std::min(processors, processorsIn(SmallFile((group + "/cpu.max").c_str())));
      });
  return processors;
}

}  // namespace zel
