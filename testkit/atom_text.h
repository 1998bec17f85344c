// Writes an atom as one line of text, with the names of its values.
#pragma once

#include <aidl/android/frameworks/stats/VendorAtom.h>

#include <iosfwd>
#include <string>

namespace sensorvela::testkit {

/// The atom on one line: `SensorFirstSampleReported{sensor_id_high=16, sensor_id_low=2,
/// first_sample_latency_ns=1000000}`.
///
/// Two atoms have the same text exactly when they are equal bit for bit, apart from annotations:
/// the text says only whether there are any. The kind is written before a value when it is not the
/// kind in the catalogue (`state=long 2`), and before each value of an atom that the catalogue does
/// not have (`atom 42{value_1=int 7}`). A float has the fewest digits that read back as the same
/// float (`0.3`, `5`), a NaN its bits (`nan(0x7fc00000)`). In a string, quotes, backslashes and
/// control characters are written as `\x0a`.
std::string AtomText(const aidl::android::frameworks::stats::VendorAtom& atom);

}  // namespace sensorvela::testkit

namespace aidl::android::frameworks::stats {

/// GoogleTest and GoogleMock call this to write an atom into a message, in the form of `AtomText`.
void PrintTo(const VendorAtom& atom, std::ostream* out);

}  // namespace aidl::android::frameworks::stats
