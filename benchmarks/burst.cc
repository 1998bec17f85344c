// A host's thread reports some events, which wake the reporter thread; that sends and frees their
// atoms, and sleeps again.
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

#include "benchmarks/baseline_queue.h"
#include "benchmarks/comparison.h"
#include "benchmarks/engine.h"
#include "benchmarks/tables.h"

namespace sensorvela::benchmarks {
namespace {

using namespace std::chrono_literals;

/// More than enough for a thread that has sent its last atom to free its batch and to sleep.
constexpr auto kUntilAsleep = 200us;

/// A queue, and a thread that sends what is in it.
class BaselineReporter {
 public:
  explicit BaselineReporter(std::shared_ptr<IStats> service)
      : service_(std::move(service)), thread_([this] { Run(); }) {}
  ~BaselineReporter() {
    {
      const std::lock_guard lock(mutex_);
      stopped_ = true;
      not_empty_.notify_all();
    }
    thread_.join();
  }

  void Enqueue(VendorAtom&& atom) {
    const std::lock_guard lock(mutex_);
    atoms_.push_back(std::move(atom));
    not_empty_.notify_all();
  }

 private:
  void Run() {
    while (true) {
      std::deque<VendorAtom> batch;
      {
        std::unique_lock lock(mutex_);
        not_empty_.wait(lock, [this] { return stopped_ || !atoms_.empty(); });
        if (stopped_) return;
        batch.swap(atoms_);
      }
      for (const VendorAtom& atom : batch) service_->reportVendorAtom(atom).isOk();
    }
  }

  const std::shared_ptr<IStats> service_;
  std::mutex mutex_;
  std::condition_variable not_empty_;
  std::deque<VendorAtom> atoms_;
  bool stopped_ = false;
  std::thread thread_;
};

/// The mean time of a call in `bursts` bursts of `burst` calls.
template <typename Call>
double TimeOf(int burst, const CountingService& service, const Call& call) {
  const int bursts = burst == 1 ? 20 : 2;
  double ns = 0;
  for (int i = 0; i < bursts; ++i) {
    std::this_thread::sleep_for(kUntilAsleep);
    const std::int64_t all_sent = service.reports + burst;
    ns += MeanNs(burst, call);
    while (service.reports < all_sent) std::this_thread::yield();
  }
  return ns / bursts;
}

MakeSlice Operation(int burst) {
  return [=]() -> Slice {
    const auto service = ndk::SharedRefBase::make<CountingService>();
    const std::shared_ptr<SensorVela> engine = StartEngine(service);
    return [=] {
      return TimeOf(burst, *service, [&] {
        engine->ReportHalLatency(SensorVela::HalOperation{4}, {0x10, 1}, 1'500'000);
      });
    };
  };
}

MakeSlice Baseline(int burst) {
  return [=]() -> Slice {
    const auto service = ndk::SharedRefBase::make<CountingService>();
    const auto reporter = std::make_shared<BaselineReporter>(service);
    return [=] { return TimeOf(burst, *service, [&] { reporter->Enqueue(BaselineAtom(4)); }); };
  };
}

}  // namespace

void AddBurst() {
  for (const int burst : {1, 20, 2'000}) {
    Add({.table = "An event of a burst, reporter thread asleep before it",
         .name = "4 values, " + std::to_string(burst) + " at once",
         .operation = Operation(burst),
         .baseline = Baseline(burst),
         .threads = 2,
         .repetitions = 11});
  }
}

}  // namespace sensorvela::benchmarks
