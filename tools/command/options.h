// The options of sensorvela-replay, and all that its help says.
#pragma once

#include <CLI/CLI.hpp>
#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace sensorvela::tools {

struct Options {
  std::string trace;
  bool check = false;
  bool log = false;
  std::string format = "text";
  /// By the position of their kind in `FileOutputs`.
  std::map<std::size_t, std::string> files;
  bool summary = false;
  bool wide = false;
  bool findings = false;
  std::vector<std::string> only;
};

/// Adds the options and the help to `app`. Parsing then sets `options`, which must outlive it.
void AddOptions(CLI::App& app, Options& options);

}  // namespace sensorvela::tools
