// Gives the trace reader arbitrary bytes. It must give events, the same
// as it has checked, or fail with one printable line.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "tools/trace/trace.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    const sensorvela::tools::Input input({reinterpret_cast<const char*>(data), size});
    const sensorvela::tools::Trace trace("trace", input);
    const auto next = trace.Events();
    for (sensorvela::tools::Event event; next(event);) continue;
  } catch (const sensorvela::tools::TraceError& error) {
    const std::string_view complaint = error.what();
    if (!complaint.starts_with("trace:")) std::abort();
    for (const char c : complaint) {
      if (static_cast<unsigned char>(c) < ' ' || c == 0x7f) std::abort();
    }
  }
  return 0;
}
