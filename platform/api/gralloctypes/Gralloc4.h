#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <aidl/android/hardware/graphics/common/ExtendableType.h>
#include <aidl/android/hardware/graphics/common/PlaneLayout.h>
#include <aidl/android/hardware/graphics/common/PlaneLayoutComponentType.h>
#include <aidl/android/hardware/graphics/common/StandardMetadataType.h>
#include <android/hardware/graphics/common/1.2/types.h>
#include <android/hardware/graphics/mapper/4.0/IMapper.h>
#include <hidl/HidlSupport.h>
#include <utils/Errors.h>

#define GRALLOC4_STANDARD_METADATA_TYPE "android.hardware.graphics.common.StandardMetadataType"
#define GRALLOC4_PLANE_LAYOUT_COMPONENT_TYPE \
    "android.hardware.graphics.common.PlaneLayoutComponentType"

namespace android::gralloc4 {

namespace details {

inline hardware::graphics::mapper::V4_0::IMapper::MetadataType standardType(
        ::aidl::android::hardware::graphics::common::StandardMetadataType type) {
    return {GRALLOC4_STANDARD_METADATA_TYPE, static_cast<int64_t>(type)};
}

inline ::aidl::android::hardware::graphics::common::ExtendableType standardComponent(
        ::aidl::android::hardware::graphics::common::PlaneLayoutComponentType type) {
    ::aidl::android::hardware::graphics::common::ExtendableType result;
    result.name = GRALLOC4_PLANE_LAYOUT_COMPONENT_TYPE;
    result.value = static_cast<int64_t>(type);
    return result;
}

using Metadata = ::aidl::android::hardware::graphics::common::StandardMetadataType;
using Component = ::aidl::android::hardware::graphics::common::PlaneLayoutComponentType;

}  // namespace details

// The standard properties, for IMapper::get.
inline auto const MetadataType_BufferId = details::standardType(details::Metadata::BUFFER_ID);
inline auto const MetadataType_Name = details::standardType(details::Metadata::NAME);
inline auto const MetadataType_Width = details::standardType(details::Metadata::WIDTH);
inline auto const MetadataType_Height = details::standardType(details::Metadata::HEIGHT);
inline auto const MetadataType_LayerCount = details::standardType(details::Metadata::LAYER_COUNT);
inline auto const MetadataType_PixelFormatRequested =
        details::standardType(details::Metadata::PIXEL_FORMAT_REQUESTED);
inline auto const MetadataType_Usage = details::standardType(details::Metadata::USAGE);
inline auto const MetadataType_AllocationSize =
        details::standardType(details::Metadata::ALLOCATION_SIZE);
inline auto const MetadataType_PlaneLayouts =
        details::standardType(details::Metadata::PLANE_LAYOUTS);

// The standard components of a plane's samples.
inline auto const PlaneLayoutComponentType_Y = details::standardComponent(details::Component::Y);
inline auto const PlaneLayoutComponentType_CB = details::standardComponent(details::Component::CB);
inline auto const PlaneLayoutComponentType_CR = details::standardComponent(details::Component::CR);
inline auto const PlaneLayoutComponentType_R = details::standardComponent(details::Component::R);
inline auto const PlaneLayoutComponentType_G = details::standardComponent(details::Component::G);
inline auto const PlaneLayoutComponentType_B = details::standardComponent(details::Component::B);
inline auto const PlaneLayoutComponentType_RAW =
        details::standardComponent(details::Component::RAW);
inline auto const PlaneLayoutComponentType_A = details::standardComponent(details::Component::A);

/** Whether the type is one of the standard's, by its name; the value may be unknown. */
bool isStandardMetadataType(
        hardware::graphics::mapper::V4_0::IMapper::MetadataType const& metadataType);
bool isStandardPlaneLayoutComponentType(
        ::aidl::android::hardware::graphics::common::ExtendableType const& componentType);

/*
 * Properties as bytes and back: the property's type (its name as a 64-bit length and characters,
 * its value as 64 bits), then the value. Integers are little-endian in their own width; lists and
 * texts have a 64-bit count before them.
 *
 * OK, or BAD_VALUE: for a null output, for bytes of another property, for too few and for too many.
 * The output is left as it was then.
 */
status_t encodeBufferId(uint64_t bufferId, hardware::hidl_vec<uint8_t>* encoded);
status_t decodeBufferId(hardware::hidl_vec<uint8_t> const& encoded, uint64_t* bufferId);

status_t encodeName(std::string const& name, hardware::hidl_vec<uint8_t>* encoded);
status_t decodeName(hardware::hidl_vec<uint8_t> const& encoded, std::string* name);

status_t encodeWidth(uint64_t width, hardware::hidl_vec<uint8_t>* encoded);
status_t decodeWidth(hardware::hidl_vec<uint8_t> const& encoded, uint64_t* width);

status_t encodeHeight(uint64_t height, hardware::hidl_vec<uint8_t>* encoded);
status_t decodeHeight(hardware::hidl_vec<uint8_t> const& encoded, uint64_t* height);

status_t encodeLayerCount(uint64_t layerCount, hardware::hidl_vec<uint8_t>* encoded);
status_t decodeLayerCount(hardware::hidl_vec<uint8_t> const& encoded, uint64_t* layerCount);

status_t encodePixelFormatRequested(hardware::graphics::common::V1_2::PixelFormat const& format,
                                    hardware::hidl_vec<uint8_t>* encoded);
status_t decodePixelFormatRequested(hardware::hidl_vec<uint8_t> const& encoded,
                                    hardware::graphics::common::V1_2::PixelFormat* format);

status_t encodeUsage(uint64_t usage, hardware::hidl_vec<uint8_t>* encoded);
status_t decodeUsage(hardware::hidl_vec<uint8_t> const& encoded, uint64_t* usage);

/** Bytes of the whole buffer, padding included. */
status_t encodeAllocationSize(uint64_t allocationSize, hardware::hidl_vec<uint8_t>* encoded);
status_t decodeAllocationSize(hardware::hidl_vec<uint8_t> const& encoded, uint64_t* allocationSize);

status_t encodePlaneLayouts(
        std::vector<::aidl::android::hardware::graphics::common::PlaneLayout> const& planeLayouts,
        hardware::hidl_vec<uint8_t>* encoded);
status_t decodePlaneLayouts(
        hardware::hidl_vec<uint8_t> const& encoded,
        std::vector<::aidl::android::hardware::graphics::common::PlaneLayout>* planeLayouts);

}  // namespace android::gralloc4
