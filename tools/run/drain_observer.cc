#include "tools/run/drain_observer.h"

#include <functional>
#include <utility>

#include <sensorvela/engine/sensor_vela.h>

#include "recorder/next_definition.h"

namespace sensorvela::tools {
namespace {

std::function<void()> observer;

}  // namespace

ScopedDrainObserver::ScopedDrainObserver(std::function<void()> before_drain) {
  observer = std::move(before_drain);
}

ScopedDrainObserver::~ScopedDrainObserver() { observer = nullptr; }

}  // namespace sensorvela::tools

// Takes the place of the library's, as the recorder does, and calls it.
void SensorVela::DrainAtomQueue() {
  static const auto next = sensorvela::recorder::NextDefinition(&SensorVela::DrainAtomQueue);
  if (sensorvela::tools::observer) sensorvela::tools::observer();
  (this->*next)();
}
