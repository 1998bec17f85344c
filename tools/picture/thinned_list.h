// A list of what happened in a run, which stays short however long the run is.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
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
    Item* const other = Neighbour(item);
    if (other == nullptr) return false;
    total_ += item.times;
    Join(*other, item);
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
  /// The last item of the kind in the slot of `item`.
  Item* Neighbour(const Item& item) {
    if (slot_ns_ == 0) return nullptr;
    const std::int64_t slot = item.from.count() / slot_ns_;
    for (auto other = items_.rbegin(); other != items_.rend(); ++other) {
      if (other->from.count() / slot_ns_ != slot) return nullptr;
      if (other->IsLike(item)) return &*other;
    }
    return nullptr;
  }

  void Put(Item item) {
    if (Item* const other = Neighbour(item)) {
      Join(*other, item);
    } else {
      items_.push_back(std::move(item));
    }
  }

  static void Join(Item& item, const Item& next) {
    item.to = std::max(item.to, next.to);
    item.times += next.times;
    item.Absorb(next);
  }

  static constexpr std::int64_t kMaxSlotNs = std::int64_t{1} << 62;

  std::size_t limit_;
  std::vector<Item> items_;
  std::uint64_t total_ = 0;
  /// 0 while every item is as it was added.
  std::int64_t slot_ns_ = 0;
};

}  // namespace sensorvela::tools
