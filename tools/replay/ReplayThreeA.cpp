#include "ReplayThreeA.h"

#include <sys/mman.h>
#include <unistd.h>

#include <stdexcept>

namespace quen::replay {
namespace {

/** Memory of a 3A buffer's size. */
int makeMemory() {
    int const memory = memfd_create("quen-replay 3A", MFD_CLOEXEC);
    if (memory < 0 || ::ftruncate(memory, host::SharedMemoryThreeAStore::kBufferBytes) != 0) {
        throw std::runtime_error("there is no memory for a 3A buffer");
    }
    return memory;
}

}  // namespace

ReplayThreeA::ReplayThreeA() : mMemory(makeMemory()) {}

ReplayThreeA::~ReplayThreeA() {
    ::close(mMemory);
}

void ReplayThreeA::expect(recording::IspRequest const* request, int32_t index) {
    host::MutexLock const lock(mLock);
    mIndex = index;
    mHasInput = false;
    mHasOutput.clear();
    mUnexpected = 0;
    if (request == nullptr) {
        return;
    }
    for (recording::IspBuffer const& input : request->inputs()) {
        mHasInput = mHasInput || input.tuning().is_3a();
    }
    for (recording::IspBuffer const& output : request->outputs()) {
        if (output.has_tuning()) {
            mHasOutput.push_back(output.tuning().is_3a());
        }
    }
}

int ReplayThreeA::unexpected() const {
    host::MutexLock const lock(mLock);
    return mUnexpected;
}

int ReplayThreeA::get3AInfoBuf(QIF3ABufferInfo* info, unsigned int /*size*/) {
    host::MutexLock const lock(mLock);
    if (mHasOutput.empty()) {
        ++mUnexpected;
        return -1;
    }
    bool const hasOne = mHasOutput.front();
    mHasOutput.pop_front();
    if (!hasOne) {
        return -1;
    }
    info->fd = mMemory;
    info->size = host::SharedMemoryThreeAStore::kBufferBytes;
    info->bufferIndex = mIndex;
    return 0;
}

int ReplayThreeA::getTuningData(int* fd, unsigned int /*bufferIndex*/) {
    host::MutexLock const lock(mLock);
    if (!mHasInput) {
        return -1;
    }
    *fd = mMemory;
    return 0;
}

}  // namespace quen::replay
