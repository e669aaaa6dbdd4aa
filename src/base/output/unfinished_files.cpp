#include "base/output/unfinished_files.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>

namespace zel {
namespace {

enum class State : std::uint32_t { free, changing, valid };

// A handler may neither allocate nor wait, so that the places are fixed.
struct Place {
  std::atomic<State> state = State::free;
  int folder = -1;
  std::array<char, 64> name{};
};
static_assert(std::atomic<State>::is_always_lock_free);

std::array<Place, 32> places;

}  // namespace

UnfinishedFile::UnfinishedFile(int folder, const std::string& name) : place(0) {
  for (; place < places.size(); ++place) {
    State expected = State::free;
    if (places[place].state.compare_exchange_strong(expected, State::changing)) break;
  }
  if (place == places.size()) return;
  places[place].folder = folder;
  places[place].name.fill('\0');
  name.copy(places[place].name.data(), places[place].name.size() - 1);
  places[place].state = State::valid;
}

UnfinishedFile::~UnfinishedFile() {
  if (place < places.size()) places[place].state = State::free;
}

void removeUnfinishedFiles() noexcept {
  for (const Place& place : places)
    if (place.state == State::valid) ::unlinkat(place.folder, place.name.data(), 0);
}

}  // namespace zel
