// The atoms and blocked errors that the picture shows.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "tools/facts/run_observer.h"
#include "tools/picture/thinned_list.h"
#include "tools/text/atom_json.h"
#include "tools/text/names.h"

namespace sensorvela::tools {

/// Keeps the atoms of each outcome in a list of its own. Equal ones of an instant are kept as one,
/// with their number; in a long list, neighbours that events of one kind queued become one.
class AtomList {
 public:
  using Instant = RunObserver::Instant;

  /// `names` must outlive the list.
  explicit AtomList(const SensorNames& names) : names_(names) {}

  void Add(Instant at, const AtomFact& atom);
  void AddBlocked(Instant at, const Cause& cause) { AddLost(kBlocked, at, "", cause); }

  /// An object with the lists "delivered", "failed", "dropped" and "blocked", and the "texts" to
  /// which their entries refer by index. Instants are counted from `begin`. An entry has its
  /// instant, its name, its values, how often it came, and its origin: the instant, the event and
  /// the line. One for several different atoms has the last one's instant at its end, and neither
  /// values nor more of the origin than the event.
  Json ToJson(Instant begin) const;

 private:
  enum List : std::uint8_t { kDelivered, kFailed, kDropped, kBlocked };

  /// Why an atom was queued.
  struct Origin {
    Instant at = {};
    std::string_view what;
    std::size_t line_number = 0;

    bool operator==(const Origin&) const = default;
  };

  struct Entry : Occurrence {
    std::string name;
    std::string values;
    Origin origin;
    bool is_several = false;

    bool IsLike(const Entry& other) const { return origin.what == other.origin.what; }
    void Absorb(const Entry& next);
  };

  /// `why`: the reason of a drop.
  void AddLost(List which, Instant at, std::string name, const Cause& cause,
               const std::string& why = "");

  static constexpr std::size_t kMaxDelivered = 6000;
  static constexpr std::size_t kMaxLost = 2000;

  const SensorNames& names_;
  std::array<ThinnedList<Entry>, 4> lists_ = {
      ThinnedList<Entry>(kMaxDelivered), ThinnedList<Entry>(kMaxLost), ThinnedList<Entry>(kMaxLost),
      ThinnedList<Entry>(kMaxLost)};
};

}  // namespace sensorvela::tools
