// What all outputs call a run's counts and bands, and how they round a share.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/facts/run_observer.h"

namespace sensorvela::tools {

struct SummaryCount {
  const char* what;
  /// None if it is not known.
  std::optional<std::uint64_t> count;
  /// May be empty.
  std::string meaning;
  /// It counts atoms that are lost.
  bool is_loss = false;
};

/// The counts of a run, in the order in which they are shown. Those of a service's buffer are left
/// out of a run in which it had no process of its own.
std::vector<SummaryCount> CountsOf(const Summary& summary);

/// What became of an atom that its buffer kept: "lost in buffer" or "left in buffer".
const char* CaptionOf(BufferFate fate);

/// Why the service is away: "not_registered". Words in JSON Lines; `Words` makes them text.
std::string_view WordOf(AbsenceReason reason);

/// Why an atom is dropped: "still_queued".
std::string_view WordOf(DropReason reason);

/// "still queued" for "still_queued".
std::string Words(std::string_view word);

/// The reasons for which a sensor's samples are in no report, with their counts; those without any
/// are left out.
std::vector<std::pair<const char*, std::uint64_t>> ReasonsOf(const NotReported& not_reported);

/// The limit of a latency band in milliseconds, "2.5"; of the last one, which has none, the limit
/// of the band before.
std::string BandLimitMs(std::size_t band);

/// Whether the band is the last one, which has no limit.
inline bool IsLastBand(std::size_t band) { return band == kLatencyBands - 1; }

/// "up to 2.5 ms", and for the last one "over 20 ms".
std::array<std::string, kLatencyBands> BandCaptions();

/// The share of each band in all of them, with one decimal: "12.3 %"; "<0.1 %" where that would be
/// 0, ">99.9 %" where it would be 100 although the band has not all, and empty for an empty band.
/// The page of the picture rounds by the same rule (picture/page/readout.js).
std::array<std::string, kLatencyBands> Shares(
    const std::array<std::uint64_t, kLatencyBands>& bands);

}  // namespace sensorvela::tools
