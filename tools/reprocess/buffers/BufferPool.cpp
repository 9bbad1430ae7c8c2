#include "buffers/BufferPool.h"

#include <algorithm>
#include <utility>

namespace quen::reprocess {

std::unique_ptr<ClientBuffer> BufferPool::take(uint32_t width, uint32_t height, int32_t format) {
    {
        host::MutexLock const lock(mLock);
        auto const found = std::find_if(mFree.begin(), mFree.end(), [&](auto const& buffer) {
            return buffer->isOf(width, height, format);
        });
        if (found != mFree.end()) {
            std::unique_ptr<ClientBuffer> buffer = std::move(*found);
            mFree.erase(found);
            return buffer;
        }
    }
    return std::make_unique<ClientBuffer>(width, height, format);
}

void BufferPool::give(std::unique_ptr<ClientBuffer> buffer) {
    std::unique_ptr<ClientBuffer> surplus;  // freed after the lock
    host::MutexLock const lock(mLock);
    mFree.push_back(std::move(buffer));
    if (mFree.size() > mKept) {
        surplus = std::move(mFree.front());
        mFree.erase(mFree.begin());
    }
}

}  // namespace quen::reprocess
