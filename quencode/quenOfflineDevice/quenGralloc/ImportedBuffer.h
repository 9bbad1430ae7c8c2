#pragma once

#include <cstdint>

#include <cutils/native_handle.h>
#include <system/graphics.h>

#include "quenGralloc/MapperHelper.h"

namespace quen {

/** Gralloc usage bits of the CPU. */
inline constexpr uint64_t kCpuReadOften = 0x3;
inline constexpr uint64_t kCpuWriteOften = 0x30;
inline constexpr uint64_t kCpuReadWriteOften = kCpuReadOften | kCpuWriteOften;

/**
 * A graphic buffer imported through the MapperHelper for the length of a scope. At its end the
 * buffer is unlocked, whether it was locked or not, the release fence closed and the import freed.
 *
 * No outcome is checked: an import or a lock that failed shows as a null address.
 */
class ImportedBuffer {
  public:
    /** @param raw the buffer as its owner holds it, may be null; not owned */
    explicit ImportedBuffer(native_handle const* raw);
    ~ImportedBuffer();

    ImportedBuffer(ImportedBuffer const&) = delete;
    ImportedBuffer& operator=(ImportedBuffer const&) = delete;

    /** Locks the first row of `width` bytes. Returns its address, null when the lock failed. */
    void* lock(uint64_t cpuUsage, int32_t width);

    /** Locks a picture. Returns its planes; their addresses are null when the lock failed. */
    android_ycbcr lockYCbCr(uint64_t cpuUsage, int32_t width, int32_t height);

  private:
    MapperHelper mMapper;
    native_handle const* mHandle;
};

}  // namespace quen
