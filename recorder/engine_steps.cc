// Takes the place of the steps of the reporter thread. Each calls the library's.
#include <sensorvela/engine/sensor_vela.h>

#include "recorder/next_definition.h"
#include "recorder/recordings.h"

using sensorvela::recorder::NextDefinition;
using sensorvela::recorder::Recording;
using sensorvela::recorder::RecordingOfCaller;
using sensorvela::recorder::Recordings;
using sensorvela::recorder::ThisThread;

void SensorVela::RunReporterThread() {
  static const auto next = NextDefinition(&SensorVela::RunReporterThread);
  // It lives for longer than the thread: the engine's destructor waits for the thread.
  ThisThread().reports_for = Recordings::Get().Find(this);
  (this->*next)();
}

void SensorVela::DrainAtomQueue() {
  static const auto next = NextDefinition(&SensorVela::DrainAtomQueue);
  if (Recording* const recording = RecordingOfCaller()) recording->DrainBegins();
  (this->*next)();
}

void SensorVela::EndCycle() {
  static const auto next = NextDefinition(&SensorVela::EndCycle);
  Recording* const recording = RecordingOfCaller();
  if (recording != nullptr) recording->CycleEndBegins();
  (this->*next)();
  if (recording != nullptr) recording->CycleEndEnds();
}
