#include "tools/picture/picture_observer.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>

#include "tools/facts/captions.h"
#include "tools/picture/atom_list.h"
#include "tools/picture/page.h"
#include "tools/picture/sensor_lane.h"
#include "tools/picture/short_text.h"
#include "tools/picture/thinned_list.h"
#include "tools/picture/time_bins.h"
#include "tools/report/finding_text.h"
#include "tools/report/sensor_json.h"
#include "tools/text/atom_json.h"
#include "tools/text/printable_text.h"
#include "tools/text/sensor_order.h"

namespace sensorvela::tools {
namespace {

constexpr std::size_t kMaxSensors = 64;
constexpr std::size_t kMaxItems = 4000;

using Instant = RunObserver::Instant;

/// Replaces what could end the script element that has the JSON.
std::string WithoutMarkup(const std::string& json) {
  std::string safe;
  for (const char character : json) {
    if (character == '<') {
      safe += "\\u003c";
    } else if (character == '>') {
      safe += "\\u003e";
    } else if (character == '&') {
      safe += "\\u0026";
    } else {
      safe += character;
    }
  }
  return safe;
}

std::string_view StepName(ReporterStep step) {
  if (step == ReporterStep::kUploads) return "uploads diagnostics";
  return step == ReporterStep::kSends ? "sends" : "drops";
}

class PictureObserver : public RunObserver {
 public:
  PictureObserver(std::ostream& out, const SensorNames& names, std::string_view title,
                  Instant begin, Instant end)
      : out_(out),
        names_(names),
        title_(title),
        begin_(begin),
        bins_(BinsFor(begin, end)),
        atoms_(names) {}

  void OnAtom(Instant at, const AtomFact& atom) override { atoms_.Add(at, atom); }

  void OnErrorBlocked(Instant at, const Cause& cause, std::string_view /*text*/) override {
    atoms_.AddBlocked(at, cause);
  }

  void OnReporterStep(Instant at, ReporterStep step, std::size_t atoms) override {
    if (step == ReporterStep::kUploads) cycle_ends_.Add({at, at});
    steps_.Add({{at, at}, StepName(step), atoms});
  }

  void OnReporterStay(Instant from, Instant to, ReporterState state, std::size_t atoms) override {
    if (to == from) return;
    stays_.Add({{from, to}, state == ReporterState::kAsleep ? "asleep" : "waiting", atoms});
  }

  // A sensor has its lane from its first event on, which need not be a sample.
  void OnSensorEnabled(Instant /*at*/, SensorVela::SensorId sensor) override { LaneOf(sensor); }

  void OnSensorDisabled(Instant at, SensorVela::SensorId sensor,
                        std::uint64_t samples_since_enable) override {
    if (SensorLane* const lane = LaneOf(sensor)) lane->Disable(at, samples_since_enable);
  }

  void OnSensorSpan(SensorVela::SensorId sensor, const SensorSpan& span) override {
    if (SensorLane* const lane = LaneOf(sensor)) lane->AddSpan(span);
  }

  void OnSample(Instant at, SensorVela::SensorId sensor, const SampleFact& sample) override {
    if (SensorLane* const lane = LaneOf(sensor)) lane->Sample(at, sample);
  }

  void OnOutage(const Outage& outage) override {
    absences_.Add({{outage.from, outage.to}, WordOf(outage.reason)});
  }

  void OnSuspended(Instant at, std::chrono::nanoseconds duration) override {
    suspended_.Add({at, at + duration});
  }

  void OnNote(Instant at, std::string_view text) override {
    notes_.Add({{at, at}, ShortText(Printable(text))});
  }

  void OnRunEnd(Instant at, const Summary& summary) override {
    for (const SensorSummary& sensor : summary.sensors) {
      if (sensor.last_span) OnSensorSpan(sensor.sensor, *sensor.last_span);
    }
    for (auto& [id, lane] : lanes_) lane.Finish(lanes_.size());
    out_ << kPageBeforeData << WithoutMarkup(Dump(ToJson(at, summary), false)) << kPageAfterData;
  }

 private:
  struct Note : Occurrence {
    std::string text;
  };

  /// Null if there are too many sensors.
  SensorLane* LaneOf(SensorVela::SensorId sensor) {
    const auto found = lanes_.find(sensor);
    if (found != lanes_.end()) return &found->second;
    if (lanes_.size() == kMaxSensors) return nullptr;
    return &lanes_.try_emplace(sensor, bins_).first->second;
  }

