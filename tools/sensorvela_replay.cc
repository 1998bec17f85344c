// sensorvela-replay: runs a recorded stretch of sensor-stack events through the engine in virtual
// time and prints what the stats service received.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <deque>
#include <exception>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "tools/command/file_outputs.h"
#include "tools/command/options.h"
#include "tools/command/standard_streams.h"
#include "tools/command/terminal.h"
#include "tools/report/json_lines_report.h"
#include "tools/report/output_file.h"
#include "tools/report/progress.h"
#include "tools/report/text_report.h"
#include "tools/run/replay.h"
#include "tools/text/names.h"
#include "tools/text/printable_text.h"
#include "tools/trace/trace.h"

namespace {

namespace tools = sensorvela::tools;

constexpr int kExitFailed = 1;
constexpr int kExitBadInput = 2;
/// The trace was run, and the run is not as it should be.
constexpr int kExitNotRight = 3;

using tools::Options;

/// Whoever has closed a pipe does not want to hear of it.
int CannotWrite(const std::string& what, int error) {
  if (error != EPIPE) {
    std::cerr << "sensorvela-replay: cannot write " << what << ": "
              << std::generic_category().message(error) << '\n';
  }
  return kExitFailed;
}

/// What is wrong with the options.
struct BadUsage : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Throws `BadUsage` when the option's file cannot be that one.
void CheckOutputFile(const std::string& trace, const std::string& option, const std::string& file) {
  if (file.empty() || file == "-") {
    throw BadUsage(option + ' ' + file + ": expected the name of a file");
  }
  std::error_code no_such_file;
  const std::string trace_file = trace == "-" ? "/dev/stdin" : trace;
  if (std::filesystem::equivalent(trace_file, file, no_such_file)) {
    throw BadUsage(option + " would overwrite the trace");
  }
}

/// Whether both name one file, which need not exist.
bool AreOneFile(const std::string& a, const std::string& b) {
  // Absolute first: libstdc++ leaves the name of a file that does not exist relative.
  const auto path = [](const std::string& name) {
    std::error_code not_found;
    return std::filesystem::weakly_canonical(std::filesystem::absolute(name, not_found), not_found);
  };
  return !path(a).empty() && path(a) == path(b);
}

/// Throws `BadUsage` when the run cannot be written to these files.
void CheckOutputFiles(const Options& options) {
  for (const auto& [kind, file] : options.files) {
    const tools::FileOutput& output = tools::FileOutputs()[kind];
    const std::string option = output.option;
    if (const std::string why = output.missing(); !why.empty()) {
      throw BadUsage((option + ": this build has none, ").append(why));
    }
    for (const auto& [other_kind, other_file] : options.files) {
      if (other_kind >= kind || !AreOneFile(file, other_file)) continue;
      throw BadUsage(option + " and " + tools::FileOutputs()[other_kind].option +
                     ": expected two files");
    }
    CheckOutputFile(options.trace, option, file);
  }
}

/// A file that an observer writes.
struct ObserverFile {
  explicit ObserverFile(const std::string& path) : name(path), file(path) {}

