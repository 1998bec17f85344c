// The words of a trace that the recorder writes and the tools read, and the bound of its times.
#pragma once

#include <cstdint>
#include <string_view>

namespace sensorvela::trace_format {

/// The largest instant and the longest duration in a trace: a little less than half of what 64 bits
/// hold, so that the sum of two, and a deadline after it, fits.
inline constexpr std::int64_t kMaxTimeNs = 4'000'000'000'000'000'000;

/// The events of a recording, but for the calls of the engine.
namespace event {

inline constexpr std::string_view kCycleEnded = "cycle_ended";
inline constexpr std::string_view kEnd = "end";
inline constexpr std::string_view kEngineStart = "engine_start";
inline constexpr std::string_view kLookupFound = "lookup_found";
inline constexpr std::string_view kLookupFoundNone = "lookup_found_none";
inline constexpr std::string_view kLookupWaits = "lookup_waits";
inline constexpr std::string_view kRecording = "recording";
inline constexpr std::string_view kReportFailed = "report_failed";
inline constexpr std::string_view kReportSilent = "report_silent";
inline constexpr std::string_view kReportsSoFar = "reports_so_far";
inline constexpr std::string_view kSampleLists = "sample_lists";
inline constexpr std::string_view kServiceFoundDeclared = "service_found_declared";
inline constexpr std::string_view kSupplierAnswers = "supplier_answers";
inline constexpr std::string_view kSuspended = "suspended";

}  // namespace event

/// The fields of these events.
namespace field {

inline constexpr std::string_view kAtNs = "at_ns";
inline constexpr std::string_view kDomain = "domain";
inline constexpr std::string_view kEvent = "event";
inline constexpr std::string_view kForNs = "for_ns";
inline constexpr std::string_view kId = "id";
inline constexpr std::string_view kLists = "lists";
inline constexpr std::string_view kReport = "report";
inline constexpr std::string_view kReports = "reports";
inline constexpr std::string_view kSensorHigh = "sensor_high";
inline constexpr std::string_view kSensorLow = "sensor_low";
inline constexpr std::string_view kSensors = "sensors";
inline constexpr std::string_view kSupplier = "supplier";
inline constexpr std::string_view kValues = "values";
inline constexpr std::string_view kVersion = "version";

}  // namespace field

/// The kinds of supplier that an engine starts with.
namespace supplier {

inline constexpr std::string_view kNone = "none";
inline constexpr std::string_view kFirst = "first";
inline constexpr std::string_view kSecond = "second";

}  // namespace supplier

/// What a supplier answers, in the order in which the engine asks.
namespace item {

inline constexpr std::string_view kProcessor = "processor";
inline constexpr std::string_view kQueue1 = "queue_1";
inline constexpr std::string_view kQueue2 = "queue_2";
inline constexpr std::string_view kQueue3 = "queue_3";
inline constexpr std::string_view kIpcErrorRates = "ipc_error_rates";
inline constexpr std::string_view kMemory = "memory";
inline constexpr std::string_view kSensorUsages = "sensor_usages";
inline constexpr std::string_view kGatingContexts = "gating_contexts";
inline constexpr std::string_view kDramException = "dram_exception";
inline constexpr std::string_view kProxStats = "prox_stats";

}  // namespace item

}  // namespace sensorvela::trace_format
