#pragma once

#include <cstddef>
#include <cstdint>

#include <android/hardware/graphics/mapper/4.0/IMapper.h>
#include <cutils/native_handle.h>
#include <utils/StrongPointer.h>

#include "recording.pb.h"

namespace quen::recorder {

/**
 * Access to the memory behind a handle, for as long as the object lives: through the mapper when it
 * knows the handle, by mapping its first descriptor otherwise. Takes no ownership of the handle.
 * One thread at a time.
 */
class BufferAccess {
  public:
    /** @param handle raw or imported, may be null */
    explicit BufferAccess(native_handle const* handle);
    ~BufferAccess();
    BufferAccess(BufferAccess const&) = delete;
    BufferAccess& operator=(BufferAccess const&) = delete;

    /** Whether it is a graphic buffer; describes it. */
    bool describe(recording::Graphic& graphic) const;

    /**
     * Gives access to the bytes, readable and, when `writable`, writable, until the object ends.
     * Once.
     *
     * @param most bytes that are wanted
     * @return false when they cannot be accessed
     */
    bool map(size_t most, bool writable);
    uint8_t* data() const { return mData; }
    size_t size() const { return mSize; }

  private:
    bool lock(uint64_t bytes, size_t most, bool writable);
    bool mapDescriptor(size_t most, bool writable);

    native_handle const* const mHandle;
    android::sp<android::hardware::graphics::mapper::V4_0::IMapper> mMapper;
    void* mImported = nullptr;
    bool mIsLocked = false;
    uint8_t* mData = nullptr;
    size_t mSize = 0;
};

/** Whether a tuning buffer is one of the 3A store, whose handle has the descriptor as an integer.
 */
bool is3ABuffer(native_handle const* tuning);

/** Describes a handle's form and, when it is a graphic buffer, that; null leaves `buffer` alone. */
void describeHandle(native_handle const* handle, recording::Buffer& buffer);

/**
 * Describes the bytes of a picture.
 *
 * @param isBlob whether a JPEG's trailer may stand at its end
 * @param holdsBytes whether the head is put into `content`
 */
void describeContent(uint8_t const* data, size_t size, bool isBlob, bool holdsBytes,
                     recording::Content& content);

/** Describes the bytes of a handle's memory, as describeContent; nothing when it has no access. */
void describePicture(native_handle const* handle, size_t most, bool isBlob, bool holdsBytes,
                     recording::Content& content);

/** Describes and holds the used bytes of a graphic tuning buffer. */
void describeTuning(native_handle const* handle, recording::Content& content);

}  // namespace quen::recorder
