#include "tools/picture/atom_list.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

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

void AtomList::AddReported(Instant at, const SensorVela::VendorAtom& atom, Answer answer,
                           const Origin& origin) {
  const Outcome outcome = answer == Answer::kOk ? kDelivered : kFailed;
  if (lists_.at(outcome).IsFull()) {
    lists_.at(outcome).Add({});
    return;
  }
  std::string values = FoldedValues(atom, names_);
  if (answer == Answer::kNoStatus) values += " (the report ended without a status)";
  Add(outcome, {at, IndexOf(testkit::AtomName(atom)), IndexOf(values), origin});
}

void AtomList::AddLost(Outcome outcome, Instant at, const Cause& cause) {
  BoundedList<Entry>& list = lists_.at(outcome);
  const Origin origin = {cause.at, cause.what, cause.line.number};
  // One event can be blocked a million times.
  if (list.last() != nullptr && list.last()->at == at && list.last()->origin == origin) {
    ++list.last()->times;
  } else if (list.IsFull()) {
    list.Add({});
  } else {
    Add(outcome, {at, IndexOf(""), IndexOf(EventText(cause.line, names_)), origin});
  }
}

void AtomList::Add(Outcome outcome, const Entry& entry) {
  BoundedList<Entry>& list = lists_.at(outcome);
  Entry* const last = list.last();
  if (last != nullptr && last->at == entry.at && last->name == entry.name &&
      last->values == entry.values && last->origin == entry.origin) {
    ++last->times;
  } else {
    list.Add(entry);
  }
}

std::size_t AtomList::IndexOf(const std::string& text) {
  return texts_.try_emplace(ShortText(text), texts_.size()).first->second;
}

Json AtomList::ToJson(Instant begin) const {
  std::vector<std::string_view> texts(texts_.size());
  for (const auto& [text, index] : texts_) texts[index] = text;
  const auto entry = [&](const Entry& e) {
    return Json::array({(e.at - begin).count(), e.name, e.values, e.times,
                        (e.origin.at - begin).count(), e.origin.what, e.origin.line_number});
  };
  return {{"texts", texts},
          {"delivered", lists_[kDelivered].ToJson(entry)},
          {"failed", lists_[kFailed].ToJson(entry)},
          {"dropped", lists_[kDropped].ToJson(entry)},
          {"blocked", lists_[kBlocked].ToJson(entry)}};
}

}  // namespace sensorvela::replay
