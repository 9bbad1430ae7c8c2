#pragma once

#include <cstdint>

#include <cutils/native_handle.h>
#include <hidl/HidlSupport.h>

#include "recording.pb.h"

namespace quen::replay {

/**
 * A client's buffer, made as a recording describes it: a graphic buffer of the same description, or
 * plain memory.
 */
class ReplayBuffer {
  public:
    /** @param recorded absent in the recording for a null handle: then the handle is null too */
    explicit ReplayBuffer(recording::ImageBuffer const& recorded);
    ~ReplayBuffer();
    ReplayBuffer(ReplayBuffer const&) = delete;
    ReplayBuffer& operator=(ReplayBuffer const&) = delete;

    /** The buffer's own; null for a null handle. */
    native_handle* handle() const { return mHandle; }

  private:
    bool allocate(recording::Graphic const& graphic, size_t least);
    void makeMemory(recording::Buffer const& recorded, size_t bytes);

    android::hardware::hidl_handle mGraphic;
    native_handle* mHandle = nullptr;
    int mMemory = -1;
};

/**
 * Puts recorded bytes into a handle's memory. Bytes that the recording does not hold are made from
 * their hash, the same ones each time.
 */
void fill(native_handle const* handle, recording::Content const& content);

}  // namespace quen::replay
