#include "ThreeAStore.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>

namespace quensoak {

namespace {

constexpr int kNoBuffer = -1;

int memoryOf(size_t bytes) {
    int const memory = memfd_create("soak 3A", MFD_CLOEXEC);
    if (memory < 0 || ftruncate(memory, static_cast<off_t>(bytes)) != 0) {
        abort();
    }
    return memory;
}

}  // namespace

PlannedThreeAStore::PlannedThreeAStore()
    : mDescriptor(memoryOf(quen::host::SharedMemoryThreeAStore::kBufferBytes)) {}

PlannedThreeAStore::~PlannedThreeAStore() {
    close(mDescriptor);
}

int PlannedThreeAStore::get3AInfoBuf(QIF3ABufferInfo* info, unsigned int size) {
    if (mAnswer == ThreeA::None) {
        return kNoBuffer;
    }
    info->fd = mDescriptor;
    info->size = mAnswer == ThreeA::TooSmall ? size - 1 : size;
    info->bufferIndex = 1;
    return 0;
}

int PlannedThreeAStore::getTuningData(int* fd, unsigned int /*bufferIndex*/) {
    if (mAnswer != ThreeA::Given) {
        return kNoBuffer;
    }
    *fd = mDescriptor;
    return 0;
}

}  // namespace quensoak