  std::string name;
  tools::OutputFile file;
  std::unique_ptr<tools::RunObserver> observer;
};

/// The files that the options ask for, with the observers that write them. `trace` must outlive
/// them.
std::deque<ObserverFile> OpenFiles(const Options& options, const tools::Trace& trace) {
  const std::filesystem::path path = options.trace == "-" ? "standard input" : options.trace;
  std::deque<ObserverFile> files;
  for (const auto& [kind, name] : options.files) {
    ObserverFile& file = files.emplace_back(name);
    file.observer =
        tools::FileOutputs()[kind].make(file.file.stream(), trace, path.filename().string());
  }
  return files;
}

/// How to print columns. Throws `BadUsage` if the options are wrong.
tools::TextOptions ReadTextOptions(const Options& options, const tools::SensorNames& names) {
  tools::TextOptions text = {.wide = options.wide,
                             .summary_only = options.summary || options.findings,
                             .findings_only = options.findings,
                             .color = tools::ShowsColor()};
  text.width = tools::TerminalWidth().value_or(text.width);
  for (const std::string& what : options.only) {
    if (text.only.Add(what, names)) continue;
    throw BadUsage("--only " + tools::Printable(what) +
                   ": expected a sensor's name or HIGH/LOW, or an atom's name or identifier");
  }
  const bool has_any = text.wide || options.summary || text.only.is_limited();
  if (has_any && options.format != "text") {
    throw BadUsage("--wide, --summary and --only: expected with --format text");
  }
  return text;
}

struct FindingCount : tools::RunObserver {
  void OnRunEnd(Instant /*at*/, const tools::Summary& summary) override {
    count = summary.findings.size();
  }
  std::size_t count = 0;
};

/// Says where the run differs from the recording, if it does; returns the status to exit with.
int SayDivergence(const tools::Replay& replay, const tools::Trace& trace) {
  if (!replay.divergence()) return 0;
  const auto& [line, what] = *replay.divergence();
  std::cerr << trace.name() << ':' << line << ": the replay differs from the recording: " << what
            << '\n';
  return kExitNotRight;
}

/// Runs a recording, too: nothing else shows that its numbers fit together.
int Check(const tools::Trace& trace) {
  if (!trace.cut().empty()) return kExitBadInput;
  if (!trace.is_recording()) return 0;
  tools::Replay replay({}, false);
  replay.Run(trace.Events(false));
  return SayDivergence(replay, trace);
}

int Replay(const Options& options) try {
  CheckOutputFiles(options);

  std::optional<tools::Progress> progress;
  std::vector<tools::RunObserver*> observers;
  if (isatty(STDERR_FILENO) != 0) {
    progress.emplace(std::cerr, isatty(STDOUT_FILENO) != 0);
    observers.push_back(&*progress);
  }

  const tools::Input input = tools::OpenTrace(options.trace);
  const tools::Trace trace(options.trace, input, [&](std::uint64_t bytes) {
    if (progress) progress->Read(bytes, input.size());
  });
  if (progress) progress->DoneReading(trace.run_end());
  if (!trace.cut().empty()) std::cerr << trace.cut() << '\n';
  const tools::TextOptions text_options = ReadTextOptions(options, trace.sensor_names());
  if (options.check) return Check(trace);

  tools::OutputFile out(stdout);
  const auto printed =
      options.format == "jsonl"
          ? tools::MakeJsonLinesReport(out.stream(), trace.sensor_names(), options.findings)
          : tools::MakeTextReport(out.stream(), trace.sensor_names(), text_options);
  observers.push_back(printed.get());
  FindingCount findings;
  observers.push_back(&findings);

  std::deque<ObserverFile> files = OpenFiles(options, trace);
  for (const ObserverFile& file : files) {
    if (file.file.error() != 0) return CannotWrite(file.name, file.file.error());
    observers.push_back(file.observer.get());
  }

  const auto has_failed = [&] {
    // A reader that has seen enough does not make the files unwanted.
    const bool out_has_failed = out.error() != 0 && (out.error() != EPIPE || files.empty());
    return out_has_failed ||
           std::ranges::any_of(files, [](const auto& file) { return file.file.error() != 0; });
  };
  tools::Replay replay(observers, options.log);
  replay.Run(trace.Events(!files.empty()), has_failed);
  out.Flush();
  for (ObserverFile& file : files) file.file.Flush();
  for (const ObserverFile& file : files) {
    if (file.file.error() != 0) return CannotWrite(file.name, file.file.error());
  }
  if (out.error() != 0) return CannotWrite("to standard output", out.error());
  if (SayDivergence(replay, trace) != 0) return kExitNotRight;
  return options.findings && findings.count > 0 ? kExitNotRight : 0;
} catch (const BadUsage& error) {
  std::cerr << "sensorvela-replay: " << error.what() << '\n';
  return kExitBadInput;
} catch (const tools::TraceError& error) {
  std::cerr << error.what() << '\n';
  return kExitBadInput;
}

}  // namespace

int main(int argc, char** argv) try {
  tools::OccupyStandardStreams();
  // Writing to a closed pipe then fails like any other write.
  std::signal(SIGPIPE, SIG_IGN);
  std::ios::sync_with_stdio(false);

  Options options;
  CLI::App app;
  tools::AddOptions(app, options);
  try {
    app.parse(argc, argv);
  } catch (const CLI::RequiredError& error) {
    // Without TRACE an unknown option is the likelier mistake.
    const std::vector<std::string> unknown = app.remaining();
    unknown.empty() ? app.exit(error) : app.exit(CLI::ExtrasError(unknown));
    return kExitBadInput;
  } catch (const CLI::ParseError& error) {
    if (app.exit(error) != 0) return kExitBadInput;
    return std::cout.flush() ? 0 : CannotWrite("to standard output", errno);
  }
  return Replay(options);
} catch (const std::system_error& error) {
  std::fprintf(stderr, "sensorvela-replay: cannot start a thread: %s\n",
               error.code().message().c_str());
  return kExitFailed;
} catch (const std::exception& error) {
  std::fprintf(stderr, "sensorvela-replay: %s\n", error.what());
  return kExitFailed;
}
