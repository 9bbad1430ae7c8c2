#include "host/gralloc/BufferTable.h"

#include <sys/mman.h>

#include <utility>

namespace quen::host {

ImportedBuffer::~ImportedBuffer() {
    if (mAddress != nullptr) {
        munmap(mAddress, mFacts.extent.sizeInBytes);
    }
    native_handle_close(mHandle);
    native_handle_delete(mHandle);
}

uint8_t* ImportedBuffer::map() {
    std::lock_guard<std::mutex> const guard(mMapLock);
    if (mAddress == nullptr) {
        void* const address = mmap(nullptr, mFacts.extent.sizeInBytes, PROT_READ | PROT_WRITE,
                                   MAP_SHARED, memory(), 0);
        mAddress = address == MAP_FAILED ? nullptr : static_cast<uint8_t*>(address);
        // Whoever locks a picture goes through all of it, and its pages at one go take two thirds
        // of the time of their faults one by one, half of the time of two threads' faults together.
        // A plain block may be larger than what is ever written to it.
        if (mAddress != nullptr && mFacts.layout != Layout::Blob) {
            madvise(address, mFacts.extent.sizeInBytes, MADV_POPULATE_WRITE);
        }
    }
    return mAddress;
}

bool ImportedBuffer::isMapped() const {
    std::lock_guard<std::mutex> const guard(mMapLock);
    return mAddress != nullptr;
}

void BufferTable::add(std::shared_ptr<ImportedBuffer> buffer) {
    void const* const handle = buffer->handle();
    std::lock_guard<std::mutex> const guard(mLock);
    mEntries[handle].buffer = std::move(buffer);
}

std::shared_ptr<ImportedBuffer> BufferTable::find(void const* handle) const {
    std::lock_guard<std::mutex> const guard(mLock);
    auto const found = mEntries.find(handle);
    return found == mEntries.end() ? nullptr : found->second.buffer;
}

bool BufferTable::remove(void const* handle) {
    std::shared_ptr<ImportedBuffer> removed;  // ends after the lock: giving memory back takes long
    std::lock_guard<std::mutex> const guard(mLock);
    auto const found = mEntries.find(handle);
    if (found == mEntries.end() || found->second.locks > 0) {
        return false;
    }
    removed = std::move(found->second.buffer);
    mEntries.erase(found);
    return true;
}

bool BufferTable::addLock(ImportedBuffer const& buffer) {
    std::lock_guard<std::mutex> const guard(mLock);
    auto const found = mEntries.find(buffer.handle());
    if (found == mEntries.end()) {
        return false;
    }
    ++found->second.locks;
    return true;
}

bool BufferTable::removeLock(void const* handle) {
    std::lock_guard<std::mutex> const guard(mLock);
    auto const found = mEntries.find(handle);
    if (found == mEntries.end() || found->second.locks == 0) {
        return false;
    }
    --found->second.locks;
    return true;
}

BufferCounts BufferTable::counts() const {
    std::lock_guard<std::mutex> const guard(mLock);
    BufferCounts result = {mEntries.size(), 0, 0};
    for (auto const& [handle, entry] : mEntries) {
        result.mappings += entry.buffer->isMapped() ? 1 : 0;
        result.locks += entry.locks;
    }
    return result;
}

}  // namespace quen::host
