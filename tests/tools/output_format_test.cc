#include <gtest/gtest.h>

#include <cstddef>
#include <fstream>
#include <istream>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "tests/tools/trace_files.h"
#include "tools/log/log_report.h"
#include "tools/log/log_summary.h"

namespace sensorvela::tools {
namespace {

using testing::SourcePath;

/// The keys of each kind of line, and in how many of its lines each is.
struct Keys {
  std::size_t lines = 0;
  std::map<std::string, std::size_t> in_lines;
};

/// Adds the lines' objects, each of which begins with its kind.
void AddLines(std::istream& lines, std::map<std::string, Keys>& kinds) {
  for (std::string line; std::getline(lines, line);) {
    const auto object = nlohmann::ordered_json::parse(line);
    ASSERT_EQ(object.begin().key(), "kind") << line;
    Keys& keys = kinds[object.at("kind")];
    ++keys.lines;
    for (const auto& [key, value] : object.items()) ++keys.in_lines[key];
  }
}

/// Each key of each kind, and whether all lines of the kind have it.
std::string Described(const std::map<std::string, Keys>& kinds) {
  std::string text;
  for (const auto& [kind, keys] : kinds) {
    for (const auto& [key, lines] : keys.in_lines) {
      if (key == "kind") continue;
      text.append(kind).append(" ").append(key).append(lines == keys.lines ? " yes\n" : " no\n");
    }
  }
  return text;
}

/// What the tools print of all traces and logs of the tests, and of a log with too much for a
/// table and a count that starts afresh without an engine's start.
std::map<std::string, Keys> Printed() {
  std::map<std::string, Keys> printed;
  std::vector<std::string> paths = testing::TracesIn("tests/traces");
  paths.emplace_back("tests/logs/bug_report");
  for (const std::string& path : paths) {
    std::ifstream lines(SourcePath(path + ".json_lines"));
    AddLines(lines, printed);
  }
  tools::LogSummary summary;
  for (std::size_t id = 0; id <= tools::kMaxRows; ++id) {
    summary.AddLine("E/sensor-vela( 1): Failed to report atom [id = " + std::to_string(id) + "].");
  }
  for (int i = 0; i < 2; ++i) {
    summary.AddLine(
        "E/sensor-vela( 1): HAL Error [3] has occurred [11] times in current cycle, upload blocked "
        "due to cap [10] met.");
  }
  summary.EndLog();
  std::stringstream lines;
  tools::PrintJsonLines(summary, lines);
  AddLines(lines, printed);
  return printed;
}

// Compares what the tools print with the tables and examples of the document.
TEST(OutputFormatTest, IsWhatTheDocumentSays) {
  std::ifstream document(SourcePath("docs/output-format.md"));
  std::map<std::string, std::map<std::string, std::string>> documented;
  std::map<std::string, Keys> examples;
  std::string kind;
  for (std::string line; std::getline(document, line);) {
    if (line.starts_with('#')) kind.clear();
    if (line.starts_with("#### `")) kind = line.substr(6, line.size() - 7);
    if (line.starts_with("| `") && !kind.empty()) {
      const std::size_t end = line.find('`', 3);
      documented[kind][line.substr(3, end - 3)] =
          line.substr(end + 4, line.find(' ', end + 4) - end - 4);
    }
    if (line.starts_with('{')) {
      std::istringstream example(line);
      AddLines(example, examples);
      EXPECT_TRUE(examples.contains(kind)) << line;
    }
  }
  std::string tables;
  for (const auto& [name, keys] : documented) {
    for (const auto& [key, always] : keys) {
      tables.append(name).append(" ").append(key).append(" ").append(always).append("\n");
    }
    EXPECT_EQ(examples[name].lines, 1u) << name;
    for (const auto& [key, lines] : examples[name].in_lines) {
      EXPECT_TRUE(key == "kind" || keys.contains(key)) << key;
    }
  }
  EXPECT_EQ(Described(Printed()), tables);
}

}  // namespace
}  // namespace sensorvela::tools
