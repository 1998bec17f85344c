#include "testkit/destroy_engine.h"

#include <functional>
#include <thread>

namespace sensorvela::testkit {

void DestroyEngine(simulated::VirtualTime& time, const std::function<void()>& destroy,
                   const std::function<void()>& release) {
  const auto asked_to_stop = time.Notifications() + 1;
  std::thread destruction(destroy);
  time.WaitForNotifications(asked_to_stop);
  release();
  destruction.join();
}

}  // namespace sensorvela::testkit
