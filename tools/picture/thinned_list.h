// A list of what happened in a run, which stays short however long the run is.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include <sensorvela/platform/simulated/virtual_time.h>

#include "tools/text/atom_json.h"

namespace sensorvela::tools {

/// Something that happened once, or several neighbours of one kind that the picture shows as one.
struct Occurrence {
  using Instant = simulated::VirtualTime::Instant;

  Instant from = {};
  Instant to = {};
  std::uint64_t times = 1;

  /// Whether both are of one kind. An item type with kinds hides this.
  bool IsLike(const Occurrence& /*other*/) const { return true; }
  /// Merges the item type's own values. A type that has some hides this.
  void Absorb(const Occurrence& /*next*/) {}

  /// For the file: the instant from `begin` on, `values` and, for several, their number and the
  /// last one's instant.
  Json MarkToJson(Instant begin, const std::vector<Json>& values) const {
    Json json = {(from - begin).count()};
    for (const Json& value : values) json.push_back(value);
    if (times > 1) json.insert(json.end(), {times, (to - begin).count()});
    return json;
  }

  /// For the file: both ends from `begin` on, `values` and, for several, their number.
  Json SpanToJson(Instant begin, const std::vector<Json>& values = {}) const {
    Json json = {(from - begin).count(), (to - begin).count()};
    for (const Json& value : values) json.push_back(value);
    if (times > 1) json.push_back(times);
    return json;
  }
};

/// An occurrence of that kind, with a number, which is the sum where several are one.
struct Counted : Occurrence {
  std::string_view kind;
  std::uint64_t number = 0;

  bool IsLike(const Counted& other) const { return kind == other.kind; }
  void Absorb(const Counted& next) { number += next.number; }
};

/// Keeps at most `limit` items. Where more are added, items of one kind that begin in the same slot
/// of time become one; the slots are of one width for the whole run, as narrow as the limit allows.
///
/// `Item` is an `Occurrence`, or derives from it and may hide its functions. Items are added in the
/// order of `from`.
template <typename Item>
class ThinnedList {
 public:
  explicit ThinnedList(std::size_t limit) : limit_(limit) {}

  void Add(Item item) {
    total_ += item.times;
    Put(std::move(item));
    ThinTo(limit_);
  }

  /// Adds the item if it becomes part of one that is there.
  bool Merge(const Item& item) {
    if (!Join(item)) return false;
    total_ += item.times;
    return true;
  }

  /// Counts the last item, to which another one is equal, once more.
  void RepeatLast() {
    ++items_.back().times;
    ++total_;
  }

  /// Null if there is none.
  const Item* last() const { return items_.empty() ? nullptr : &items_.back(); }

  void ThinTo(std::size_t limit) {
    while (items_.size() > limit && slot_ns_ < kMaxSlotNs) {
      slot_ns_ = std::max<std::int64_t>(2 * slot_ns_, 1);
      for (Item& item : std::exchange(items_, {})) Put(std::move(item));
    }
  }

  /// The items as `convert` has them, how often all of them came, and whether neighbours are one.
  template <typename Convert>
  Json ToJson(const Convert& convert) const {
    Json list = Json::array();
    for (const Item& item : items_) list.push_back(convert(item));
    return {{"items", std::move(list)}, {"total", total_}, {"thinned", slot_ns_ > 0}};
  }

 private:
  /// Makes `next` a part of the last item of its kind in its slot; false if there is none.
  bool Join(const Item& next) {
    if (slot_ns_ == 0) return false;
    const std::int64_t slot = next.from.count() / slot_ns_;
    for (auto item = items_.rbegin(); item != items_.rend(); ++item) {
      if (item->from.count() / slot_ns_ != slot) return false;
      if (!item->IsLike(next)) continue;
      item->to = std::max(item->to, next.to);
      item->times += next.times;
      item->Absorb(next);
      return true;
    }
    return false;
  }

  void Put(Item item) {
    if (!Join(item)) items_.push_back(std::move(item));
  }

  static constexpr std::int64_t kMaxSlotNs = std::int64_t{1} << 62;

  std::size_t limit_;
  std::vector<Item> items_;
  std::uint64_t total_ = 0;
  /// 0 while every item is as it was added.
  std::int64_t slot_ns_ = 0;
};

}  // namespace sensorvela::tools
