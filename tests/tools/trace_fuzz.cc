// Gives the trace reader arbitrary bytes. It must return events or fail with one printable line.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "tools/trace/trace.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    sensorvela::replay::ParseTrace("trace", {reinterpret_cast<const char*>(data), size});
  } catch (const sensorvela::replay::TraceError& error) {
    const std::string_view complaint = error.what();
    if (!complaint.starts_with("trace:")) std::abort();
    for (const char c : complaint) {
      if (static_cast<unsigned char>(c) < ' ' || c == 0x7f) std::abort();
    }
  }
  return 0;
}
