#include "host/gralloc/BufferTable.h"

#include <utility>

#include "host/gralloc/BufferSettings.h"

namespace quen::host {

ImportedBuffer::~ImportedBuffer() {
    native_handle_close(mHandle);
    native_handle_delete(mHandle);
}

/** Maps the reserved bytes, too. Settings are not accessed through the mapping. */
uint64_t ImportedBuffer::mappedSize() const {
    return mFacts.reservedSize != 0 ? wholeSize(mFacts) : mFacts.extent.sizeInBytes;
}

uint8_t* ImportedBuffer::mapReserved() {
    uint8_t* const address = mFacts.reservedSize != 0 ? map() : nullptr;
    return address == nullptr ? nullptr : address + reservedOffset(mFacts);
}

uint8_t* ImportedBuffer::map() {
    MutexLock const guard(mMapLock);
    if (mMapping == nullptr) {
        // A client that locks a picture accesses all of it. A BLOB may be larger than what is ever
        // written to it.
        bool const isBlock = mFacts.layout == Layout::Blob;
        mMapping = MemoryMapping::of(memory(), mIdentity, mappedSize(),
                                     isBlock ? PagesMade::WhenTouched : PagesMade::AtOnce);
    }
    return mMapping == nullptr ? nullptr : mMapping->address();
}

bool ImportedBuffer::isMapped() const {
    MutexLock const guard(mMapLock);
    return mMapping != nullptr;
}

void BufferTable::add(std::shared_ptr<ImportedBuffer> buffer) {
    void const* const handle = buffer->handle();
    MutexLock const guard(mLock);
    mEntries[handle].buffer = std::move(buffer);
}

std::shared_ptr<ImportedBuffer> BufferTable::find(void const* handle) const {
    MutexLock const guard(mLock);
    auto const found = mEntries.find(handle);
    return found == mEntries.end() ? nullptr : found->second.buffer;
}

std::shared_ptr<ImportedBuffer> BufferTable::findLocked(void const* handle) const {
    MutexLock const guard(mLock);
    auto const found = mEntries.find(handle);
    return found == mEntries.end() || found->second.locks == 0 ? nullptr : found->second.buffer;
}

std::vector<std::shared_ptr<ImportedBuffer>> BufferTable::all() const {
    MutexLock const guard(mLock);
    std::vector<std::shared_ptr<ImportedBuffer>> result;
    for (auto const& [handle, entry] : mEntries) {
        result.push_back(entry.buffer);
    }
    return result;
}

bool BufferTable::remove(void const* handle) {
    std::shared_ptr<ImportedBuffer> removed;  // destroyed after the unlock: unmapping takes long
    MutexLock const guard(mLock);
    auto const found = mEntries.find(handle);
    if (found == mEntries.end() || found->second.locks > 0) {
        return false;
    }
    removed = std::move(found->second.buffer);
    mEntries.erase(found);
    return true;
}

bool BufferTable::addLock(ImportedBuffer const& buffer) {
    MutexLock const guard(mLock);
    auto const found = mEntries.find(buffer.handle());
    if (found == mEntries.end()) {
        return false;
    }
    ++found->second.locks;
    return true;
}

bool BufferTable::removeLock(void const* handle) {
    MutexLock const guard(mLock);
    auto const found = mEntries.find(handle);
    if (found == mEntries.end() || found->second.locks == 0) {
        return false;
    }
    --found->second.locks;
    return true;
}

BufferCounts BufferTable::counts() const {
    MutexLock const guard(mLock);
    BufferCounts result = {mEntries.size(), 0, 0};
    for (auto const& [handle, entry] : mEntries) {
        result.mappings += entry.buffer->isMapped() ? 1 : 0;
        result.locks += entry.locks;
    }
    return result;
}

}  // namespace quen::host
