#pragma once

#include <cstdint>

#include <android/hardware/graphics/mapper/4.0/IMapper.h>
#include <hidl/HidlSupport.h>

#include "host/gralloc/BufferTable.h"

namespace quen::host {

/**
 * Encodes a property of a buffer: id, name, width, height, layer count, format, usage, allocation
 * size, plane layouts.
 *
 * @return NONE, or UNSUPPORTED for any other property
 */
android::hardware::graphics::mapper::V4_0::Error encodeStandardMetadata(
        ImportedBuffer const& buffer,
        android::hardware::graphics::mapper::V4_0::IMapper::MetadataType const& type,
        android::hardware::hidl_vec<uint8_t>& encoded);

}  // namespace quen::host
