#include "recorder/batch_writer.h"

#include <cstddef>
#include <optional>
#include <string>

namespace sensorvela::recorder {

std::optional<std::string> BatchWriter::Write(const Batch& batch) {
  const auto write_text = [&]() -> std::optional<std::string> {
    const auto error = file_.Write(text_);
    text_.clear();
    return error;
  };
  std::size_t sample = 0;
  std::size_t text_begin = 0;
  // The samples up to `end`, as lists.
  const auto write_samples = [&](std::size_t end) -> std::optional<std::string> {
    for (; sample < end; ++sample) {
      if (lists_.Add(batch.samples()[sample])) continue;
      lists_.WriteTo(text_);
      lists_.Add(batch.samples()[sample]);
      if (const auto error = write_text()) return error;
    }
    if (!lists_.empty()) lists_.WriteTo(text_);
    return write_text();
  };
  for (const Batch::Line& line : batch.lines()) {
    if (const auto error = write_samples(line.samples_before)) return error;
    text_ += batch.text().substr(text_begin, line.text_end - text_begin);
    text_begin = line.text_end;
  }
  if (const auto error = write_samples(batch.samples().size())) return error;
  return file_.Flush();
}

}  // namespace sensorvela::recorder
