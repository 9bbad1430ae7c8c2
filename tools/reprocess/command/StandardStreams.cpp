#include "command/StandardStreams.h"

#include <fcntl.h>
#include <unistd.h>

namespace quen::reprocess {
namespace {

bool gOutputWasClosed = false;  // written before there is a second thread

}  // namespace

void occupyStandardStreams() {
    int fd = 0;
    do {
        fd = ::open("/dev/null", O_RDWR);
        gOutputWasClosed = gOutputWasClosed || fd == STDOUT_FILENO;
    } while (fd >= 0 && fd <= STDERR_FILENO);
    if (fd > STDERR_FILENO) {
        ::close(fd);
    }
}

bool isStandardOutputClosed() {
    return gOutputWasClosed;
}

}  // namespace quen::reprocess
