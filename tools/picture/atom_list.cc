#include "tools/picture/atom_list.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include <sensorvela/testkit/stats_service.h>

#include "tools/facts/captions.h"
#include "tools/picture/short_text.h"
#include "tools/report/value_text.h"

namespace sensorvela::tools {
namespace {

/// The event's sensor and its other fields.
std::string EventText(const Cause& cause, const SensorNames& names) {
  if (!cause.event) return "";
  std::string text;
  if (cause.sensor()) text = names.Label(*cause.sensor()) + ' ';
  for (const auto& [name, value] : cause.event->fields.items()) {
    if (!name.starts_with("sensor_")) text += name + '=' + Dump(value, true) + ' ';
  }
  if (!text.empty()) text.pop_back();
  return text;
}

}  // namespace

void AtomList::Entry::Absorb(const Entry& next) {
  is_several = true;
  if (name != next.name) name.clear();
  values.clear();
}

void AtomList::Add(Instant at, const AtomFact& atom) {
  if (atom.dropped) {
    AddLost(kDropped, at, atom.name, atom.cause, Words(WordOf(*atom.dropped)));
    return;
  }
  const bool is_taken = atom.fate == BufferFate::kTaken;
  const bool succeeded = atom.answer == testkit::Answer::kOk;
  ThinnedList<Entry>& list = lists_.at(!is_taken ? kDropped : succeeded ? kDelivered : kFailed);
  Entry entry = {{at, at}, atom.name, "", {atom.cause.at, atom.cause.what(), atom.cause.line()}};
  if (list.Merge(entry)) return;
  entry.values = FoldedValues(atom, names_);
  if (atom.answer == testkit::Answer::kNoStatus) {
    entry.values += " (the report ended without a status)";
  }
  if (!is_taken) entry.values += std::string(" (") + CaptionOf(atom.fate) + ")";
  entry.values = ShortText(entry.values);
  const Entry* const last = list.last();
  if (last != nullptr && last->from == at && last->name == entry.name &&
      last->values == entry.values && last->origin == entry.origin) {
    list.RepeatLast();
  } else {
    list.Add(std::move(entry));
  }
}

void AtomList::AddLost(List which, Instant at, std::string name, const Cause& cause,
                       const std::string& why) {
  ThinnedList<Entry>& list = lists_.at(which);
  Entry entry = {{at, at}, std::move(name), "", {cause.at, cause.what(), cause.line()}};
  // One event can be blocked a million times.
  if (list.last() != nullptr && list.last()->from == at && list.last()->origin == entry.origin) {
    list.RepeatLast();
  } else if (!list.Merge(entry)) {
    entry.values = ShortText(EventText(cause, names_) + (why.empty() ? "" : " (" + why + ')'));
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

}  // namespace sensorvela::tools
