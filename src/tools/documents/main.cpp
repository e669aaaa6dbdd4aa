// Writes the options into man pages and completions, between the lines that say where:
//   option-documents [--check] FOLDER
// FOLDER holds the folders man and completions. With --check nothing is written, and the status is
// 1 where something would have changed.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tools/documents/option_documents.h"

namespace {

namespace fs = std::filesystem;

std::string read(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path.string());
  return {std::istreambuf_iterator<char>(file), {}};
}

void write(const fs::path& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary);
  file << text;
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path.string());
}

// The text with the block in place of what stands between its two marks.
std::string withBlock(const std::string& text, const std::string& block, const fs::path& path) {
  const auto mark = text.find("Options of the table: begin");
  const auto begin = text.find('\n', mark) + 1;
  const auto end = text.find("Options of the table: end");
  if (mark == std::string::npos || end == std::string::npos || end < begin)
    throw std::runtime_error("no place for the options in " + path.string());
  return text.substr(0, begin) + block + text.substr(text.rfind('\n', end) + 1);
}

std::vector<std::pair<fs::path, std::string>> documents() {
  std::vector<std::pair<fs::path, std::string>> all = {
      {"completions/bash/zelsvm-train", zelsvm_opt::bashOptions()},
      {"completions/zsh/_zelsvm", zelsvm_opt::zshOptions()}};
  for (const auto& tool : zelsvm_opt::allTools)
    all.emplace_back("man/" + std::string(tool.name) + ".1", zelsvm_opt::manualOptions(tool.tool));
  return all;
}

int run(const fs::path& folder, bool check) {
  int status = 0;
  for (const auto& [name, block] : documents()) {
    const std::string before = read(folder / name);
    const std::string after = withBlock(before, block, name);
    if (after == before) continue;
    std::cout << name.string()
              << (check ? ": other options than the table, see make options\n" : ": written\n");
    status = check ? 1 : 0;
    if (!check) write(folder / name, after);
  }
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  const bool check = !arguments.empty() && arguments.front() == "--check";
  if (arguments.size() != (check ? 2U : 1U)) {
    std::cerr << "usage: option-documents [--check] FOLDER\n";
    return 2;
  }
  try {
    return run(arguments.back(), check);
  } catch (const std::exception& error) {
    std::cerr << "option-documents: " << error.what() << '\n';
    return 2;
  }
}
