// The slots of kernel rows: how many, and which rows they keep.
#include "platform/row_slots.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <list>
#include <random>
#include <string>

namespace {

using zelsvm::RowSlots;

constexpr std::uint64_t plenty = std::numeric_limits<std::uint64_t>::max();

TEST(RowSlots, FollowTheBudget) {
  struct Row {
    std::uint64_t rows;
    std::uint64_t pitch;  // elements of a slot
    std::uint64_t megabytes;
    std::uint64_t slots;
    unsigned sharers = 1;
    std::uint64_t freeBytes = plenty;
  };
  for (const auto& [rows, pitch, megabytes, slots, sharers, freeBytes] : {
           Row{1000, 1024, 100, 1000},       // everything fits
           Row{512, 512, 2, 512},            // just so
           Row{513, 1024, 4, 512},           // 4 MB hold 512 rows of 8 kB
           Row{513, 1024, 5, 513},           // not a multiple of 16, but everything
           Row{100'000, 100'352, 100, 128},  // 130 rows, rounded down
           Row{100'000, 100'352, 13, 16},    // 16.98 rows
           Row{100'000, 100'352, 0, 16},     // never fewer
           Row{10, 512, 0, 16},              // even where there are fewer samples
           Row{30'000, 30'208, 5000, 21'680}, Row{1000, 1024, 3, 192, 2},  // of 1.5 MB
           Row{1000, 1024, 100, 128, 1, 2 * 129 * 8 * 1024}  // of half of what is free
       })
    EXPECT_EQ(zelsvm::rowSlotCount(rows, pitch * sizeof(double),
                                   zelsvm::rowCacheBytes(megabytes, freeBytes, sharers)),
              slots)
        << rows << " rows, " << megabytes << " MB";
}

// Runs the slots beside a naive model, a list of rows and slots by last use. Every fourth request
// is for one of a few popular rows.
void compareOverTrace(RowSlots& cache, std::uint64_t rows, unsigned seed) {
  struct Entry {
    std::uint64_t row;
    std::uint64_t slot;
  };
  std::list<Entry> model;  // the least recently used first
  for (std::uint64_t k = 0; k < cache.count(); ++k) model.push_back({~std::uint64_t{0}, k});
  std::mt19937 generator(seed);
  for (int step = 0; step < 4000; ++step) {
    const std::uint64_t row =
        generator() % (generator() % 4 == 0 ? std::min<std::uint64_t>(8, rows) : rows);
    auto found = std::find_if(model.begin(), model.end(), [&](auto& e) { return e.row == row; });
    const auto cached = cache.query(row);
    ASSERT_EQ(cached.has_value(), found != model.end()) << "step " << step;
    if (cached) {
      ASSERT_EQ(*cached, found->slot) << "step " << step;
    } else {
      found = model.begin();
      found->row = row;
      ASSERT_EQ(cache.grab(row), found->slot) << "step " << step;
    }
    model.splice(model.end(), model, found);
  }
}

TEST(RowSlots, KeepTheMostRecentlyUsedRows) {
  RowSlots cache;
  for (const std::uint64_t rows : {700, 17, 16, 5}) {  // the same object, emptied each time
    SCOPED_TRACE(std::to_string(rows) + " rows");
    cache.assign(rows, 16);
    for (std::uint64_t row = 0; row < rows; ++row) EXPECT_FALSE(cache.query(row));
    compareOverTrace(cache, rows, 1);
    cache.clear();
    for (std::uint64_t row = 0; row < rows; ++row) EXPECT_FALSE(cache.query(row));
    compareOverTrace(cache, rows, 2);
  }
}

}  // namespace
