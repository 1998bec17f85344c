// A process of its own for a stats service, as a device has it.
#pragma once

#include <aidl/android/frameworks/stats/IStats.h>
#include <android/binder_ibinder.h>
#include <android/binder_status.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <list>
#include <memory>
#include <vector>

#include "../sync.h"

#include "../thread_annotations.h"

namespace sensorvela::simulated {

class ServiceProxy;

/// Who is told what happens to the atoms of a process. Either may be null. Called with no lock of
/// the process held.
struct ProcessObserver {
  /// A report ends with `status`, on the thread that makes it. The process has not taken the atom
  /// yet.
  std::function<void(const aidl::android::frameworks::stats::VendorAtom& atom,
                     binder_status_t status)>
      on_report = nullptr;
  /// The process has died with the atom in its buffer. Called by `Die`.
  std::function<void(const aidl::android::frameworks::stats::VendorAtom& atom)> on_lost = nullptr;
};

/// One life of the process. A report puts its atom into the process's buffer and succeeds, or fails
/// at once if the atom does not fit. The process takes the atoms in order, one at a time; an atom
/// keeps its place in the buffer until it has been taken. Nobody hears what the service answers.
///
/// A lookup of the service waits for the process to answer, too, unless the caller has a reference
/// to the service already. The process has one thread, which answers between two atoms and not
/// while it works on one.
///
/// Made with `std::make_shared` and registered with `RegisterService`. Every operation may be
/// called from any thread. Only in virtual time, which must exist for as long.
class ServiceProcess : public std::enable_shared_from_this<ServiceProcess> {
 public:
  using VendorAtom = aidl::android::frameworks::stats::VendorAtom;

  /// The room of the buffer for calls that are only sent: half of 1 MiB less 8 KiB. All senders
  /// share it.
  static constexpr std::size_t kBufferBytes = 520'192;
  /// A kernel refused a report of this size, although the buffer was empty. The largest that it
  /// takes is not known.
  static constexpr std::size_t kRefusedBytes = 500'000;

  /// The process passes each atom that it takes to `service`, on the thread that moves the time to
  /// that instant or, if it takes no time for an atom, on the thread that reports it.
  explicit ServiceProcess(std::shared_ptr<aidl::android::frameworks::stats::IStats> service,
                          ProcessObserver observer = {});
  ~ServiceProcess();
  ServiceProcess(const ServiceProcess&) = delete;
  ServiceProcess& operator=(const ServiceProcess&) = delete;

  /// How long the process works on an atom, from the next atom on, on the monotonic clock. 0 at
  /// first, and for a negative duration: it takes an atom as soon as it arrives.
  void SetTimePerAtom(std::chrono::nanoseconds duration) SENSORVELA_EXCLUDES(mutex_);

  /// The process takes no atom and answers no lookup until `GoOn`.
  void Stop() SENSORVELA_EXCLUDES(mutex_);
  void GoOn() SENSORVELA_EXCLUDES(mutex_);

  /// The process dies for good, and what is in its buffer is lost. Reports fail from now on, and
  /// the lookups that wait for it find none. It stays registered for one more lookup, which finds
  /// none either, unless another service is registered before. A caller that has a reference still
  /// finds the dead service in that lookup.
  void Die() SENSORVELA_EXCLUDES(mutex_);
  bool is_alive() const { return is_alive_; }

  /// Every lookup that waits for the process at this moment finds none, as if the process had died.
  void ReleaseLookups() SENSORVELA_EXCLUDES(mutex_);

  std::size_t AtomsInBuffer() const SENSORVELA_EXCLUDES(mutex_);
  std::size_t BytesInBuffer() const SENSORVELA_EXCLUDES(mutex_);

  // For the platform's implementation of the binder.

  /// Who wants to hear of the process's death: the recipient, and what it is told.
  struct DeathLink {
    AIBinder_DeathRecipient* recipient;
    void* cookie;
    bool operator==(const DeathLink& other) const {
      return recipient == other.recipient && cookie == other.cookie;
    }
  };

  /// The recipient is told once, on the thread that calls `Die`. False if the process is dead.
  bool AddDeathLink(DeathLink link) SENSORVELA_EXCLUDES(mutex_);
  /// False if there is no such link.
  bool RemoveDeathLink(DeathLink link) SENSORVELA_EXCLUDES(mutex_);

  /// The binder that the host has of the service: always the same while anybody has a reference.
  ndk::SpAIBinder HostBinder() SENSORVELA_EXCLUDES(mutex_);
  binder_status_t Report(const VendorAtom& atom) SENSORVELA_EXCLUDES(mutex_);
  /// Waits until the process answers; calls `before_wait` first if it has to. False if it dies.
  bool AwaitAnswer(const std::function<void()>& before_wait) SENSORVELA_EXCLUDES(mutex_);

 private:
  struct Buffered {
    VendorAtom atom;
    std::size_t bytes;
  };
  struct Question {
    bool is_over = false;
    bool is_answered = false;
  };

  /// Takes what can be taken now. `since`: when the process became free for the next atom.
  void Work(std::chrono::nanoseconds since) SENSORVELA_EXCLUDES(mutex_);
  /// Begins with the next atom. False if there is none that it can take without time.
  bool Begin(std::chrono::nanoseconds since) SENSORVELA_REQUIRES(mutex_);
  void SetAlarm() SENSORVELA_REQUIRES(mutex_);
  /// The atom that it works on is done.
  void Done() SENSORVELA_EXCLUDES(mutex_);
  VendorAtom RemoveFirst() SENSORVELA_REQUIRES(mutex_);
  void EndQuestions(bool is_answered) SENSORVELA_REQUIRES(mutex_);

  const std::shared_ptr<aidl::android::frameworks::stats::IStats> service_;
  const ProcessObserver observer_;

  mutable platform::Mutex mutex_;
  // Changed under the mutex only.
  std::atomic<bool> is_alive_ = true;
  bool is_stopped_ SENSORVELA_GUARDED_BY(mutex_) = false;
  std::chrono::nanoseconds time_per_atom_ SENSORVELA_GUARDED_BY(mutex_) = {};
  std::deque<Buffered> buffer_ SENSORVELA_GUARDED_BY(mutex_);
  std::size_t bytes_ SENSORVELA_GUARDED_BY(mutex_) = 0;
  /// It works on the first atom of the buffer until then or, while it is stopped, for so long when
  /// it goes on. On the monotonic clock.
  bool is_working_ SENSORVELA_GUARDED_BY(mutex_) = false;
  std::chrono::nanoseconds done_at_ SENSORVELA_GUARDED_BY(mutex_) = {};
  std::chrono::nanoseconds left_ SENSORVELA_GUARDED_BY(mutex_) = {};
  /// A thread passes atoms to the service that take no time.
  bool is_passing_ SENSORVELA_GUARDED_BY(mutex_) = false;
  std::list<Question*> questions_ SENSORVELA_GUARDED_BY(mutex_);
  std::condition_variable_any answered_;
  std::vector<DeathLink> death_links_ SENSORVELA_GUARDED_BY(mutex_);
  std::weak_ptr<ServiceProxy> proxy_ SENSORVELA_GUARDED_BY(mutex_);
};

}  // namespace sensorvela::simulated

#include "../thread_annotations_end.h"
