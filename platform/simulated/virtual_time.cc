#include "platform/simulated/virtual_time.h"

#include <cstdint>
#include <functional>
#include <utility>

#include "platform/simulated/timeline.h"

namespace sensorvela::simulated {

VirtualTime::VirtualTime(Instant start) { Timeline::Get().Begin(start); }
VirtualTime::~VirtualTime() { Timeline::Get().End(); }

VirtualTime::Instant VirtualTime::Now() const { return Timeline::Get().now(); }

void VirtualTime::Suspend(Instant duration) { Timeline::Get().Suspend(duration); }

void VirtualTime::RunTo(Instant instant) { Timeline::Get().RunTo(instant); }

void VirtualTime::RunFor(Instant duration) { RunTo(SaturatingSum(Now(), duration)); }

void VirtualTime::JumpTo(Instant instant) { Timeline::Get().MoveTo(instant, true); }

void VirtualTime::SlipTo(Instant instant) { Timeline::Get().MoveTo(instant, false); }

void VirtualTime::ReachDeadlines() { Timeline::Get().ReachDeadlines(); }

void VirtualTime::WaitUntilAtRest() { Timeline::Get().WaitUntilAtRest(); }

void VirtualTime::WaitUntilSettled() { Timeline::Get().WaitUntilSettled(); }

std::uint64_t VirtualTime::Notifications() const { return Timeline::Get().notifications(); }

void VirtualTime::WaitForNotifications(std::uint64_t count) {
  Timeline::Get().WaitForNotifications(count);
}

void VirtualTime::ObserveNotifications(std::function<void()> observer) {
  Timeline::Get().ObserveNotifications(std::move(observer));
}

}  // namespace sensorvela::simulated
