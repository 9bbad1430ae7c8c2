#pragma once

#include <cstdint>

#include <android/hardware/graphics/mapper/4.0/IMapper.h>
#include <hidl/HidlSupport.h>

#include "host/gralloc/BufferTable.h"

namespace quen::host {

using BufferDescriptorInfo =
        android::hardware::graphics::mapper::V4_0::IMapper::BufferDescriptorInfo;
using BufferMetadataType = android::hardware::graphics::mapper::V4_0::IMapper::MetadataType;
using MapperError = android::hardware::graphics::mapper::V4_0::Error;

/** Encodes a standard property of a buffer: NONE, or UNSUPPORTED for any other, NO_RESOURCES. */
MapperError encodeStandardMetadata(ImportedBuffer const& buffer, BufferMetadataType const& type,
                                   android::hardware::hidl_vec<uint8_t>& encoded);

/**
 * The same of buffers to come. UNSUPPORTED also for what only an allocation settles: id, size,
 * planes, pixel format codes.
 */
MapperError encodeStandardMetadata(BufferDescriptorInfo const& info, BufferMetadataType const& type,
                                   android::hardware::hidl_vec<uint8_t>& encoded);

/**
 * Sets data space, blend mode, and what a picture's light is like, which stay with the buffer.
 *
 * @return NONE; BAD_VALUE for what the allocation settled; UNSUPPORTED for any other property and
 *         for malformed bytes; NO_RESOURCES
 */
MapperError setStandardMetadata(ImportedBuffer const& buffer, BufferMetadataType const& type,
                                android::hardware::hidl_vec<uint8_t> const& encoded);

/** The standard properties, and which can be set. */
android::hardware::hidl_vec<
        android::hardware::graphics::mapper::V4_0::IMapper::MetadataTypeDescription>
listStandardMetadata();

/** Every standard property of a buffer. */
android::hardware::graphics::mapper::V4_0::IMapper::BufferDump dumpStandardMetadata(
        ImportedBuffer const& buffer);

}  // namespace quen::host
