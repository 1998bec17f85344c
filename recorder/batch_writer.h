// Turns batches into the text of a trace, and writes it to a file.
#pragma once

#include <optional>
#include <string>

#include "recorder/batch.h"
#include "recorder/recording_file.h"
#include "recorder/sample_lists.h"

namespace sensorvela::recorder {

/// Used by one thread.
class BatchWriter {
 public:
  // Each of these returns what is wrong, or nothing.

  std::optional<std::string> Create(const std::string& path) { return file_.Create(path); }
  std::optional<std::string> Write(const Batch& batch);
  std::optional<std::string> Close() { return file_.Close(); }

 private:
  RecordingFile file_;
  SampleLists lists_;
  std::string text_;
};

}  // namespace sensorvela::recorder
