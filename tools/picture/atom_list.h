// The atoms and blocked errors that the picture shows.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include <sensorvela/engine/sensor_vela.h>

#include "tools/picture/bounded_list.h"
#include "tools/run/run_observer.h"
#include "tools/text/atom_json.h"
#include "tools/text/names.h"

namespace sensorvela::replay {

/// Keeps the first atoms of each outcome. Equal ones of an instant are kept as one, with their
/// number.
class AtomList {
 public:
  using Instant = RunObserver::Instant;

  /// Why an atom was queued, without the text of the event's line.
  struct Origin {
    Instant at = {};
    std::string_view what;
    std::size_t line_number = 0;

    bool operator==(const Origin&) const = default;
  };

  /// `names` must outlive the list.
  explicit AtomList(const SensorNames& names) : names_(names) {}

  void AddReported(Instant at, const SensorVela::VendorAtom& atom, Answer answer,
                   const Origin& origin);
  void AddDropped(Instant at, const Cause& cause) { AddLost(kDropped, at, cause); }
  void AddBlocked(Instant at, const Cause& cause) { AddLost(kBlocked, at, cause); }

  /// An object with the lists "delivered", "failed", "dropped" and "blocked", and the "texts" to
  /// which their entries refer by index. Instants are counted from `begin`. An entry has its
  /// instant, its name, its values, how often it came, and its origin: the instant, the event and
  /// the line.
  Json ToJson(Instant begin) const;

 private:
  enum Outcome : std::uint8_t { kDelivered, kFailed, kDropped, kBlocked };

  struct Entry {
    Instant at = {};
    std::size_t name = 0;
    std::size_t values = 0;
    Origin origin;
    std::uint64_t times = 1;
  };

  void AddLost(Outcome outcome, Instant at, const Cause& cause);
  void Add(Outcome outcome, const Entry& entry);
  /// The index of the text, which is cut if it is too long.
  std::size_t IndexOf(const std::string& text);

  static constexpr std::size_t kMaxDelivered = 4000;
  static constexpr std::size_t kMaxLost = 2000;

  const SensorNames& names_;
  std::array<BoundedList<Entry>, 4> lists_ = {
      BoundedList<Entry>(kMaxDelivered), BoundedList<Entry>(kMaxLost), BoundedList<Entry>(kMaxLost),
      BoundedList<Entry>(kMaxLost)};
  std::map<std::string, std::size_t> texts_;
};

}  // namespace sensorvela::replay
