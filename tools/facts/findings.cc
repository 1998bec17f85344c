#include "tools/facts/findings.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tools/text/sensor_order.h"

namespace sensorvela::tools {

void Findings::Add(FindingKind kind, const Sensor& sensor, const Moment& moment,
                   std::uint64_t count) {
  if (Finding* const finding = At(kind, sensor, moment)) finding->count += count;
}

void Findings::Raise(FindingKind kind, const Sensor& sensor, const Moment& moment,
                     std::uint64_t count) {
  if (Finding* const finding = At(kind, sensor, moment)) {
    finding->count = std::max(finding->count, count);
  }
}

void Findings::Describe(FindingKind kind, const Sensor& sensor, const std::string& detail) {
  const auto found = findings_.find({kind, sensor});
  if (found != findings_.end()) found->second.detail = detail;
}

std::vector<Finding> Findings::All() const {
  std::vector<Finding> all;
  for (const auto& [key, finding] : findings_) all.push_back(finding);
  return all;
}

Finding* Findings::At(FindingKind kind, const Sensor& sensor, const Moment& moment) {
  const auto found = findings_.find({kind, sensor});
  if (found != findings_.end()) return &found->second;
  if (findings_.size() == kMaxFindings) return nullptr;
  const Finding finding = {kind, sensor, 0, moment.at, moment.line};
  return &findings_.emplace(std::pair(kind, sensor), finding).first->second;
}

bool Findings::Order::operator()(const std::pair<FindingKind, Sensor>& a,
                                 const std::pair<FindingKind, Sensor>& b) const {
  if (a.first != b.first) return a.first < b.first;
  if (!a.second || !b.second) return !a.second && b.second;
  return SensorOrder()(*a.second, *b.second);
}

}  // namespace sensorvela::tools
