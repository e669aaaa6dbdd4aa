#include "zelsvm/getopt.h"

#include <cstring>

namespace zelsvm_opt {
namespace {

bool isOption(const char* argument) {
  if (*argument == '/') return std::strchr(argument + 1, '/') == nullptr;
  return *argument == '-';
}

}  // namespace

std::optional<char> OptionParser::next() {
  if (*cluster == '\0' && !enterCluster()) return std::nullopt;
  const char letter = *cluster;
  if (letter == '\0') return '?';  // a lone "/"
  ++cluster;
  const auto found = letters.find(letter);
  if (letter == ':' || found == std::string::npos) return '?';
  const bool takesArgument = found + 1 < letters.size() && letters[found + 1] == ':';
  return takesArgument && !takeArgument() ? '?' : letter;
}

// Moves to the letters of the next argument; false at the end of the options.
bool OptionParser::enterCluster() {
  if (position >= arguments.size()) return false;
  const char* const argument = arguments[position];
  if (!isOption(argument)) return false;
  ++position;
  if (std::strcmp(argument, "-") == 0 || std::strcmp(argument, "--") == 0) return false;
  cluster = argument + 1;
  return true;
}

bool OptionParser::takeArgument() {
  const char* const rest = cluster;
  cluster = "";
  if (*rest != '\0') {
    value = rest;
    return true;
  }
  if (position >= arguments.size()) return false;
  value = arguments[position++];
  return true;
}

}  // namespace zelsvm_opt
