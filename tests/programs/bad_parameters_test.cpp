// Settings that are refused.
#include <gtest/gtest.h>

#include "support/programs/tool_runs.h"

namespace {

using zeltest::refuse;
using zeltest::succeed;
using zeltest::words;
using zeltest::Workspace;

// What the solver may print before a message.
constexpr const char* progress = "[.]*(\nFinished optimization in [0-9]+ iterations\n\n\n)?";

TEST(BadParameters, OfTraining) {
  const std::string kernel = "Invalid gamma or degree parameters";
  const std::string bounds = "Invalid C or eps parameters";
  const std::string nu = "Invalid nu parameter";
  const std::string weight = "Invalid classification weight.";
  const std::string format = "The scale parameter is of incorrect format.";
  const std::string order = "The lower bound of the scale parameter exceeds its upper bound.";
  const std::string base = "The base index of a data matrix must be 0 or 1 only";
  const std::string oneClass = "Probability output for one-class SVM is not supported.";
  const std::pair<std::string, std::string> cases[] = {
      {"-s 5", "Unsupported SVM type"},
      {"-t 4", "Unsupported kernel type"},
      {"-g -1", kernel},
      {"-t 1 -d -0.5", kernel},
      {"-s 3 -p -1e-9", "Invalid epsilon parameter"},
      {"-c 0", bounds},
      {"-s 2 -c -1", bounds},
      {"-e 0", bounds},
      {"-n 0", nu},
      {"-n 1.01", nu},
      {"-w 1:0", weight},
      {"-w 1:2 -w -1:-1", weight},
      {"-w " + std::string(5000, '1'), "The classification weights are too long."},
      {"-x 1", format},
      {"-x 0:0", order},
      {"-s 3 -y text", format},
      {"-s 4 -y 2:1", order},
      {"-x -inf:inf", "The scale interval -inf:inf has no finite length."},
      {"-s 3 -y 0:nan", "The scale interval 0:nan has no finite length."},
      {"-x -1e308:1e308", "The scale interval -1e+308:1e+308 has no finite length."},
      {"-v 1000001", "Cross-validation takes at most 1000000 folds."},
      {"-I 2", base},
      {"-s 2 -b 1", oneClass},
      {"-s 1 -n 0.9", "Error: there is no feasible solution for the nu value."},
      {"-s 3 -p 100", "Unable to create support vectors."}};
  const Workspace workspace;
  workspace.write("data", "1 1:1\n-1 1:2\n-1 1:3\n-1 1:4\n");
  for (const auto& [options, message] : cases)
    refuse(workspace, words("zelsvm-train -q " + options + " data result"), message, progress);
}

TEST(BadParameters, ThatDoNotMatter) {
  const Workspace workspace;
  workspace.write("data", "1 1:1\n-1 1:2\n");
  for (const char* options : {"-y text", "-s 1 -y 2:1", "-v 1"})
    succeed(workspace, words(std::string("zelsvm-train -q ") + options + " data"));
}

TEST(BadParameters, OfScaling) {
  const Workspace workspace;
  workspace.write("data", "1 1:1\n-1 1:2\n");
  const std::pair<const char*, const char*> cases[] = {
      {"-y 1", "The scale parameter is of incorrect format."},
      {"-x 0:0", "The lower bound of the scale parameter exceeds its upper bound."},
      {"-x 0:inf", "The scale interval 0:inf has no finite length."},
      {"-I 2", "The base index of a data matrix must be 0 or 1 only"},
      {"-r missing", "failed to open missing."},
      {"-r .", "failed to open .."}};
  for (const auto& [options, message] : cases)
    refuse(workspace, words(std::string("zelsvm-scale -q -s record ") + options + " data result"),
           message);
}

}  // namespace
