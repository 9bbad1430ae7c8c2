#include "command/OpenFiles.h"

#include <sys/resource.h>

#include <algorithm>
#include <limits>

#include "support/Failure.h"
#include "support/Text.h"

namespace quen::reprocess {
namespace {

// What one picture takes at a time, handles that are copied on the way included, when all 3A
// buffers are there; what a batch takes beside its inputs, and for each of them.
constexpr size_t kLeast = 40;
constexpr size_t kOfABatch = 36;
constexpr size_t kOfAnInput = 10;

size_t allowedFiles() {
    rlimit limit = {};
    bool const isKnown = ::getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY;
    return isKnown ? static_cast<size_t>(limit.rlim_cur) : std::numeric_limits<size_t>::max();
}

}  // namespace

void raiseOpenFiles() {
    rlimit limit = {};
    if (::getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur != limit.rlim_max) {
        limit.rlim_cur = limit.rlim_max;
        ::setrlimit(RLIMIT_NOFILE, &limit);  // it may go without
    }
    if (allowedFiles() < kLeast) {
        throw Failure(format("%zu open files are allowed, and a picture takes %zu", allowedFiles(),
                             kLeast),
                      "allow more with ulimit -n");
    }
}

size_t jobsByOpenFiles() {
    size_t const allowed = std::max(allowedFiles(), kOfABatch + kOfAnInput);
    return (allowed - kOfABatch) / kOfAnInput;
}

}  // namespace quen::reprocess
