#include <sensorvela/histogram/stats_histogram.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

#include <sensorvela/atoms/memory_serviceability_histograms.h>

namespace android::util::statslogapigen {
namespace {

namespace atoms = android::hardware::halvard::orrin::vendor::OrrinAtoms;

constexpr float kLowest = std::numeric_limits<float>::lowest();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

TEST(HistogramTest, AnEdgeBelongsToTheBinThatBeginsThere) {
  const auto histogram = StatsHistogram::createLinearBins(0, 100, 20);
  const struct {
    float value;
    std::size_t bin;
  } kCases[] = {{-kInfinity, 0}, {kLowest, 0}, {-1, 0},    {0, 1},          {4.999F, 1}, {5, 2},
                {99.9F, 20},     {100, 21},    {1e9F, 21}, {kInfinity, 21}, {kNan, 21}};
  for (const auto& test : kCases) {
    histogram->clear();
    histogram->addValue(test.value);
    std::vector<std::int32_t> expected(22);
    expected[test.bin] = 1;
    EXPECT_EQ(histogram->getBinCounts(), expected) << test.value;
  }
}

TEST(HistogramTest, LinearEdgesAccumulateInSinglePrecision) {
  // `min + 8 * step` would be 0.8.
  EXPECT_EQ(StatsHistogram::createLinearBins(0, 1, 10)->getBins(),
            (std::vector<float>{kLowest, 0, 0.1F, 0.2F, 0.3F, 0.4F, 0.5F, 0.600000024F,
                                0.700000048F, 0.800000072F, 0.900000095F, 1}));
  EXPECT_EQ(StatsHistogram::createLinearBins(7, 9, 1)->getBins(),
            (std::vector<float>{kLowest, 7, 9}));
}

using Bins = std::vector<float>;

Bins ExponentialBins(float min, float max, int count) {
  return StatsHistogram::createExponentialBins(min, max, count)->getBins();
}

TEST(HistogramTest, ExponentialEdgesAccumulateInSinglePrecision) {
  // Neither the powers of the factor nor a factor of single precision would give these edges.
  EXPECT_EQ(ExponentialBins(1, 1000, 10),
            Bins({kLowest, 1, 1.99526227F, 3.98107147F, 7.94328165F, 15.8489304F, 31.6227722F,
                  63.095726F, 125.892525F, 251.188599F, 501.187134F, 1000}));
  EXPECT_EQ(ExponentialBins(-8, -1, 3), Bins({kLowest, -8, -4, -2, -1}));
}

TEST(HistogramTest, ExponentialEdgesMayBeZeroInfiniteOrNan) {
  EXPECT_EQ(ExponentialBins(0, 10, 1), Bins({kLowest, 0, 10}));
  EXPECT_EQ(ExponentialBins(1, 0, 3), Bins({kLowest, 1, 0, 0, 0}));
  EXPECT_EQ(ExponentialBins(1, kInfinity, 1), Bins({kLowest, 1, kInfinity}));
  EXPECT_EQ(ExponentialBins(1e-38F, 3e38F, 2), Bins({kLowest, 1e-38F, kInfinity, 3e38F}));
  EXPECT_TRUE(std::isnan(ExponentialBins(1, kNan, 2)[2]));
}

TEST(HistogramTest, ExplicitEdgesAreTakenAsTheyAre) {
  const auto histogram = StatsHistogram::createExplicitBins({3, 1, 2});
  EXPECT_EQ(histogram->getBins(), (std::vector<float>{kLowest, 3, 1, 2}));
  for (const float value : {2.0F, 2.5F, 3.0F}) histogram->addValue(value);
  EXPECT_EQ(histogram->getBinCounts(), (std::vector<std::int32_t>{2, 0, 0, 1}));
}

TEST(HistogramTest, ARequestThatCannotBeMetCountsEverythingInOneBin) {
  std::unique_ptr<StatsHistogram> histograms[] = {
      StatsHistogram::createExplicitBins({}),
      StatsHistogram::createLinearBins(0, 1, 0),
      StatsHistogram::createLinearBins(0, 1, std::numeric_limits<int>::min()),
      StatsHistogram::createLinearBins(0, 1, StatsHistogram::kCountLimit),
      StatsHistogram::createLinearBins(0, 1, std::numeric_limits<int>::max()),
      StatsHistogram::createExponentialBins(1, 10, -1),
      StatsHistogram::createExponentialBins(1, 10, StatsHistogram::kCountLimit),
      StatsHistogram::createExponentialBins(0, 10, 3),
      StatsHistogram::createExponentialBins(-1, 10, 3),
      StatsHistogram::createExponentialBins(1, -10, 3),
  };
  for (const auto& histogram : histograms) {
    EXPECT_EQ(histogram->getBins(), std::vector<float>{kLowest});
    for (const float value : {-kInfinity, 0.0F, kNan}) histogram->addValue(value);
    EXPECT_EQ(histogram->getBinCounts(), std::vector<std::int32_t>{3});
  }
}

TEST(HistogramTest, TheMemoryServiceabilityHistogramsShareEdgesAndNothingElse) {
  const auto counts = atoms::
      create_sensor_memory_serviceability_stats_reported__bucket_allocation_count_histogram();
  const auto durations =
      atoms::create_sensor_memory_serviceability_stats_reported__bucket_duration_ms_histogram();
  std::vector<float> expected = {kLowest};
  for (int edge = 0; edge <= 100; edge += 5) expected.push_back(static_cast<float>(edge));
  EXPECT_EQ(counts->getBins(), expected);
  EXPECT_EQ(durations->getBins(), expected);
  counts->addValue(100);
  EXPECT_EQ(counts->getBinCounts().back(), 1);
  EXPECT_EQ(durations->getBinCounts(), std::vector<std::int32_t>(22));
}

}  // namespace
}  // namespace android::util::statslogapigen
