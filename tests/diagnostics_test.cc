#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>
#include <memory>
#include <numeric>
#include <string>
#include <thread>
#include <vector>

#include "tests/test_support.h"

namespace sensorvela::testing {
namespace {

using Texts = std::vector<std::string>;
using V = SensorVela;
constexpr std::int64_t kBeyond32Bits = std::int64_t{1} << 32;

V::MemoryPressure Memory(std::uint8_t kind) {
  V::MemoryPressure memory{1, 2, 3, 4, 5.5F, kind, 7, 8, {}, {}};
  std::iota(memory.bucket_allocation_count.begin(), memory.bucket_allocation_count.end(), 1);
  std::iota(memory.bucket_duration_ms.begin(), memory.bucket_duration_ms.end(), 101);
  return memory;
}

const std::string kPressure = "100070 i1 i2 i3 i4 f5.5";
const std::string kServiceability =
    "100304 i210 i1 i7 i8 [ 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 ]"
    " [ 101 102 103 104 105 106 107 108 109 110 111 112 113 114 115 116 117 118 119 120 ]";

TEST(AdaptersTest, EachRecordBecomesItsAtom) {
  V::MemoryPressure full{};
  full.bucket_allocation_count.fill(std::numeric_limits<std::int32_t>::max());
  const V::AadProxStats prox{
      1,     2,     3,     4,     5,  6,  7,  8,  -0.0F, std::bit_cast<float>(0x7fc00007),
      11.5F, 12.5F, 13.5F, 14.5F, 15, 16, 17, 18, 19,    20};
  const struct {
    VendorAtom atom;
    std::string shown;
  } kCases[] = {
      {V::ProcessorDiagnosticsAtom({1, -2, kBeyond32Bits + 7, kBeyond32Bits - 1}),
       "100028 i1 i-2 i7 i-1"},
      {V::SystemQueueStressAtom(V::QueueType{2},
                                {10, kBeyond32Bits, 30, 40, -50, -kBeyond32Bits + 60}),
       "100029 i2 i10 i0 i30 i40 i-50 i60"},
      {V::IpcErrorRateAtom({1, 2, 3, 4}), "100069 i1 i2 i3 i4"},
      // The caller chooses between the two memory atoms, not the record.
      {V::MemoryPressureAtom(Memory(1)), kPressure},
      {V::MemServiceabilityAtom(Memory(0)), kServiceability},
      {V::SensorUsageAtom({1, 2, 3, 4, 5, 6, 7}), "100107 i1 i2 i3 i4 i5 i6 i7"},
      {V::GatingContextAtom({1, 2, 3, 4, 5, 6, 7, 8, 9}), "100109 i1 i2 i3 i4 i5 i6 i7 i8 i9"},
      {V::DramExceptionAtom({1, 2, 3, 4, 5}), "100110 i1 i2 i3 i4 i5"},
      {V::AadProxStatsAtom(prox),
       "100334 i1 i2 i3 i4 i5 i6 i7 i8 f-0 fnan:7fc00007 f11.5 f12.5 f13.5 f14.5 i15 i16 i17 i18 "
       "i19 i20"},
  };
  for (const auto& test : kCases) EXPECT_EQ(Show(test.atom), test.shown);
  EXPECT_EQ(Show(V::MemServiceabilityAtom(full)).substr(0, 10), "100304 i-2");  // -20: it wraps.
}

/// Offers every item.
class FullSupplier : public V::SystemDiagnosticsSupplierV2 {
 public:
  std::unique_ptr<V::ProcessorDiag> GetProcessorDiagnostics() override {
    return std::make_unique<V::ProcessorDiag>(V::ProcessorDiag{1, 2, 3, 4});
  }
  std::unique_ptr<V::QueueStress> GetQueueStressType1() override { return Stress(1); }
  std::unique_ptr<V::QueueStress> GetQueueStressType2() override { return Stress(2); }
  std::unique_ptr<V::QueueStress> GetQueueStressType3() override { return Stress(3); }
  std::vector<V::IpcErrorRate> GetIpcErrorRates() override { return {{1, 2, 3, 4}, {5, 6, 7, 8}}; }
  std::vector<V::MemoryPressure> GetMemoryPressures() override {
    return {Memory(0), Memory(1), Memory(2), Memory(255)};
  }
  std::vector<V::SensorUsage> GetSensorUsages() override { return {{1, 2, 3, 4, 5, 6, 7}}; }
  std::vector<V::GatingContext> GetGatingContexts() override {
    return {{1, 2, 3, 4, 5, 6, 7, 8, 9}};
  }
  std::unique_ptr<V::DramException> GetDramException() override {
    return std::make_unique<V::DramException>(V::DramException{1, 2, 3, 4, 5});
  }
  std::unique_ptr<V::AadProxStats> GetAadProxStats() override {
    return std::make_unique<V::AadProxStats>();
  }

