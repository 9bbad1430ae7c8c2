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

/**
 * Encodes a standard property of a buffer.
 *
 * @return NONE; UNSUPPORTED for any other property; NO_RESOURCES
 */
MapperError encodeStandardMetadata(ImportedBuffer const& buffer, BufferMetadataType const& type,
                                   android::hardware::hidl_vec<uint8_t>& encoded);

/**
 * As above, for a buffer that is not allocated yet. UNSUPPORTED also for properties that only the
 * allocation decides: id, size, planes, pixel format codes.
 */
MapperError encodeStandardMetadata(BufferDescriptorInfo const& info, BufferMetadataType const& type,
                                   android::hardware::hidl_vec<uint8_t>& encoded);

/**
 * Sets the data space, the blend mode or the light levels (SMPTE 2086, CTA 861.3), which stay with
 * the buffer.
 *
 * @return NONE; BAD_VALUE for a property that the allocation fixed; UNSUPPORTED for any other
 *         property and for malformed bytes; NO_RESOURCES
 */
MapperError setStandardMetadata(ImportedBuffer const& buffer, BufferMetadataType const& type,
                                android::hardware::hidl_vec<uint8_t> const& encoded);

/** Lists the standard properties, and which can be set. */
android::hardware::hidl_vec<
        android::hardware::graphics::mapper::V4_0::IMapper::MetadataTypeDescription>
listStandardMetadata();

/** Encodes every standard property of a buffer. */
android::hardware::graphics::mapper::V4_0::IMapper::BufferDump dumpStandardMetadata(
        ImportedBuffer const& buffer);

}  // namespace quen::host
