#include "zelsvm/option_table.h"

#include <algorithm>
#include <array>

namespace zelsvm_opt {
namespace {

template <typename... Tools>
constexpr unsigned bits(Tools... tools) {
  return (static_cast<unsigned>(tools) | ...);
}

constexpr unsigned train = bits(Tool::train);
constexpr unsigned scale = bits(Tool::scale);
constexpr unsigned test = bits(Tool::test);
constexpr unsigned training = bits(Tool::train, Tool::test);
constexpr unsigned running = bits(Tool::train, Tool::test, Tool::predict);
constexpr unsigned all = bits(Tool::train, Tool::test, Tool::predict, Tool::scale);

using Opt = ZelSvmOpt;

constexpr std::array options = {
    Option{'s', training, &Opt::svmType},
    Option{'t', training, &Opt::kernelType},
    Option{'c', training, &Opt::cost},
    Option{'e', training, &Opt::tolerance},
    Option{'p', training, &Opt::epsilon},
    Option{'n', training, &Opt::nu},
    Option{'x', training | scale, &Opt::xScale},
    Option{'y', training | scale, &Opt::yScale},
    Option{'w', training, &Opt::weights},
    Option{'r', training, &Opt::coef0},
    Option{'d', training, &Opt::degree},
    Option{'g', training, &Opt::gamma},
    Option{'m', training, &Opt::cacheSize},
    Option{'v', training, &Opt::foldCount},
    Option{'b', running, &Opt::probability},
    Option{'k', training, &Opt::shrinking},
    Option{'G', running, &Opt::gpuDevice},
    Option{'I', all, &Opt::indexBase},
    Option{'R', training, &Opt::randomSeed},
    Option{'L', training, &Opt::maxIterations},
    Option{'s', scale, &Opt::saveFile},
    Option{'r', scale, &Opt::restoreFile},
    Option{'S', test, &Opt::algorithmName},
    Option{'K', test, &Opt::kernelName},
    Option{'M', test, &Opt::testFeatures},
    Option{'N', test, &Opt::testSamples},
    Option{'T', test, Flag{&Opt::resetTestSize, true}},
    Option{'X', train | bits(Tool::predict), Flag{&Opt::denseMatrix, true}},
    Option{'q', all, Flag{&Opt::verbose, false}},
    Option{'h', all, Ignored{}},
};

bool belongs(const Option& option, Tool tool) { return (option.tools & bits(tool)) != 0; }

bool takesArgument(const OptionTarget& target) {
  return !std::holds_alternative<Flag>(target) && !std::holds_alternative<Ignored>(target);
}

}  // namespace

const Option* findOption(Tool tool, char letter) {
  const auto* const found = std::find_if(options.begin(), options.end(), [&](const Option& option) {
    return option.letter == letter && belongs(option, tool);
  });
  return found == options.end() ? nullptr : &*found;
}

std::string optionLetters(Tool tool) {
  std::string letters;
  for (const Option& option : options) {
    if (!belongs(option, tool)) continue;
    letters += option.letter;
    if (takesArgument(option.target)) letters += ':';
  }
  return letters;
}

}  // namespace zelsvm_opt
