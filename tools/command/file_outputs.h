// The files that sensorvela-replay can write beside what it prints.
#pragma once

#include <memory>
#include <ostream>
#include <span>
#include <string>

#include "tools/facts/run_observer.h"
#include "tools/trace/trace.h"

namespace sensorvela::tools {

/// One kind of file. A new kind needs only an entry in the table in file_outputs.cc.
struct FileOutput {
  const char* option;
  const char* help;
  /// Why this build has no such output; empty if it has.
  std::string (*missing)();
  /// An observer that writes to `out`, which must outlive it as `trace` must. `title` is the
  /// trace's name.
  std::unique_ptr<RunObserver> (*make)(std::ostream& out, const Trace& trace,
                                       const std::string& title);
};

std::span<const FileOutput> FileOutputs();

}  // namespace sensorvela::tools
