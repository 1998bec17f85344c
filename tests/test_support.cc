#include "tests/test_support.h"

#include <gtest/gtest.h>

namespace sensorvela::testing {
namespace {

template <typename Record>
std::unique_ptr<Record> Copy(const std::optional<Record>& record) {
  return record ? std::make_unique<Record>(*record) : nullptr;
}

}  // namespace

VendorAtom Marker(int id) {
  VendorAtom atom;
  atom.atomId = id;
  return atom;
}

class World::Service : public aidl::android::frameworks::stats::IStats {
 public:
  explicit Service(World& world) : world_(world) {}
  ndk::ScopedAStatus reportVendorAtom(const VendorAtom& atom) override {
    world_.Keep(Show(atom));
    return world_.answer ? world_.answer(atom) : ndk::ScopedAStatus::ok();
  }

 private:
  World& world_;
};

class World::FirstSupplier : public SensorVela::SystemDiagnosticsSupplier {
 public:
  explicit FirstSupplier(World& world) : d_(world.diagnostics) {}
  SensorVela::ProcessorDiag GetProcessorDiagnostics() override {
    return d_.processor.value_or(SensorVela::ProcessorDiag{});
  }
  SensorVela::QueueStress GetQueueStressType1() override { return Stress(0); }
  SensorVela::QueueStress GetQueueStressType2() override { return Stress(1); }
  SensorVela::QueueStress GetQueueStressType3() override { return Stress(2); }

 private:
  SensorVela::QueueStress Stress(std::size_t queue) {
    return d_.queues[queue].value_or(SensorVela::QueueStress{});
  }
  const Diagnostics& d_;
};

class World::SecondSupplier : public SensorVela::SystemDiagnosticsSupplierV2 {
 public:
  explicit SecondSupplier(World& world) : world_(world), d_(world.diagnostics) {}
  ~SecondSupplier() override {
    if (world_.on_supplier_destroyed) world_.on_supplier_destroyed();
  }
  std::unique_ptr<SensorVela::ProcessorDiag> GetProcessorDiagnostics() override {
    if (world_.on_upload) world_.on_upload();
    return Copy(d_.processor);
  }
  std::unique_ptr<SensorVela::QueueStress> GetQueueStressType1() override {
    return Copy(d_.queues[0]);
  }
  std::unique_ptr<SensorVela::QueueStress> GetQueueStressType2() override {
    return Copy(d_.queues[1]);
  }
  std::unique_ptr<SensorVela::QueueStress> GetQueueStressType3() override {
    return Copy(d_.queues[2]);
  }
  std::vector<SensorVela::IpcErrorRate> GetIpcErrorRates() override { return d_.ipc; }
  std::vector<SensorVela::MemoryPressure> GetMemoryPressures() override { return d_.memory; }
  std::vector<SensorVela::SensorUsage> GetSensorUsages() override { return d_.usages; }
  std::vector<SensorVela::GatingContext> GetGatingContexts() override { return d_.gating; }
  std::unique_ptr<SensorVela::DramException> GetDramException() override { return Copy(d_.dram); }
  std::unique_ptr<SensorVela::AadProxStats> GetAadProxStats() override { return Copy(d_.prox); }

 private:
  World& world_;
  const Diagnostics& d_;
};

World::World()
    : sink_([this](int priority, std::string_view tag, std::string_view text) {
        const char* letter = priority == 4 ? "I " : priority == 6 ? "E " : "? ";
        Keep((tag == "sensor-vela" ? letter : "other tag ") + std::string(text));
      }) {}

World::~World() {
  simulated::ResetServices();
  engine.reset();
}

void World::Start(Generation generation) {
  if (generation == Generation::kSecond) {
    std::unique_ptr<SensorVela::SystemDiagnosticsSupplierV2> supplier =
        std::make_unique<SecondSupplier>(*this);
    engine = std::make_unique<SensorVela>(std::move(supplier));
    EXPECT_EQ(supplier, nullptr);  // NOLINT(bugprone-use-after-move): the engine promises it.
  } else {
    std::unique_ptr<SensorVela::SystemDiagnosticsSupplier> supplier;
    if (generation == Generation::kFirst) supplier = std::make_unique<FirstSupplier>(*this);
    engine = std::make_unique<SensorVela>(std::move(supplier));
    EXPECT_EQ(supplier, nullptr);  // NOLINT(bugprone-use-after-move)
  }
}

void World::Register() { simulated::RegisterService(kInstance, std::make_shared<Service>(*this)); }

std::thread World::BeginStop() {
  const auto before = time.Notifications();
  std::thread destruction([this] { engine.reset(); });
  time.WaitForNotifications(before + 1);
  return destruction;
}

Texts World::Seen() {
  time.WaitUntilSettled();
  const std::lock_guard lock(mutex_);
  return std::exchange(seen_, {});
}

void World::Keep(std::string text) {
  const std::lock_guard lock(mutex_);
  seen_.push_back(std::move(text));
}

void Gate::Pass() {
  std::unique_lock lock(mutex_);
  arrived_ = true;
  changed_.notify_all();
  changed_.wait(lock, [this] { return open_; });
}

void Gate::AwaitArrival() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return arrived_; });
}

void Gate::Open() {
  const std::lock_guard lock(mutex_);
  open_ = true;
  changed_.notify_all();
}

}  // namespace sensorvela::testing

void SensorVelaTestPeer::SetCounters(SensorVela& engine, SensorVela::SensorId sensor,
                                     std::uint32_t count) {
  const sensorvela::platform::MutexLock lock(engine.status_mutex_);
  auto& status = engine.sensor_status_.at(std::uint64_t{sensor.high} << 32 |
                                          static_cast<std::uint32_t>(sensor.low));
  status.sample_count = count;
  status.late_sample_count = count;
  status.latency_buckets.back() = count;
}

std::int64_t SensorVelaTestPeer::AtomsTaken(SensorVela& engine,
                                            const sensorvela::simulated::VirtualTime& time) {
  // Atoms are queued and notified of under one lock.
  const sensorvela::platform::MutexLock lock(engine.queue_mutex_);
  return static_cast<std::int64_t>(time.Notifications() - engine.atom_queue_.size()) -
         (engine.stop_requested_ ? 1 : 0);
}
