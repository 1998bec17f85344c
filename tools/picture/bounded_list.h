// The first items of a list that may be long.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "tools/text/atom_json.h"

namespace sensorvela::replay {

/// Keeps the first `limit` items, which bounds the picture's size, and counts the others.
template <typename T>
class BoundedList {
 public:
  explicit BoundedList(std::size_t limit) : limit_(limit) {}

  void Add(T item) {
    if (IsFull()) {
      ++omitted_;
    } else {
      items_.push_back(std::move(item));
    }
  }

  bool IsFull() const { return items_.size() == limit_; }

  /// The last item that was kept; null if there is none, or if it was not the last that was added.
  T* last() { return items_.empty() || omitted_ > 0 ? nullptr : &items_.back(); }

  /// {"items": ..., "omitted": ...}, with each item as `convert` has it.
  template <typename Convert>
  Json ToJson(const Convert& convert) const {
    Json list = Json::array();
    for (const T& item : items_) list.push_back(convert(item));
    return {{"items", std::move(list)}, {"omitted", omitted_}};
  }

 private:
  std::size_t limit_;
  std::vector<T> items_;
  std::uint64_t omitted_ = 0;
};

}  // namespace sensorvela::replay
