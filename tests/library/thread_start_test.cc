// A separate program, because the failed construction of an engine does not free its fields: the
// library is built without exceptions.
#include <gtest/gtest.h>
#include <pthread.h>

#include <memory>
#include <string>
#include <system_error>

#include <sensorvela/engine/sensor_vela.h>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#include <sanitizer/lsan_interface.h>
#define SENSORVELA_EXPECT_LEAKS const __lsan::ScopedDisabler no_leak_check
#endif
#endif
#ifndef SENSORVELA_EXPECT_LEAKS
#define SENSORVELA_EXPECT_LEAKS static_cast<void>(0)
#endif

namespace {

TEST(ThreadStartTest, ARefusalReachesTheHostAsASystemError) {
  // No address space holds a stack of this size, so the system refuses every thread.
  pthread_attr_t attributes;
  ASSERT_EQ(pthread_attr_init(&attributes), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, SIZE_MAX / 4 * 3 & ~std::size_t{0xffff}), 0);
  ASSERT_EQ(pthread_setattr_default_np(&attributes), 0);

  SENSORVELA_EXPECT_LEAKS;
  try {
    const SensorVela engine{std::unique_ptr<SensorVela::SystemDiagnosticsSupplier>()};
    FAIL() << "the thread started";
  } catch (const std::system_error& error) {
    EXPECT_EQ(error.code(), std::errc::resource_unavailable_try_again);
#if defined(_LIBCPP_VERSION)  // Other libraries have another text.
    EXPECT_EQ(std::string(error.what()).rfind("thread constructor failed", 0), 0U) << error.what();
#endif
  }
}

}  // namespace
