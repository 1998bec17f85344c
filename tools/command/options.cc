#include "tools/command/options.h"

#include <cstddef>
#include <string>
#include <vector>

#include "tools/command/file_outputs.h"
#include "tools/command/manual.h"
#include "tools/trace/event_kinds.h"

namespace sensorvela::tools {
namespace {

constexpr char kAbout[] =
    "Replays a trace of sensor-stack events and prints what the stats service received.\n"
    "\n"
    "Runs the events of TRACE through a SensorVela engine, in virtual time, and prints each atom\n"
    "that the stats service received, and at the end each sensor's samples by latency.";

constexpr char kTraceHelp[] =
    "TRACE has one JSON object a line, in the order of time: at_ns, event, and the fields of its\n"
    "kind; those in brackets may be left out. gzip may have compressed it. It is read twice, so "
    "what\n"
    "comes from a pipe is kept in memory. docs/trace-format.md has the details and examples.\n"
    "\n"
    "Events:\n";

constexpr char kExitHelp[] =
    "\nExit status:\n"
    "  0  the trace was run or, with --check, is right\n"
    "  1  the output could not be written, the reader of a pipe has gone (nothing is said then, "
    "and\n"
    "     the files are written), or the run failed\n"
    "  2  bad usage, or a trace that is not as described, with one line FILE:LINE: ... that says\n"
    "     why; with --check also a recording that was cut\n"
    "  3  the run is not as it should be: with --findings something looks wrong; or the replay of "
    "a\n"
    "     recording differs from it, which a line of the same form says on standard error";

}  // namespace

void AddOptions(CLI::App& app, Options& options) {
  app.name("sensorvela-replay");
  app.description(kAbout);
  app.set_version_flag("--version", "sensorvela-replay " SENSORVELA_VERSION,
                       "Print the version and exit");
  app.add_option("TRACE", options.trace, "The trace file; - for standard input")
      ->required()
      ->type_name("");
  app.add_flag("--log", options.log, "Print the engine's log lines, too");
  app.add_option("--format", options.format, "What to print: columns for a reader, or JSON Lines")
      ->type_name("{text,jsonl}")
      ->check(CLI::IsMember({"text", "jsonl"}).description(""))
      ->capture_default_str();
  app.add_flag("--wide", options.wide,
               "Fold and break nothing: all values, all repeats, each line on one line");
  app.add_flag("--summary", options.summary, "Print the summary alone");
  CLI::Option* const findings = app.add_flag(
      "--findings", options.findings,
      "Print what looks wrong alone, the most severe first, and exit with 3 if there is "
      "anything");
  app.add_option("--only", options.only,
                 "Print the lines of that sensor or of that kind of atom only: a sensor's name or "
                 "HIGH/LOW, an atom's name or identifier; may be repeated")
      ->type_name("WHAT")
      ->allow_extra_args(false);
  std::vector<CLI::Option*> files;
  for (std::size_t i = 0; i < FileOutputs().size(); ++i) {
    const FileOutput& output = FileOutputs()[i];
    files.push_back(app.add_option_function<std::string>(
                           output.option,
                           [&options, i](const std::string& file) { options.files[i] = file; },
                           output.help)
                        ->type_name("FILE"));
  }
  CLI::Option* const check =
      app.add_flag("--check", options.check,
                   "Print only what is wrong with the trace, also where a recording was cut");
  check->excludes(findings);
  for (CLI::Option* const file : files) check->excludes(file);
  AddGenerateOption(app);
  app.footer(kTraceHelp + DescribeEventKinds() + kExitHelp);
}

}  // namespace sensorvela::tools
