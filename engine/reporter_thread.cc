// The reporter thread: sends the queued atoms, sleeps until more are queued, and ends a cycle if
// the deadline has passed after a sleep.
#include <android/log.h>

#include <deque>

#include "engine/log_lines.h"
#include "engine/log_tag.h"
#include "engine/sensor_vela.h"
#include "engine/stats_service.h"

using sensorvela::platform::MonotonicClock;
using sensorvela::platform::MutexLock;

void SensorVela::RunReporterThread() {
  sensorvela::platform::NameThisThread(sensorvela::kReporterThreadName);
  // The wait for the service, however long, counts towards the first cycle. Only a cycle's end
  // moves the deadline.
  MonotonicClock::time_point deadline = MonotonicClock::now() + kCyclePeriod;
  WaitForStatsService();
  while (!StopRequested()) {
    DrainAtomQueue();

    bool cycle_ended = false;
    {
      const MutexLock lock(queue_mutex_);
      if (atom_queue_.empty() && !stop_requested_) {
        queue_cv_.WaitUntil(queue_mutex_, deadline);
        // Also after a notification: an atom that arrives at the deadline does not delay the
        // cycle's end.
        cycle_ended = MonotonicClock::now() >= deadline;
      }
    }
    if (cycle_ended) {
      deadline = MonotonicClock::now() + kCyclePeriod;
      EndCycle();
    }
  }
}

void SensorVela::EndCycle() {
  {
    decltype(error_counts_) counts;  // Freed after the lock is released.
    const MutexLock lock(error_counts_mutex_);
    counts.swap(error_counts_);
  }
  UploadDiagnostics();
}

bool SensorVela::StopRequested() {
  const MutexLock lock(queue_mutex_);
  return stop_requested_;
}

void SensorVela::DrainAtomQueue() {
  std::deque<VendorAtom> batch;  // Freed after `service` is released.
  // Has the deque allocate its first block, which the queue gets: the callers that queue the next
  // atoms need not allocate it with the lock held.
  batch.emplace_back();
  batch.pop_back();
  {
    const MutexLock lock(queue_mutex_);
    batch.swap(atom_queue_);
  }

  const auto service = sensorvela::LookUpStatsService(stats_service_name_);
  if (service == nullptr) {
    __android_log_print(ANDROID_LOG_ERROR, sensorvela::kLogTag, sensorvela::kAtomsDroppedLine);
    return;
  }
  for (const VendorAtom& atom : batch) {
    if (!sensorvela::ReportAtom(*service, atom)) {
      __android_log_print(ANDROID_LOG_ERROR, sensorvela::kLogTag, sensorvela::kReportFailedLine,
                          atom.atomId);
    }
  }
}
