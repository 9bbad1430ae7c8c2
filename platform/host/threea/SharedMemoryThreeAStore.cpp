#include "host/threea/ThreeAStore.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>

namespace quen::host {

namespace {

constexpr int kLeastDescriptor = 3;  // lower ones are standard streams, or mean "none" to a client

/** Moves a descriptor out of the range of the standard streams. */
int raiseDescriptor(int descriptor) {
    if (descriptor < 0 || descriptor >= kLeastDescriptor) {
        return descriptor;
    }
    int const raised = fcntl(descriptor, F_DUPFD_CLOEXEC, kLeastDescriptor);
    int const error = errno;
    close(descriptor);
    errno = error;
    return raised;
}

/** Creates shared memory of a fixed size; -1 with errno on failure. */
int createSharedMemory(uint32_t size) {
    int const descriptor =
            raiseDescriptor(memfd_create("quen-3a-info", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    if (descriptor < 0) {
        return -1;
    }
    // Sealed: nobody can change the size under a reader.
    if (ftruncate(descriptor, size) != 0 ||
        fcntl(descriptor, F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW) != 0) {
        int const error = errno;
        close(descriptor);
        errno = error;
        return -1;
    }
    return descriptor;
}

}  // namespace

SharedMemoryThreeAStore::~SharedMemoryThreeAStore() {
    for (Buffer const& buffer : mBuffers) {
        if (buffer.descriptor >= 0) {
            close(buffer.descriptor);
        }
    }
}

int SharedMemoryThreeAStore::get3AInfoBuf(QIF3ABufferInfo* info, unsigned int size) {
    if (info == nullptr || size > kBufferBytes) {
        return -EINVAL;
    }
    MutexLock const lock(mLock);
    // A buffer that does not exist yet counts as the oldest: the pool fills up before any is
    // reused.
    auto const next = std::min_element(mBuffers.begin(), mBuffers.end(),
                                       [](Buffer const& left, Buffer const& right) {
                                           return left.lastHandedOut < right.lastHandedOut;
                                       });
    if (next->descriptor < 0) {
        next->descriptor = createSharedMemory(kBufferBytes);
        if (next->descriptor < 0) {
            return -errno;
        }
    }
    next->lastHandedOut = ++mHandedOut;
    *info = {};
    info->fd = next->descriptor;
    info->size = kBufferBytes;
    info->bufferIndex = static_cast<int32_t>(next - mBuffers.begin()) + 1;
    return 0;
}

int SharedMemoryThreeAStore::getTuningData(int* fd, unsigned int bufferIndex) {
    if (fd == nullptr) {
        return -EINVAL;
    }
    MutexLock const lock(mLock);
    if (bufferIndex < 1 || bufferIndex > mBuffers.size() ||
        mBuffers[bufferIndex - 1].descriptor < 0) {
        return -ENOENT;
    }
    // Counts as handed out again, so that the next request gets another buffer.
    Buffer& buffer = mBuffers[bufferIndex - 1];
    buffer.lastHandedOut = ++mHandedOut;
    *fd = buffer.descriptor;
    return 0;
}

}  // namespace quen::host
