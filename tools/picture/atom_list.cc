#include "tools/picture/atom_list.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include <sensorvela/testkit/atom_catalogue.h>

#include "tools/picture/short_text.h"
#include "tools/report/value_text.h"

namespace sensorvela::replay {
namespace {

/// The event's sensor and its other fields.
std::string EventText(TraceLine line, const SensorNames& names) {
  if (line.number == 0) return "";
  const Json event = Json::parse(line.text);
  std::string text;
  if (event.contains("sensor_high")) {
    text = names.Label({event.at("sensor_high").get<std::uint32_t>(),
                        event.at("sensor_low").get<std::int32_t>()}) +
           ' ';
  }
  for (const auto& [name, value] : event.items()) {
    if (name == "at_ns" || name == "event" || name.starts_with("sensor_")) continue;
    text += name + '=' + Dump(value, true) + ' ';
  }
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

}  // namespace

void AtomList::Entry::Absorb(const Entry& next) {
  is_several = true;
  if (name != next.name) name.clear();
  values.clear();
}

void AtomList::AddReported(Instant at, const SensorVela::VendorAtom& atom, Answer answer,
                           const Cause& cause) {
  ThinnedList<Entry>& list = lists_.at(answer == Answer::kOk ? kDelivered : kFailed);
  Entry entry = {{at, at}, testkit::AtomName(atom), "", {cause.at, cause.what, cause.line.number}};
  if (list.Merge(entry)) return;
  entry.values = FoldedValues(atom, names_);
  if (answer == Answer::kNoStatus) entry.values += " (the report ended without a status)";
  entry.values = ShortText(entry.values);
  const Entry* const last = list.last();
  if (last != nullptr && last->from == at && last->name == entry.name &&
      last->values == entry.values && last->origin == entry.origin) {
    list.RepeatLast();
  } else {
    list.Add(std::move(entry));
  }
}

void AtomList::AddLost(Outcome outcome, Instant at, const Cause& cause) {
  ThinnedList<Entry>& list = lists_.at(outcome);
  const bool is_named = outcome == kDropped && cause.atom_id != 0;
  Entry entry = {{at, at},
                 is_named ? testkit::AtomName(cause.atom_id) : "",
                 "",
                 {cause.at, cause.what, cause.line.number}};
  // One event can be blocked a million times.
  if (list.last() != nullptr && list.last()->from == at && list.last()->origin == entry.origin) {
    list.RepeatLast();
  } else if (!list.Merge(entry)) {
    entry.values = ShortText(EventText(cause.line, names_));
    list.Add(std::move(entry));
  }
}

Json AtomList::ToJson(Instant begin) const {
  Json texts = Json::array();
  std::map<std::string_view, std::size_t> indexes;
  const auto index = [&](std::string_view text) {
    const auto [found, is_new] = indexes.try_emplace(text, indexes.size());
    if (is_new) texts.push_back(text);
    return found->second;
  };
  const auto entry = [&](const Entry& e) {
    Json json = {(e.from - begin).count(),      index(e.name), index(e.values),     e.times,
                 (e.origin.at - begin).count(), e.origin.what, e.origin.line_number};
    if (e.is_several) json.push_back((e.to - begin).count());
    return json;
  };
  Json json;
  json["delivered"] = lists_[kDelivered].ToJson(entry);
  json["failed"] = lists_[kFailed].ToJson(entry);
  json["dropped"] = lists_[kDropped].ToJson(entry);
  json["blocked"] = lists_[kBlocked].ToJson(entry);
  json["texts"] = std::move(texts);
  return json;
}

}  // namespace sensorvela::replay
