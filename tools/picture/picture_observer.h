// Reports a run as a page for browsers.
#pragma once

#include <memory>
#include <ostream>
#include <string_view>

#include "tools/facts/run_observer.h"
#include "tools/text/names.h"

namespace sensorvela::tools {

/// False if the tool was built without the library that draws the page.
bool HasPicture();

/// Writes one HTML file, with all that it needs, at the end of the run from `begin` to `end`. `out`
/// and `names` must outlive the observer. `title` is the trace's name. docs/picture.md says what
/// the page shows, and its limits: a long run does not make a large file.
///
/// Needs `HasPicture`.
std::unique_ptr<RunObserver> MakePictureObserver(std::ostream& out, const SensorNames& names,
                                                 std::string_view title, RunObserver::Instant begin,
                                                 RunObserver::Instant end);

}  // namespace sensorvela::tools
