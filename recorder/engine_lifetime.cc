// Takes the place of the library's constructors and destructor. Each calls the library's.
//
// They are functions with the constructors' symbols: a constructor would initialize the engine's
// members, which is for the library's to do. They return the object because the ABI of 32-bit Arm
// demands it; other ABIs ignore the result.
#include <memory>
#include <string_view>
#include <utility>

#include <sensorvela/engine/sensor_vela.h>

#include "recorder/next_definition.h"
#include "recorder/recorded_supplier.h"
#include "recorder/recordings.h"
#include "trace_format/words.h"

#ifdef _LIBCPP_VERSION
#define SENSORVELA_CONSTRUCTOR(kind, supplier) \
  asm("_ZN10SensorVela" kind "EONSt3__110unique_ptrINS_" supplier "ENS0_14default_deleteIS2_EEEE")
#else
#define SENSORVELA_CONSTRUCTOR(kind, supplier) \
  asm("_ZN10SensorVela" kind "EOSt10unique_ptrINS_" supplier "ESt14default_deleteIS1_EE")
#endif
#define SENSORVELA_FIRST_GENERATION "25SystemDiagnosticsSupplier"
#define SENSORVELA_SECOND_GENERATION "27SystemDiagnosticsSupplierV2"

using First = std::unique_ptr<SensorVela::SystemDiagnosticsSupplier>;
using Second = std::unique_ptr<SensorVela::SystemDiagnosticsSupplierV2>;

extern "C" {
#define SENSORVELA_EXPORTED [[gnu::visibility("default")]]
// The complete object's and the base object's, which do the same.
SENSORVELA_EXPORTED void* SensorVelaConstructFirst(void* engine, First&& supplier)
    SENSORVELA_CONSTRUCTOR("C1", SENSORVELA_FIRST_GENERATION);
SENSORVELA_EXPORTED void* SensorVelaConstructFirstBase(void* engine, First&& supplier)
    SENSORVELA_CONSTRUCTOR("C2", SENSORVELA_FIRST_GENERATION);
SENSORVELA_EXPORTED void* SensorVelaConstructSecond(void* engine, Second&& supplier)
    SENSORVELA_CONSTRUCTOR("C1", SENSORVELA_SECOND_GENERATION);
SENSORVELA_EXPORTED void* SensorVelaConstructSecondBase(void* engine, Second&& supplier)
    SENSORVELA_CONSTRUCTOR("C2", SENSORVELA_SECOND_GENERATION);
SENSORVELA_EXPORTED void* SensorVelaDestroy(void* engine) asm("_ZN10SensorVelaD1Ev");
SENSORVELA_EXPORTED void* SensorVelaDestroyBase(void* engine) asm("_ZN10SensorVelaD2Ev");
}

namespace {

namespace kinds = sensorvela::trace_format::supplier;
using sensorvela::recorder::MakeRecordedSupplier;
using sensorvela::recorder::NextDefinition;
using sensorvela::recorder::Recording;
using sensorvela::recorder::Recordings;

/// Forgets the engine and ends its recording.
void EndRecording(void* engine) {
  const auto recording = Recordings::Get().Remove(static_cast<SensorVela*>(engine));
  if (recording != nullptr) recording->EngineEnds();
}

/// Constructs the engine with the supplier. If the library's constructor throws, there is no engine
/// to record.
template <typename Supplier>
void ConstructRecorded(void* engine, void* (*next)(void*, Supplier&&), Supplier supplier) {
  struct EndUnlessConstructed {
    void* engine;
    ~EndUnlessConstructed() {
      if (engine != nullptr) EndRecording(engine);
    }
  } guard{engine};
  next(engine, std::move(supplier));
  guard.engine = nullptr;
}

/// The recording of the engine that is about to be constructed; null if it is not recorded.
std::shared_ptr<Recording> Begin(void* engine, std::string_view supplier) {
  return Recordings::Get().Begin(static_cast<SensorVela*>(engine), supplier);
}

}  // namespace

// Both leave `supplier` null, as the library promises.
void* SensorVelaConstructFirst(void* engine, First&& supplier) {
  static const auto next = NextDefinition(&SensorVelaConstructFirst);
  const auto recording = Begin(engine, supplier == nullptr ? kinds::kNone : kinds::kFirst);
  if (recording == nullptr) {
    next(engine, std::move(supplier));
  } else if (supplier == nullptr) {
    // An engine of the second generation sends nothing for answers that are absent.
    static const auto next_second = NextDefinition(&SensorVelaConstructSecond);
    ConstructRecorded(engine, next_second, MakeRecordedSupplier(recording, Second()));
  } else {
    ConstructRecorded(engine, next, MakeRecordedSupplier(recording, std::move(supplier)));
  }
  return engine;
}

void* SensorVelaConstructSecond(void* engine, Second&& supplier) {
  static const auto next = NextDefinition(&SensorVelaConstructSecond);
  const auto recording = Begin(engine, supplier == nullptr ? kinds::kNone : kinds::kSecond);
  if (recording == nullptr) {
    next(engine, std::move(supplier));
  } else {
    ConstructRecorded(engine, next, MakeRecordedSupplier(recording, std::move(supplier)));
  }
  return engine;
}

void* SensorVelaDestroy(void* engine) {
  static const auto next = NextDefinition(&SensorVelaDestroy);
  next(engine);  // Until this returns, the supplier may still call the engine.
  EndRecording(engine);
  return engine;
}

void* SensorVelaConstructFirstBase(void* engine, First&& supplier) {
  return SensorVelaConstructFirst(engine, std::move(supplier));
}
void* SensorVelaConstructSecondBase(void* engine, Second&& supplier) {
  return SensorVelaConstructSecond(engine, std::move(supplier));
}
void* SensorVelaDestroyBase(void* engine) { return SensorVelaDestroy(engine); }

namespace {

struct AtExit {
  ~AtExit() { Recordings::Get().ProcessEnds(); }
} at_exit;

}  // namespace
