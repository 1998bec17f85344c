#include "tests/test_support.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>

namespace sensorvela::testing {
namespace {

using aidl::android::frameworks::stats::VendorAtomValue;

std::string ShowFloat(float value) {
  char text[32];
  if (std::isnan(value)) {
    std::snprintf(text, sizeof text, "nan:%08x", std::bit_cast<std::uint32_t>(value));
  } else {
    std::snprintf(text, sizeof text, "%.9g", static_cast<double>(value));
  }
  return text;
}

std::string ShowValue(const VendorAtomValue& value) {
  switch (value.getTag()) {
    case VendorAtomValue::intValue:
      return "i" + std::to_string(value.get<VendorAtomValue::intValue>());
    case VendorAtomValue::longValue:
      return "l" + std::to_string(value.get<VendorAtomValue::longValue>());
    case VendorAtomValue::floatValue:
      return "f" + ShowFloat(value.get<VendorAtomValue::floatValue>());
    case VendorAtomValue::boolValue:
      return value.get<VendorAtomValue::boolValue>() ? "true" : "false";
    case VendorAtomValue::repeatedIntValue: {
      const auto& list = value.get<VendorAtomValue::repeatedIntValue>();
      if (!list) return "absent";
      std::string text = "[";
      for (const std::int32_t element : *list) text += " " + std::to_string(element);
      return text + " ]";
    }
    default:
      return "other";
  }
}

}  // namespace

std::string Show(const VendorAtom& atom) {
  std::string text = std::to_string(atom.atomId) + atom.reverseDomainName;
  for (const VendorAtomValue& value : atom.values) text += " " + ShowValue(value);
  if (atom.valuesAnnotations || atom.atomAnnotations) text += " annotated";
  return text;
}

VendorAtom Marker(int id) {
  VendorAtom atom;
  atom.atomId = id;
  return atom;
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

ndk::ScopedAStatus RecordingStats::reportVendorAtom(const VendorAtom& atom) {
  {
    const std::lock_guard lock(mutex_);
    shown_.push_back(Show(atom));
  }
  return answer ? answer(atom) : ndk::ScopedAStatus::ok();
}

std::vector<std::string> RecordingStats::shown() const {
  const std::lock_guard lock(mutex_);
  return shown_;
}

EngineTest::EngineTest()
    : sink_([this](int priority, std::string_view tag, std::string_view text) {
        const std::lock_guard lock(mutex_);
        EXPECT_EQ(tag, "sensor-vela");
        lines_.push_back((priority == 4 ? "I " : priority == 6 ? "E " : "? ") + std::string(text));
      }) {
  host::DeclareService(kInstance);
  host::RegisterService(kInstance, stats_);
}

EngineTest::~EngineTest() {
  host::ResetServices();
  engine_.reset();
}

void EngineTest::Start(std::function<void()> on_upload, std::function<void()> on_destruction) {
  auto supplier = std::make_unique<ScriptedSupplier>();
  supplier->on_upload = std::move(on_upload);
  supplier->on_destruction = std::move(on_destruction);
  engine_ = std::make_unique<SensorVela>(
      std::unique_ptr<SensorVela::SystemDiagnosticsSupplierV2>(std::move(supplier)));
}

std::thread EngineTest::BeginStop() {
  const auto before = time_.Notifications();
  std::thread destruction([this] { engine_.reset(); });
  time_.WaitForNotifications(before + 1);
  return destruction;
}

std::vector<std::string> EngineTest::Delivered() {
  time_.WaitUntilAtRest();
  std::vector<std::string> all = stats_->shown();
  std::vector<std::string> fresh(all.begin() + static_cast<std::ptrdiff_t>(delivered_), all.end());
  delivered_ = all.size();
  return fresh;
}

std::vector<std::string> EngineTest::Lines() {
  const std::lock_guard lock(mutex_);
  return lines_;
}

int EngineTest::CountLines(const std::string& text) {
  const std::lock_guard lock(mutex_);
  return static_cast<int>(std::count_if(lines_.begin(), lines_.end(), [&](const std::string& line) {
    return line.find(text) != std::string::npos;
  }));
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
