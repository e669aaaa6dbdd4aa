// The kernel row cache: sizes, and which rows it keeps.
#include "zeldplus/zelsvm/engine/mru_cache.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <list>
#include <random>
#include <vector>

#include "zeldplus/inc/zeldev.h"

namespace {

using zelsvm::MRUCache;

// Half of the free memory counts as a 32-bit number, which may happen to be small: this much more
// in use makes it large.
class EnoughMemory {
 public:
  EnoughMemory() {
    if (static_cast<std::uint32_t>(zel::freeDeviceMemory() >> 1) < (256u << 20))
      ballast.assign(std::size_t{1} << 30, 1);
  }

 private:
  std::vector<char> ballast;
};

TEST(MruCache, SlotsFollowTheBudget) {
  const EnoughMemory memory;
  struct Row {
    std::uint64_t samples;
    std::uint64_t megabytes;
    std::uint64_t pitch;
    std::uint64_t slots;
    unsigned sharers = 1;
  };
  for (const auto& [samples, megabytes, pitch, slots, sharers] : {
           Row{1000, 100, 1024, 1000},       // everything fits
           Row{512, 2, 512, 512},            // just so
           Row{513, 4, 1024, 512},           // 4 MB hold 512 rows of 8 kB
           Row{513, 5, 1024, 513},           // not a multiple of 16, but everything
           Row{100'000, 100, 100'352, 128},  // 130 rows, rounded down
           Row{100'000, 13, 100'352, 16},    // 16.98 rows
           Row{100'000, 0, 100'352, 16},     // never fewer
           Row{10, 0, 512, 16},              // even where there are fewer samples
           Row{1000, 4096, 1024, 16},        // 32 bits: a budget of 0
           Row{1000, 4097, 1024, 128},       // and of 1 MB
           Row{1000, 3, 1024, 192, 2},       // of 1.5 MB
       }) {
    MRUCache<double> cache;
    cache.initialize(samples, megabytes, sharers);
    EXPECT_EQ(cache.slotPitch(), pitch) << samples << " samples, " << megabytes << " MB";
    EXPECT_EQ(cache.slotCount(), slots) << samples << " samples, " << megabytes << " MB";
    EXPECT_GE(cache.storage().size(), slots * pitch);
  }
}

// Runs the cache beside a naive model, a list of rows and places by last use. Every fourth request
// is for one of a few popular rows.
void compareOverTrace(MRUCache<double>& cache, std::uint64_t samples, unsigned seed) {
  struct Entry {
    std::uint64_t row;
    double* place;
  };
  std::list<Entry> model;  // the least recently used first
  for (std::uint64_t k = 0; k < cache.slotCount(); ++k)
    model.push_back({~std::uint64_t{0}, cache.storage().data() + k * cache.slotPitch()});
  std::mt19937 generator(seed);
  for (int step = 0; step < 4000; ++step) {
    const std::uint64_t row =
        generator() % (generator() % 4 == 0 ? std::min<std::uint64_t>(8, samples) : samples);
    auto found = std::find_if(model.begin(), model.end(), [&](auto& e) { return e.row == row; });
    double* const cached = cache.query(row);
    ASSERT_EQ(cached, found == model.end() ? nullptr : found->place) << "step " << step;
    if (cached == nullptr) {
      found = model.begin();
      found->row = row;
      ASSERT_EQ(cache.grab(row), found->place) << "step " << step;
    }
    model.splice(model.end(), model, found);
  }
}

TEST(MruCache, KeepsTheMostRecentlyUsedRows) {
  MRUCache<double> cache;
  for (const std::uint64_t samples : {700, 17, 16, 5}) {  // the same object, emptied each time
    SCOPED_TRACE(std::to_string(samples) + " samples");
    cache.initialize(samples, 0);
    ASSERT_EQ(cache.slotCount(), 16);
    for (std::uint64_t row = 0; row < samples; ++row) EXPECT_EQ(cache.query(row), nullptr);
    compareOverTrace(cache, samples, 1);
    cache.clear();
    for (std::uint64_t row = 0; row < samples; ++row) EXPECT_EQ(cache.query(row), nullptr);
    compareOverTrace(cache, samples, 2);
  }
}

// Guesses go first, the oldest before the others, and never take a place that the latest requests
// need; one that is asked for is a row like any other.
TEST(MruCache, GuessesAreOlderThanUsedRows) {
  MRUCache<double> cache;
  cache.initialize(700, 0);
  ASSERT_EQ(cache.slotCount(), 16);
  const auto isCached = [&](std::uint64_t row) { return cache.cachedRows()[row] != 0; };
  for (std::uint64_t row = 0; row < 8; ++row) cache.grab(row);
  for (std::uint64_t row = 100; row < 108; ++row) cache.grabGuess(row);
  EXPECT_EQ(cache.usedGuesses(), 0);
  EXPECT_NE(cache.query(100), nullptr);
  EXPECT_EQ(cache.usedGuesses(), 1);
  cache.grab(8);  // in the place of guess 101
  EXPECT_FALSE(isCached(101));
  cache.grabGuess(200);  // guesses hold more than a quarter: in the place of 102
  EXPECT_FALSE(isCached(102));
  for (std::uint64_t row = 0; row < 9; ++row) EXPECT_TRUE(isCached(row)) << row;
  for (std::uint64_t row = 9; row < 13; ++row) cache.grab(row);  // 103 to 106
  for (std::uint64_t row = 103; row < 107; ++row) EXPECT_FALSE(isCached(row)) << row;
  EXPECT_TRUE(isCached(100) && isCached(107) && isCached(200));
  cache.grabGuess(201);  // guesses are few now: in the place of the least recently used row
  EXPECT_FALSE(isCached(0));
  EXPECT_TRUE(isCached(107) && isCached(200) && isCached(201));
  for (std::uint64_t guess = 300; guess < 340; ++guess) cache.grabGuess(guess);
  for (std::uint64_t row = 2; row < 13; ++row) EXPECT_TRUE(isCached(row)) << row;
}

}  // namespace
