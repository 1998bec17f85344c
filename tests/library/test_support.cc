#include "tests/library/test_support.h"

#include <cstddef>
#include <cstdint>

// Only a build with the Address sanitizer defines them.
// NOLINTBEGIN(bugprone-reserved-identifier, readability-identifier-naming)
extern "C" void __lsan_disable() __attribute__((weak));
extern "C" void __lsan_enable() __attribute__((weak));
// NOLINTEND(bugprone-reserved-identifier, readability-identifier-naming)

namespace sensorvela::testing {

VendorAtom Marker(int id) {
  VendorAtom atom;
  atom.atomId = id;
  return atom;
}

RefusedThreads::RefusedThreads() {
  if (__lsan_disable != nullptr) __lsan_disable();
  pthread_getattr_default_np(&normal_);
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  // No address space holds a stack of this size.
  pthread_attr_setstacksize(&attributes, SIZE_MAX / 4 * 3 & ~std::size_t{0xffff});
  pthread_setattr_default_np(&attributes);
}

RefusedThreads::~RefusedThreads() {
  pthread_setattr_default_np(&normal_);
  if (__lsan_enable != nullptr) __lsan_enable();
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
