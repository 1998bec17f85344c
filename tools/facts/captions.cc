#include "tools/facts/captions.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <numeric>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/counting_rules.h"

namespace sensorvela::tools {
namespace {

constexpr char kLostInBuffer[] = "lost in buffer";
constexpr char kLeftInBuffer[] = "left in buffer";

std::string Share(std::uint64_t count, std::uint64_t total) {
  if (count == 0) return "";
  const double percent = 100 * static_cast<double>(count) / static_cast<double>(total);
  if (percent < 0.1) return "<0.1 %";
  if (percent >= 99.95 && count < total) return ">99.9 %";
  std::array<char, 16> text;
  std::snprintf(text.data(), text.size(), "%.1f %%", percent);
  return text.data();
}

}  // namespace

std::vector<SummaryCount> CountsOf(const Summary& summary) {
  std::vector<SummaryCount> counts = {
      {"delivered", summary.delivered, "atoms that the stats service took"},
      {"failed", summary.failed, "atoms whose report failed or ended without a status", true},
      {"dropped", summary.dropped, "atoms that never reached the stats service", true}};
  if (summary.had_process) {
    counts.push_back({"did not fit", summary.did_not_fit,
                      "of the failed, atoms for which the service's buffer had no room", true});
    counts.push_back({kLeftInBuffer, summary.left_in_buffer,
                      "atoms that the service had not taken when the run ended"});
  }
  if (summary.had_process || !summary.lost_in_buffer) {
    counts.push_back({kLostInBuffer, summary.lost_in_buffer,
                      summary.lost_in_buffer
                          ? "atoms that the service's process had not taken when it died"
                          : "unknown: a recording does not tell what became of a sent atom",
                      true});
  }
  counts.push_back({"blocked by the cap", summary.blocked_by_cap,
                    "errors after the first " + std::to_string(kErrorCapPerCycle) +
                        " of their kind in a cycle"});
  counts.push_back({"cycles ended", summary.cycles_ended,
                    summary.cycles_ended ? "" : "unknown: there is no diagnostics supplier"});
  counts.push_back(
      {"findings", summary.findings.size(),
       summary.findings.empty() ? "nothing looks wrong" : "what looks wrong: --findings lists it"});
  return counts;
}

const char* CaptionOf(BufferFate fate) {
  return fate == BufferFate::kLost ? kLostInBuffer : kLeftInBuffer;
}

std::string_view WordOf(AbsenceReason reason) {
  if (reason == AbsenceReason::kNotRegistered) return "not_registered";
  return reason == AbsenceReason::kRefused ? "refused" : "refused_or_failed";
}

std::string_view WordOf(DropReason reason) {
  switch (reason) {
    case DropReason::kRefused:
      return WordOf(AbsenceReason::kRefused);
    case DropReason::kRefusedOrFailed:
      return WordOf(AbsenceReason::kRefusedOrFailed);
    case DropReason::kLookupFailed:
      return "lookup_failed";
    case DropReason::kStillQueued:
      return "still_queued";
  }
}

std::string Words(std::string_view word) {
  std::string words(word);
  std::ranges::replace(words, '_', ' ');
  return words;
}

std::vector<std::pair<const char*, std::uint64_t>> ReasonsOf(const NotReported& not_reported) {
  std::vector<std::pair<const char*, std::uint64_t>> reasons = {
      {"not disabled yet", not_reported.not_disabled},
      {"enabled anew before a disable", not_reported.re_enabled},
      {"sampled while not enabled", not_reported.while_disabled},
      {"report lost", not_reported.report_lost}};
  std::erase_if(reasons, [](const auto& reason) { return reason.second == 0; });
  return reasons;
}

std::string BandLimitMs(std::size_t band) {
  const std::int64_t limit_ns =
      kLatencyBandLimitsNs.at(std::min(band, kLatencyBandLimitsNs.size() - 1));
  std::array<char, 16> text;
  std::snprintf(text.data(), text.size(), "%g", static_cast<double>(limit_ns) / 1e6);
  return text.data();
}

std::array<std::string, kLatencyBands> BandCaptions() {
  std::array<std::string, kLatencyBands> captions;
  for (std::size_t i = 0; i < captions.size(); ++i) {
    captions[i] = (IsLastBand(i) ? "over " : "up to ") + BandLimitMs(i) + " ms";
  }
  return captions;
}

std::array<std::string, kLatencyBands> Shares(
    const std::array<std::uint64_t, kLatencyBands>& bands) {
  const auto total = std::accumulate(bands.begin(), bands.end(), std::uint64_t{0});
  std::array<std::string, kLatencyBands> shares;
  std::ranges::transform(bands, shares.begin(),
                         [total](std::uint64_t count) { return Share(count, total); });
  return shares;
}

}  // namespace sensorvela::tools
