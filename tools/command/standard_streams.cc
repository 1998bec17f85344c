#include "tools/command/standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace sensorvela::tools {

void OccupyStandardStreams() {
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
    if (fcntl(stream, F_GETFD) != -1 || errno != EBADF) continue;
    // The lower ones are open, so the new one gets this number.
    open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

}  // namespace sensorvela::tools
