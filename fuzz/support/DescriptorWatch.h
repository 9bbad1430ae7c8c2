#pragma once

#include <fcntl.h>
#include <unistd.h>

#include "support/Require.h"

namespace quenfuzz {

/** Finds descriptors that an input leaves open. AddressSanitizer does so for memory only. */
class DescriptorWatch {
  public:
    DescriptorWatch() : mFirstFree(firstFree()) {}
    ~DescriptorWatch() { require(firstFree() == mFirstFree, "every descriptor is closed again"); }
    DescriptorWatch(DescriptorWatch const&) = delete;
    DescriptorWatch& operator=(DescriptorWatch const&) = delete;

  private:
    /** The lowest number that is not in use, which the system gives to whoever asks next. */
    static int firstFree() {
        int const descriptor = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0);
        close(descriptor);
        return descriptor;
    }

    int const mFirstFree;
};

}  // namespace quenfuzz
