// Few features with large numbers: the same results as under small ones, in little memory.
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <sstream>

#include "support/programs/tool_runs.h"

namespace {

using zeltest::expectNear;
using zeltest::numbersIn;
using zeltest::Samples;
using zeltest::Workspace;

// Numbers of the features. Training has the first three; of what only test data have, one stands
// between these and one behind them.
using Numbers = std::array<int, 5>;
constexpr Numbers narrowNumbers = {1, 2, 3, 4, 5};
constexpr Numbers wideNumbers = {1, 70000, 100000000, 500, 100000007};
// To a narrow model the wide ones are these.
constexpr Numbers shiftedNumbers = {1, 5, 6, 4, 7};

std::string textOf(const Samples& samples, const Numbers& numbers) {
  std::ostringstream text;
  for (std::uint64_t i = 0; i < samples.rows(); ++i) {
    text << samples.labels[i];
    for (std::uint64_t j = 0; j < samples.cols; ++j)
      text << ' ' << numbers[j] << ':' << samples.row(i)[j];
    text << '\n';
  }
  return text.str();
}

// The features of a model, scaled data or a scale record renumbered, which count from 0 in lines
// about bounds.
std::string narrowed(std::string text) {
  for (std::size_t j = 0; j < wideNumbers.size(); ++j)
    for (const int base : {0, 1}) {
      const auto written = [base = base](int n) {
        std::ostringstream place;
        place << (base == 0 ? "\n  " : " ") << n - 1 + base << ':';
        return place.str();
      };
      const std::string from = written(wideNumbers[j]);
      const std::string to = written(narrowNumbers[j]);
      for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + 1))
        text.replace(at, from.size(), to);
    }
  return text;
}

class WideData : public testing::Test {
 protected:
  WideData() {
    Samples known = zeltest::targetSamples(40, 3, 4);
    Samples unseen = zeltest::targetSamples(30, 5, 5);
    for (std::uint64_t i = 0; i < known.rows(); ++i) known.labels[i] = known.labels[i] > 0;
    write("known", known);
    write("unseen", unseen);
    workspace.write("unseen-shifted", textOf(unseen, shiftedNumbers));
    // Scaling leaves out what training did not use.
    for (std::uint64_t i = 0; i < unseen.rows(); ++i) unseen.values[i * 5 + 3] = 0;
    workspace.write("unseen-used-narrow", textOf(unseen, narrowNumbers));
    workspace.write("first", "1 1:0.25\n0 1:-1\n");
  }

  void write(const std::string& name, const Samples& samples) const {
    workspace.write(name + "-narrow", textOf(samples, narrowNumbers));
    workspace.write(name + "-wide", textOf(samples, wideNumbers));
  }
  // Ends well in a tenth of the memory that a number for every feature would take.
  std::string run(const std::string& line) const {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    const std::string bound;
#else
    const std::string bound = "ulimit -v 700000 && ";
#endif
    const auto result = workspace.run("/bin/sh", {"-c", bound + "exec " ZEL_TOOL_DIR "/" + line},
                                      {.environment = {{"OMP_NUM_THREADS", "2"}}});
    EXPECT_EQ(result.status, 0) << line << testing::PrintToString(result);
    return result.out;
  }

  const Workspace workspace;
};

TEST_F(WideData, TrainAndPredictAsUnderSmallNumbers) {
  for (const char* options :
       {"-s 3 -t 0", "-s 3", "-s 4 -t 1 -d 2 -r 1", "-s 0 -t 3 -g 0.01", "-s 2", "-s 1 -n 0.1 -b 1",
        "-s 3 -x -1:1 -y 0:1", "-s 0 -t 1 -x -1:1 -b 1", "-s 4 -x 0:1", "-s 2 -t 0 -x 1:2"}) {
    SCOPED_TRACE(options);
    const bool scaled = std::string(options).find("-x") != std::string::npos;
    const std::string train = std::string("zelsvm-train -q -R 1 -g 0.25 ") + options + " ";
    const std::string predict =
        std::strstr(options, "-b 1") != nullptr ? "zelsvm-predict -b 1 " : "zelsvm-predict ";
    run(train + "known-narrow narrow");
    run(train + "known-wide wide");
    EXPECT_EQ(narrowed(workspace.read("wide")), workspace.read("narrow"));
    EXPECT_EQ(run(train + "-v 4 known-wide"), run(train + "-v 4 known-narrow"));
    const std::string expected =
        run(predict + (scaled ? "unseen-used-narrow" : "unseen-narrow") + " narrow out-narrow");
    EXPECT_EQ(run(predict + "unseen-wide wide out-wide"), expected);
    expectNear(numbersIn(workspace.read("out-wide")), numbersIn(workspace.read("out-narrow")),
               1e-5);
    // Also where only one of the two has large numbers.
    EXPECT_EQ(run(predict + "first narrow out-narrow"), run(predict + "first wide out-wide"));
    expectNear(numbersIn(workspace.read("out-wide")), numbersIn(workspace.read("out-narrow")),
               1e-5);
    run(predict + "unseen-wide narrow out-wide");
    run(predict + "unseen-shifted narrow out-narrow");
    expectNear(numbersIn(workspace.read("out-wide")), numbersIn(workspace.read("out-narrow")),
               1e-5);
  }
}

