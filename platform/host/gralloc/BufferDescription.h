#pragma once

#include <cstdint>

#include <android/hardware/graphics/mapper/4.0/IMapper.h>
#include <hidl/HidlSupport.h>

namespace quen::host {

/**
 * Checks whether a buffer can be allocated: NONE; BAD_VALUE for an empty one and for a BLOB of more
 * than one row; UNSUPPORTED for an unknown format, several layers, and one too large.
 */
android::hardware::graphics::mapper::V4_0::Error checkDescription(
        android::hardware::graphics::mapper::V4_0::IMapper::BufferDescriptorInfo const& info);

/** Encodes a description as the bytes that the mapper returns and the allocator takes. */
android::hardware::hidl_vec<uint8_t> encodeDescription(
        android::hardware::graphics::mapper::V4_0::IMapper::BufferDescriptorInfo const& info);

/** @return false, `info` undefined, for bytes that encodeDescription did not make */
bool decodeDescription(
        android::hardware::hidl_vec<uint8_t> const& bytes,
        android::hardware::graphics::mapper::V4_0::IMapper::BufferDescriptorInfo& info);

}  // namespace quen::host
