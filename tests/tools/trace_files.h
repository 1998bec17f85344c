// Finds the traces that the tests run.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace sensorvela::testing {

inline std::string SourcePath(const std::string& path) { return SENSORVELA_SOURCE_DIR "/" + path; }

inline std::string Content(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// The traces in the folder, without their extensions, sorted. Leaves out the list of bad traces
/// and the day of eleven million samples, which takes minutes under emulation.
inline std::vector<std::string> TracesIn(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(SourcePath(folder))) {
    const std::string name = entry.path().stem();
    const bool is_run = name != "bad_traces" && name != "one_day";
    if (entry.path().extension() == ".jsonl" && is_run) {
      names.push_back(std::filesystem::path(folder) / name);
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

/// The name of a trace's test: the trace's, without its folder.
inline std::string TraceName(const std::string& path) { return path.substr(path.rfind('/') + 1); }

}  // namespace sensorvela::testing
