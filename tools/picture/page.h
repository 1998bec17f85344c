// The page of the picture, which the build makes of the files in page/.
#pragma once

#include <string_view>

namespace sensorvela::tools {

/// What comes before and after the data, which is a JSON text without '<', '>' and '&'. Both are
/// empty if the build had no library for the page to draw with.
extern const std::string_view kPageBeforeData;
extern const std::string_view kPageAfterData;

}  // namespace sensorvela::tools
