// A host and a stats service as for a device: with nothing but the device's headers and the
// library's.
#pragma once

#include <aidl/android/frameworks/stats/BnStats.h>
#include <android/binder_auto_utils.h>

#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include <sensorvela/engine/sensor_vela.h>

#include "atoms/all_records.h"

namespace device_style_host {

using aidl::android::frameworks::stats::Annotation;
using aidl::android::frameworks::stats::AnnotationId;
using aidl::android::frameworks::stats::AnnotationSet;
using aidl::android::frameworks::stats::BnStats;
using aidl::android::frameworks::stats::VendorAtom;
using android::hardware::halvard::orrin::vendor::OrrinAtoms::AllRecords;
using ndk::ScopedAStatus;

class StatsService final : public BnStats {
 public:
  ScopedAStatus reportVendorAtom(const VendorAtom& atom) override {
    const std::lock_guard lock(mutex_);
    atoms_.push_back(atom);
    return ScopedAStatus::ok();
  }

  std::vector<VendorAtom> TakeAtoms() {
    const std::lock_guard lock(mutex_);
    return std::exchange(atoms_, {});
  }

 private:
  std::mutex mutex_;
  std::vector<VendorAtom> atoms_;
};

inline constexpr SensorVela::ProcessorDiag kProcessor = {1, 2, 3, 4};
inline constexpr SensorVela::QueueStress kQueues[] = {{11, 12}, {21, 22}, {31, 32}};
inline constexpr SensorVela::MemoryPressure kPressure = {.pressure_value_4 = 0.5F};
inline constexpr SensorVela::MemoryPressure kServiceability = {
    .kind = SensorVela::MemoryPressure::kServiceability, .bucket_duration_ms = {5}};

class FirstGeneration : public SensorVela::SystemDiagnosticsSupplier {
 public:
  SensorVela::ProcessorDiag GetProcessorDiagnostics() override { return kProcessor; }
  SensorVela::QueueStress GetQueueStressType1() override { return kQueues[0]; }
  SensorVela::QueueStress GetQueueStressType2() override { return kQueues[1]; }
  SensorVela::QueueStress GetQueueStressType3() override { return kQueues[2]; }
};

class SecondGeneration : public SensorVela::SystemDiagnosticsSupplierV2 {
 public:
  std::unique_ptr<SensorVela::ProcessorDiag> GetProcessorDiagnostics() override { return nullptr; }
  std::unique_ptr<SensorVela::QueueStress> GetQueueStressType1() override { return nullptr; }
  std::unique_ptr<SensorVela::QueueStress> GetQueueStressType2() override {
    return std::make_unique<SensorVela::QueueStress>(kQueues[1]);
  }
  std::unique_ptr<SensorVela::QueueStress> GetQueueStressType3() override { return nullptr; }
  std::vector<SensorVela::IpcErrorRate> GetIpcErrorRates() override { return {{1}, {2}}; }
  std::vector<SensorVela::MemoryPressure> GetMemoryPressures() override {
    return {kServiceability, kPressure};
  }
  std::vector<SensorVela::SensorUsage> GetSensorUsages() override { return {{3}}; }
  std::vector<SensorVela::GatingContext> GetGatingContexts() override { return {{4}}; }
  std::unique_ptr<SensorVela::DramException> GetDramException() override {
    return std::make_unique<SensorVela::DramException>(SensorVela::DramException{5});
  }
  std::unique_ptr<SensorVela::AadProxStats> GetAadProxStats() override {
    return std::make_unique<SensorVela::AadProxStats>(SensorVela::AadProxStats{6});
  }
};

/// One atom of each builder, with annotations of its values and its own.
inline std::vector<VendorAtom> AnnotatedAtoms() {
  std::vector<VendorAtom> atoms;
  AllRecords::ForEach([&]<typename Record>() {
    Record record;
    record.reverse_domain_name = "a domain";
    VendorAtom atom = createVendorAtom(record);
    const Annotation annotation = {AnnotationId{1}, true};
    const AnnotationSet set = {0, {annotation, {AnnotationId{18}, atom.atomId}}};
    atom.valuesAnnotations = {{set, std::nullopt}};
    atom.atomAnnotations = {{std::nullopt, annotation}};
    atoms.push_back(std::move(atom));
  });
  return atoms;
}

}  // namespace device_style_host
