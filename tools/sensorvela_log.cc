// sensorvela-log: finds the library's lines in a device's log and prints what they say together.
#include <CLI/CLI.hpp>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <exception>
#include <iostream>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "tools/command/manual.h"
#include "tools/command/standard_streams.h"
#include "tools/input/input.h"
#include "tools/log/log_report.h"
#include "tools/log/log_summary.h"
#include "tools/log/read_lines.h"
#include "tools/text/printable_text.h"

namespace {

namespace tools = sensorvela::tools;

constexpr int kExitFailed = 1;
constexpr int kExitBadUsage = 2;

constexpr char kAbout[] =
    "Finds the lines of libsensorvela in a device's log and prints what they say together.\n"
    "\n"
    "The log is what logcat prints, or a bug report. Printed are the starts of engines, lost\n"
    "atoms, errors by call, type and sensor, and ended cycles.";

constexpr char kFooter[] =
    "The lines may have any of logcat's forms brief, tag, process, time, threadtime and long, "
    "with\n"
    "the modifiers of time, uid and color; gzip may have compressed a file. Several files are "
    "read\n"
    "as one log, in the given order. Where a form has no time, the line's number is printed, "
    "counted\n"
    "over all files.\n"
    "\n"
    "Only what follows from the lines is printed: of lost errors and ended cycles there may be "
    "more.\n"
    "The form threadtime tells the most, because the lines have their threads.\n"
    "\n"
    "Exit status:\n"
    "  0  the log was read\n"
    "  1  a file could not be read, or is no text: a zip archive, UTF-16, bzip2, xz, zstd or "
    "other\n"
    "     data, damaged gzip data, or gzip data beside a text in one file; the output could not "
    "be\n"
    "     written; or the reader of a pipe has gone (nothing is said then)\n"
    "  2  bad usage";

struct Options {
  std::vector<std::string> files;
  std::string format = "text";
};

std::string Reason(int error) { return std::generic_category().message(error); }

/// To be called right after the write that has failed. A closed pipe is no reason for a complaint.
int CannotWrite() {
  const int error = errno;
  if (error != EPIPE) {
    std::cerr << "sensorvela-log: cannot write to standard output: " << Reason(error) << '\n';
  }
  return kExitFailed;
}

/// Returns what has failed; empty if nothing has.
std::string ReadFile(const std::string& path, tools::LogSummary& summary) try {
  std::string error = tools::ReadLines(
      tools::Input::OpenOnce(path), [&summary](std::string_view line) { summary.AddLine(line); });
  summary.EndFile();
  return error;
} catch (const std::system_error& error) {
  return error.code().message();
}

int Summarize(const Options& options) {
  tools::LogSummary summary;
  for (const std::string& file : options.files) {
    if (const std::string error = ReadFile(file, summary); !error.empty()) {
      std::cerr << "sensorvela-log: " << tools::Printable(file) << ": " << error << '\n';
      return kExitFailed;
    }
  }
  summary.EndLog();
  if (options.format == "jsonl") {
    tools::PrintJsonLines(summary, std::cout);
  } else {
    tools::PrintText(summary, std::cout);
  }
  return std::cout.flush() ? 0 : CannotWrite();
}

}  // namespace

int main(int argc, char** argv) try {
  sensorvela::tools::OccupyStandardStreams();
  // Writing to a closed pipe then fails like any other write.
  std::signal(SIGPIPE, SIG_IGN);
  std::ios::sync_with_stdio(false);

  Options options;
  CLI::App app(kAbout, "sensorvela-log");
  app.add_option("FILE", options.files, "The logs; - for standard input")
      ->required()
      ->type_name("");
  app.add_option("--format", options.format, "What to print: tables for a reader, or JSON Lines")
      ->type_name("{text,jsonl}")
      ->check(CLI::IsMember({"text", "jsonl"}).description(""))
      ->capture_default_str();
  app.set_version_flag("--version", "sensorvela-log " SENSORVELA_VERSION,
                       "Print the version and exit");
  tools::AddGenerateOption(app);
  app.footer(kFooter);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (app.exit(error) != 0) return kExitBadUsage;
    return std::cout.flush() ? 0 : CannotWrite();
  }
  return Summarize(options);
} catch (const std::exception& error) {
  std::fprintf(stderr, "sensorvela-log: %s\n", error.what());
  return kExitFailed;
}
