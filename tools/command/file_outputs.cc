#include "tools/command/file_outputs.h"

#include <memory>
#include <ostream>
#include <span>
#include <string>

#include "tools/picture/picture_observer.h"
#include "tools/viewer/viewer_observer.h"

namespace sensorvela::tools {
namespace {

constexpr FileOutput kFileOutputs[] = {
    {"--trace-out",
     "Also write the run in the Trace Event Format, which the usual trace viewers open",
     [] { return std::string(); },
     [](std::ostream& out, const Trace& trace, const std::string& /*title*/) {
       return MakeViewerObserver(out, trace.sensor_names());
     }},
    {"--picture", "Also write the run as a picture: a page, in one file, that any browser opens",
     [] {
       return std::string(HasPicture() ? ""
                                       : "for want of a library to draw with (Debian: "
                                         "node-d3-axis, node-d3-scale, node-d3-zoom)");
     },
     [](std::ostream& out, const Trace& trace, const std::string& title) {
       return MakePictureObserver(out, trace.sensor_names(), title, trace.run_begin(),
                                  trace.run_end());
     }},
};

}  // namespace

std::span<const FileOutput> FileOutputs() { return kFileOutputs; }

}  // namespace sensorvela::tools