 private:
  static std::unique_ptr<V::QueueStress> Stress(int value) {
    return std::make_unique<V::QueueStress>(V::QueueStress{value, 0, 0, 0, 0, 0});
  }
};

const Texts kFullUpload = {"100028 i1 i2 i3 i4",
                           "100029 i1 i1 i0 i0 i0 i0 i0",
                           "100029 i2 i2 i0 i0 i0 i0 i0",
                           "100029 i3 i3 i0 i0 i0 i0 i0",
                           "100069 i1 i2 i3 i4",
                           "100069 i5 i6 i7 i8",
                           kPressure,
                           kServiceability,
                           kPressure,
                           kPressure,
                           "100107 i1 i2 i3 i4 i5 i6 i7",
                           "100109 i1 i2 i3 i4 i5 i6 i7 i8 i9",
                           "100110 i1 i2 i3 i4 i5",
                           "100334 i0 i0 i0 i0 i0 i0 i0 i0 f0 f0 f0 f0 f0 f0 i0 i0 i0 i0 i0 i0"};

class UploadTest : public EngineTest {
 protected:
  template <typename Interface>
  void StartWith(std::unique_ptr<Interface> supplier) {
    engine_ = std::make_unique<SensorVela>(std::move(supplier));
  }
};

TEST_F(UploadTest, AsksForEachItemInOrderAtEachCyclesEnd) {
  StartWith<V::SystemDiagnosticsSupplierV2>(std::make_unique<FullSupplier>());
  for (const auto end : {6h, 12h}) {
    time_.RunTo(end);
    EXPECT_EQ(Delivered(), kFullUpload);
  }
}

TEST_F(UploadTest, TheFirstGenerationHasFourItems) {
  class FirstGeneration : public V::SystemDiagnosticsSupplier {
    V::ProcessorDiag GetProcessorDiagnostics() override { return {++calls_, 2, 3, 4}; }
    V::QueueStress GetQueueStressType1() override { return {++calls_, 0, 0, 0, 0, 0}; }
    V::QueueStress GetQueueStressType2() override { return {++calls_, 0, 0, 0, 0, 0}; }
    V::QueueStress GetQueueStressType3() override { return {++calls_, 0, 0, 0, 0, 0}; }
    int calls_ = 0;
  };
  StartWith<V::SystemDiagnosticsSupplier>(std::make_unique<FirstGeneration>());
  time_.RunTo(6h);
  EXPECT_EQ(Delivered(), (Texts{"100028 i1 i2 i3 i4", "100029 i1 i2 i0 i0 i0 i0 i0",
                                "100029 i2 i3 i0 i0 i0 i0 i0", "100029 i3 i4 i0 i0 i0 i0 i0"}));
}

TEST_F(UploadTest, NothingIsQueuedWithoutASupplierOrWhenAllIsAbsent) {
  StartWith<V::SystemDiagnosticsSupplier>(nullptr);
  time_.RunTo(12h);
  Start();
  time_.RunTo(24h);
  EXPECT_EQ(Delivered(), Texts{});
}

/// Does something of its own in the middle of an upload.
class BusySupplier : public FullSupplier {
 public:
  explicit BusySupplier(std::function<void()> act) : act_(std::move(act)) {}
  std::unique_ptr<V::QueueStress> GetQueueStressType2() override {
    act_();
    return FullSupplier::GetQueueStressType2();
  }

 private:
  std::function<void()> act_;
};

TEST_F(UploadTest, ASupplierMayCallTheEngineAndItsAtomsKeepTheirPlace) {
  StartWith<V::SystemDiagnosticsSupplierV2>(std::make_unique<BusySupplier>([this] {
    engine_->ReportVendorAtomAsync(Marker(1));
    engine_->ReportHalSensorEnabled({1, 1}, 5);
  }));
  time_.RunTo(6h);
  Texts expected = kFullUpload;
  expected.insert(expected.begin() + 2, {"1", "100242 i1 i1 i2 l5 i-1 i-1 [ ]"});
  EXPECT_EQ(Delivered(), expected);
}

TEST_F(UploadTest, HostThreadsReportAllThroughIt) {
  constexpr int kThreads = 4;
  constexpr int kAtomsEach = 200;
  Gate gate;
  StartWith<V::SystemDiagnosticsSupplierV2>(
      std::make_unique<BusySupplier>([&gate] { gate.Pass(); }));
  time_.WaitUntilAtRest();
  time_.JumpTo(6h);
  gate.AwaitArrival();

  // The supplier takes long now, and no enqueue waits for it: the first half is queued before it
  // goes on, the second half while it does.
  const auto report = [this](int thread) {
    for (int i = 0; i < kAtomsEach; ++i) engine_->ReportVendorAtomAsync(Marker(thread + 1));
  };
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads / 2; ++i) threads.emplace_back(report, i);
  for (std::thread& thread : threads) thread.join();
  threads.clear();
  for (int i = kThreads / 2; i < kThreads; ++i) threads.emplace_back(report, i);
  gate.Open();
  for (std::thread& thread : threads) thread.join();

  Texts upload;
  std::size_t markers = 0;
  for (const std::string& atom : Delivered()) {
    if (atom.size() == 1) {
      ++markers;
    } else {
      upload.push_back(atom);
    }
  }
  EXPECT_EQ(markers, std::size_t{kThreads * kAtomsEach});
  EXPECT_EQ(upload, kFullUpload);
}

}  // namespace
}  // namespace sensorvela::testing
