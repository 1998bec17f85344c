// A stats service that keeps the atoms that it receives and answers reports as planned.
#pragma once

#include <aidl/android/frameworks/stats/BnStats.h>

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <vector>

#include "../platform/sync.h"

#include "../platform/thread_annotations.h"

namespace sensorvela::testkit {

/// The name under which an engine looks its stats service up.
inline constexpr char kStatsInstance[] = "android.frameworks.stats.IStats/default";

/// The service's answer to a report: success, an error, or no status at all.
enum class Answer { kOk, kError, kNoStatus };

/// Made with `ndk::SharedRefBase::make<StatsService>()`, like every service. On a workstation it is
/// registered with `simulated::RegisterService(kStatsInstance, service)`, on a device with
/// `AServiceManager_addService(service->asBinder().get(), kStatsInstance)`. Every operation may be
/// called from any thread.
class StatsService : public aidl::android::frameworks::stats::BnStats {
 public:
  using VendorAtom = aidl::android::frameworks::stats::VendorAtom;

  /// Called for each atom after the service has stored it and before it answers, on the thread that
  /// reports it and with no lock of the service held. The report returns only after this call.
  using OnReport = std::function<void(const VendorAtom& atom, Answer answer)>;

  explicit StatsService(OnReport on_report = nullptr);

  /// Plans `answer` for the next `reports` reports that have no planned answer yet. The service
  /// answers `kOk` to reports without a planned answer.
  void AnswerNext(std::int64_t reports, Answer answer) SENSORVELA_EXCLUDES(mutex_);

  /// The atoms received since the last call, in order, whatever the service answered.
  std::vector<VendorAtom> TakeAtoms() SENSORVELA_EXCLUDES(mutex_);

  /// Waits, without a time limit, until `count` atoms have been received since the service's
  /// construction.
  void WaitForAtoms(std::size_t count) SENSORVELA_EXCLUDES(mutex_);

  ndk::ScopedAStatus reportVendorAtom(const VendorAtom& atom) override SENSORVELA_EXCLUDES(mutex_);

 private:
  struct PlannedAnswers {
    std::int64_t reports;
    Answer answer;
  };

  Answer TakeAnswer() SENSORVELA_REQUIRES(mutex_);

  const OnReport on_report_;
  platform::Mutex mutex_;
  std::condition_variable_any received_;
  std::vector<VendorAtom> atoms_ SENSORVELA_GUARDED_BY(mutex_);
  std::size_t count_ SENSORVELA_GUARDED_BY(mutex_) = 0;
  std::deque<PlannedAnswers> planned_ SENSORVELA_GUARDED_BY(mutex_);
};

}  // namespace sensorvela::testkit

#include "../platform/thread_annotations_end.h"