  Json ToJson(Instant end, const Summary& summary) const {
    const auto offset = [this](Instant at) { return (at - begin_).count(); };
    const auto interval = [this](const Occurrence& i) { return i.SpanToJson(begin_); };
    const auto absence = [this](const Counted& a) { return a.SpanToJson(begin_, {a.kind}); };
    const auto cycle_end = [&](const Occurrence& c) { return offset(c.from); };
    const auto stay = [this](const Counted& s) { return s.SpanToJson(begin_, {s.kind, s.number}); };
    const auto step = [this](const Counted& s) { return s.MarkToJson(begin_, {s.kind, s.number}); };
    const auto note = [this](const Note& n) { return n.MarkToJson(begin_, {n.text}); };
    return {{"title", ShortText(Printable(title_))},
            {"begin_ns", std::to_string(begin_.count())},
            {"length_ns", offset(end)},
            {"bins_begin_ns", offset(bins_.begin)},
            {"bin_ns", bins_.width.count()},
            {"absences", absences_.ToJson(absence)},
            {"suspended", suspended_.ToJson(interval)},
            {"cycle_ends", cycle_ends_.ToJson(cycle_end)},
            {"stays", stays_.ToJson(stay)},
            {"steps", steps_.ToJson(step)},
            {"notes", notes_.ToJson(note)},
            {"atoms", atoms_.ToJson(begin_)},
            {"sensors", SensorsToJson(summary)},
            {"counts", CountsToJson(summary)},
            {"findings", FindingsToJson(summary)},
            {"bands", BandCaptions()}};
  }

  Json SensorsToJson(const Summary& summary) const {
    Json sensors = Json::array();
    for (const SensorSummary& sensor : summary.sensors) {
      const auto lane = lanes_.find(sensor.sensor);
      if (lane == lanes_.end()) continue;
      Json json = {{"label", ShortText(names_.Label(sensor.sensor))},
                   {"samples", sensor.arrived.counts.samples},
                   {"not_reported", sensor.not_reported.Total()},
                   {"not_reported_by_reason", tools::ToJson(sensor.not_reported)},
                   {"late", sensor.arrived.counts.late},
                   {"bands", sensor.arrived.counts.bands},
                   {"shares", Shares(sensor.arrived.counts.bands)},
                   {"arrived", tools::ToJson(sensor.arrived)}};
      json.update(lane->second.ToJson(begin_));
      sensors.push_back(std::move(json));
    }
    const std::size_t omitted = summary.sensors.size() - sensors.size();
    return {{"items", std::move(sensors)}, {"omitted", omitted}};
  }

  Json FindingsToJson(const Summary& summary) const {
    Json findings = Json::array();
    for (const Finding& finding : summary.findings) {
      Json json = tools::ToJson(finding, names_);
      json["text"] = ShortText(FindingText(finding, names_));
      json["at"] = (finding.at - begin_).count();
      findings.push_back(std::move(json));
    }
    return findings;
  }

  static Json CountsToJson(const Summary& summary) {
    Json counts = Json::array();
    for (const auto& [what, count, meaning, is_loss] : CountsOf(summary)) {
      counts.push_back({what, count ? Json(*count) : Json(), meaning, is_loss});
    }
    return counts;
  }

  std::ostream& out_;
  const SensorNames& names_;
  const std::string title_;
  const Instant begin_;
  const TimeBins bins_;

  AtomList atoms_;

  /// Their numbers are the atoms that the reporter thread held while it waited, or sent or dropped.
  ThinnedList<Counted> stays_{kMaxItems};
  ThinnedList<Counted> steps_{kMaxItems};
  ThinnedList<Occurrence> cycle_ends_{kMaxItems};

  /// Of the kinds of their reasons.
  ThinnedList<Counted> absences_{kMaxItems};
  ThinnedList<Occurrence> suspended_{kMaxItems};
  ThinnedList<Note> notes_{kMaxItems};

  std::map<SensorVela::SensorId, SensorLane, SensorOrder> lanes_;
};

}  // namespace

bool HasPicture() { return !kPageBeforeData.empty(); }

std::unique_ptr<RunObserver> MakePictureObserver(std::ostream& out, const SensorNames& names,
                                                 std::string_view title, Instant begin,
                                                 Instant end) {
  return std::make_unique<PictureObserver>(out, names, title, begin, end);
}

}  // namespace sensorvela::tools
