#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

#include <cutils/native_handle.h>

#include "host/base/Mutex.h"
#include "host/gralloc/BufferHandle.h"
#include "host/gralloc/MemoryMapping.h"

namespace quen::host {

/**
 * An imported buffer: owns a clone of the raw handle and, once mapped, the mapping. Releases both
 * in the destructor. Any thread.
 */
class ImportedBuffer {
  public:
    /** @param handle owned by the buffer, descriptors included */
    ImportedBuffer(native_handle_t* handle, BufferDetails const& details)
        : mHandle(handle), mFacts(details.facts), mIdentity(details.memory) {}
    ~ImportedBuffer();
    ImportedBuffer(ImportedBuffer const&) = delete;
    ImportedBuffer& operator=(ImportedBuffer const&) = delete;

    native_handle_t const* handle() const { return mHandle; }
    BufferFacts const& facts() const { return mFacts; }
    int memory() const { return mHandle->data[0]; }

    /**
     * Maps the memory at the first call: many buffers are imported only to be passed on.
     *
     * @return its address; null when it cannot be mapped
     */
    uint8_t* map();

    /** Address of the reserved bytes; null when there are none, or they cannot be mapped. */
    uint8_t* mapReserved();
    bool isMapped() const;

  private:
    uint64_t mappedSize() const;

    native_handle_t* const mHandle;
    BufferFacts const mFacts;
    MemoryIdentity const mIdentity;  // its size may have grown since
    mutable Mutex mMapLock;
    std::shared_ptr<MemoryMapping> mMapping HOST_GUARDED_BY(mMapLock);
};

/** Numbers of objects in use, to find leaks. */
struct BufferCounts {
    size_t imports;
    size_t mappings;  ///< of imported buffers
    size_t locks;     ///< nested ones counted each
};

/**
 * The imported buffers by the addresses of their handles. Never dereferences an address that it
 * does not hold. Any thread; maps and unmaps memory without the lock.
 */
class BufferTable {
  public:
    void add(std::shared_ptr<ImportedBuffer> buffer);

    /** Null when there is no such buffer. */
    std::shared_ptr<ImportedBuffer> find(void const* handle) const;

    /** As find, for locked buffers only. */
    std::shared_ptr<ImportedBuffer> findLocked(void const* handle) const;

    std::vector<std::shared_ptr<ImportedBuffer>> all() const;

    /** @return false, nothing changed, when there is no such buffer or it is locked */
    bool remove(void const* handle);

    /** Counts a lock. @return false when the buffer is no longer in the table */
    bool addLock(ImportedBuffer const& buffer);

    /** @return false when there is no such buffer or it is not locked */
    bool removeLock(void const* handle);

    BufferCounts counts() const;

  private:
    struct Entry {
        std::shared_ptr<ImportedBuffer> buffer;
        size_t locks = 0;
    };

    mutable Mutex mLock;
    std::unordered_map<void const*, Entry> mEntries HOST_GUARDED_BY(mLock);
};

}  // namespace quen::host