TEST_F(WideData, ScaleAsUnderSmallNumbersAndGoOnScalingSo) {
  for (const char* options : {"-x -1:1", "-x 0:1", "-x 1:2 -y 0:1"}) {
    SCOPED_TRACE(options);
    const std::string scale = std::string("zelsvm-scale -q ") + options + " ";
    for (const std::string kind : {"narrow", "wide"})
      run(scale + "-s " + kind + ".range known-" + kind + " " + kind);
    EXPECT_EQ(narrowed(workspace.read("wide")), workspace.read("narrow"));
    EXPECT_EQ(narrowed(workspace.read("wide.range")), workspace.read("narrow.range"));
    run("zelsvm-scale -r wide.range known-wide again");
    EXPECT_EQ(workspace.read("again"), workspace.read("wide"));
    run("zelsvm-scale -r narrow.range unseen-used-narrow unseen-narrow-scaled");
    run("zelsvm-scale -r wide.range unseen-wide unseen-wide-scaled");
    EXPECT_EQ(narrowed(workspace.read("unseen-wide-scaled")),
              workspace.read("unseen-narrow-scaled"));
  }
}

// A feature that training names only as 0 has bounds like any other.
TEST_F(WideData, BoundsOfZeroAreKept) {
  workspace.write("data", "1 1:1 9:0 5000:2\n-1 1:2 5000:1\n1 1:0.5 5000:3\n");
  run("zelsvm-train -q -x -1:1 data model");
  EXPECT_NE(workspace.read("model").find("\n  8: 0 0\n  4999: 1 3\n"), std::string::npos);
  run("zelsvm-scale -q -s range data scaled");
  run("zelsvm-scale -q -r range data again");
  EXPECT_EQ(workspace.read("scaled"),
            "1 1:-0.333333 9:-1 \n-1 1:1 9:-1 5000:-1 \n"
            "1 1:-1 9:-1 5000:1 \n");
  EXPECT_EQ(workspace.read("again"), workspace.read("scaled"));
  // So few have other bounds that the rest would be taken for unused ones.
  std::ostringstream named;
  named << "1 1:1 2500:3\n-1 1:2 2500:1\n1 1:3";
  for (int j = 2; j < 2500; ++j) named << ' ' << j << ":0";
  named << " 2500:2\n";
  workspace.write("named", named.str());
  run("zelsvm-scale -q -s range named scaled");
  run("zelsvm-scale -q -r range named again");
  EXPECT_EQ(workspace.read("again"), workspace.read("scaled"));
}

// Narrow vectors under a bound far away, as a slip makes them.
TEST_F(WideData, AModelOfOneLargeBound) {
  workspace.write("model",
                  "SvmType: smo-epsilon-regression\nKernelType: linear\nX-scale: -1 1\n"
                  "  0: 0 2\n  100000000: 0 1\nNrClass: 2\nTotalSV: 1\nRho: -1\nSV:\n0.5 1:1 \n");
  workspace.write("data", "0 1:2\n0 1:1 7:5\n0 1:1 100000001:1\n");
  for (const char* layout : {"", "-X "}) {
    if (*layout != '\0') workspace.write("data", "0 1:2\n0 1:1 7:5\n0 1:1\n");
    run(std::string("zelsvm-predict ") + layout + "data model out");
    EXPECT_EQ(workspace.read("out"), "1.5 \n1 \n1 \n");
  }
}

}  // namespace
