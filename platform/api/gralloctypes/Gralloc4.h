#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <aidl/android/hardware/graphics/common/BlendMode.h>
#include <aidl/android/hardware/graphics/common/ChromaSiting.h>
#include <aidl/android/hardware/graphics/common/Compression.h>
#include <aidl/android/hardware/graphics/common/Cta861_3.h>
#include <aidl/android/hardware/graphics/common/Dataspace.h>
#include <aidl/android/hardware/graphics/common/ExtendableType.h>
#include <aidl/android/hardware/graphics/common/Interlaced.h>
#include <aidl/android/hardware/graphics/common/PlaneLayout.h>
#include <aidl/android/hardware/graphics/common/PlaneLayoutComponentType.h>
#include <aidl/android/hardware/graphics/common/Rect.h>
#include <aidl/android/hardware/graphics/common/Smpte2086.h>
#include <aidl/android/hardware/graphics/common/StandardMetadataType.h>
#include <android/hardware/graphics/common/1.2/types.h>
#include <android/hardware/graphics/mapper/4.0/IMapper.h>
#include <hidl/HidlSupport.h>
#include <utils/Errors.h>

#define GRALLOC4_STANDARD_METADATA_TYPE "android.hardware.graphics.common.StandardMetadataType"
#define GRALLOC4_STANDARD_PLANE_LAYOUT_COMPONENT_TYPE \
    "android.hardware.graphics.common.PlaneLayoutComponentType"
#define GRALLOC4_STANDARD_COMPRESSION "android.hardware.graphics.common.Compression"
#define GRALLOC4_STANDARD_INTERLACED "android.hardware.graphics.common.Interlaced"
#define GRALLOC4_STANDARD_CHROMA_SITING "android.hardware.graphics.common.ChromaSiting"

namespace android::gralloc4 {

namespace details {

inline hardware::graphics::mapper::V4_0::IMapper::MetadataType standardType(
        ::aidl::android::hardware::graphics::common::StandardMetadataType type) {
    return {GRALLOC4_STANDARD_METADATA_TYPE, static_cast<int64_t>(type)};
}

template <typename T>
::aidl::android::hardware::graphics::common::ExtendableType standardValue(char const* name,
                                                                          T value) {
    ::aidl::android::hardware::graphics::common::ExtendableType result;
    result.name = name;
    result.value = static_cast<int64_t>(value);
    return result;
}

inline ::aidl::android::hardware::graphics::common::ExtendableType standardComponent(
        ::aidl::android::hardware::graphics::common::PlaneLayoutComponentType type) {
    return standardValue(GRALLOC4_STANDARD_PLANE_LAYOUT_COMPONENT_TYPE, type);
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
inline auto const MetadataType_PixelFormatFourCC =
        details::standardType(details::Metadata::PIXEL_FORMAT_FOURCC);
inline auto const MetadataType_PixelFormatModifier =
        details::standardType(details::Metadata::PIXEL_FORMAT_MODIFIER);
inline auto const MetadataType_Usage = details::standardType(details::Metadata::USAGE);
inline auto const MetadataType_AllocationSize =
        details::standardType(details::Metadata::ALLOCATION_SIZE);
inline auto const MetadataType_ProtectedContent =
        details::standardType(details::Metadata::PROTECTED_CONTENT);
inline auto const MetadataType_Compression = details::standardType(details::Metadata::COMPRESSION);
inline auto const MetadataType_Interlaced = details::standardType(details::Metadata::INTERLACED);
inline auto const MetadataType_ChromaSiting =
        details::standardType(details::Metadata::CHROMA_SITING);
inline auto const MetadataType_PlaneLayouts =
        details::standardType(details::Metadata::PLANE_LAYOUTS);
inline auto const MetadataType_Crop = details::standardType(details::Metadata::CROP);
inline auto const MetadataType_Dataspace = details::standardType(details::Metadata::DATASPACE);
inline auto const MetadataType_BlendMode = details::standardType(details::Metadata::BLEND_MODE);
inline auto const MetadataType_Smpte2086 = details::standardType(details::Metadata::SMPTE2086);
inline auto const MetadataType_Cta861_3 = details::standardType(details::Metadata::CTA861_3);
inline auto const MetadataType_Smpte2094_40 =
        details::standardType(details::Metadata::SMPTE2094_40);

inline auto const Compression_None =
        details::standardValue(GRALLOC4_STANDARD_COMPRESSION,
                               ::aidl::android::hardware::graphics::common::Compression::NONE);
inline auto const Interlaced_None =
        details::standardValue(GRALLOC4_STANDARD_INTERLACED,
                               ::aidl::android::hardware::graphics::common::Interlaced::NONE);
inline auto const ChromaSiting_None =
        details::standardValue(GRALLOC4_STANDARD_CHROMA_SITING,
                               ::aidl::android::hardware::graphics::common::ChromaSiting::NONE);
inline auto const ChromaSiting_SitedInterstitial = details::standardValue(
        GRALLOC4_STANDARD_CHROMA_SITING,
        ::aidl::android::hardware::graphics::common::ChromaSiting::SITED_INTERSTITIAL);

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

/** Checks the name of a type for the standard's; the value may be unknown. */
bool isStandardMetadataType(
        hardware::graphics::mapper::V4_0::IMapper::MetadataType const& metadataType);
bool isStandardPlaneLayoutComponentType(
        ::aidl::android::hardware::graphics::common::ExtendableType const& componentType);

/*
 * Encode properties as bytes, and decode them: the property's type (its name as a 64-bit length and
 * characters, its value as 64 bits), then the value. Integers are little-endian in their own width;
 * lists and texts have a 64-bit count before them.
 *
 * Return OK, or BAD_VALUE for a null output, bytes of another property, too few bytes or too many.
 * A failure leaves the output unchanged.
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

/** Codes of the kernel's DRM interface. */
status_t encodePixelFormatFourCC(uint32_t value, hardware::hidl_vec<uint8_t>* encoded);
status_t decodePixelFormatFourCC(hardware::hidl_vec<uint8_t> const& encoded, uint32_t* value);

status_t encodePixelFormatModifier(uint64_t value, hardware::hidl_vec<uint8_t>* encoded);
status_t decodePixelFormatModifier(hardware::hidl_vec<uint8_t> const& encoded, uint64_t* value);

/** 1 for a buffer that only trusted readers can read, 0 otherwise. */
status_t encodeProtectedContent(uint64_t value, hardware::hidl_vec<uint8_t>* encoded);
status_t decodeProtectedContent(hardware::hidl_vec<uint8_t> const& encoded, uint64_t* value);

status_t encodeCompression(::aidl::android::hardware::graphics::common::ExtendableType const& value,
                           hardware::hidl_vec<uint8_t>* encoded);
status_t decodeCompression(hardware::hidl_vec<uint8_t> const& encoded,
                           ::aidl::android::hardware::graphics::common::ExtendableType* value);

status_t encodeInterlaced(::aidl::android::hardware::graphics::common::ExtendableType const& value,
                          hardware::hidl_vec<uint8_t>* encoded);
status_t decodeInterlaced(hardware::hidl_vec<uint8_t> const& encoded,
                          ::aidl::android::hardware::graphics::common::ExtendableType* value);

status_t encodeChromaSiting(
        ::aidl::android::hardware::graphics::common::ExtendableType const& value,
        hardware::hidl_vec<uint8_t>* encoded);
status_t decodeChromaSiting(hardware::hidl_vec<uint8_t> const& encoded,
                            ::aidl::android::hardware::graphics::common::ExtendableType* value);

/** One area per plane. */
status_t encodeCrop(std::vector<::aidl::android::hardware::graphics::common::Rect> const& value,
                    hardware::hidl_vec<uint8_t>* encoded);
status_t decodeCrop(hardware::hidl_vec<uint8_t> const& encoded,
                    std::vector<::aidl::android::hardware::graphics::common::Rect>* value);

status_t encodeDataspace(::aidl::android::hardware::graphics::common::Dataspace const& value,
                         hardware::hidl_vec<uint8_t>* encoded);
status_t decodeDataspace(hardware::hidl_vec<uint8_t> const& encoded,
                         ::aidl::android::hardware::graphics::common::Dataspace* value);

status_t encodeBlendMode(::aidl::android::hardware::graphics::common::BlendMode const& value,
                         hardware::hidl_vec<uint8_t>* encoded);
status_t decodeBlendMode(hardware::hidl_vec<uint8_t> const& encoded,
                         ::aidl::android::hardware::graphics::common::BlendMode* value);

// An absent value is encoded as no bytes.
status_t encodeSmpte2086(
        std::optional<::aidl::android::hardware::graphics::common::Smpte2086> const& value,
        hardware::hidl_vec<uint8_t>* encoded);
status_t decodeSmpte2086(
        hardware::hidl_vec<uint8_t> const& encoded,
        std::optional<::aidl::android::hardware::graphics::common::Smpte2086>* value);

status_t encodeCta861_3(
        std::optional<::aidl::android::hardware::graphics::common::Cta861_3> const& value,
        hardware::hidl_vec<uint8_t>* encoded);
status_t decodeCta861_3(
        hardware::hidl_vec<uint8_t> const& encoded,
        std::optional<::aidl::android::hardware::graphics::common::Cta861_3>* value);

status_t encodeSmpte2094_40(std::optional<std::vector<uint8_t>> const& value,
                            hardware::hidl_vec<uint8_t>* encoded);
status_t decodeSmpte2094_40(hardware::hidl_vec<uint8_t> const& encoded,
                            std::optional<std::vector<uint8_t>>* value);

}  // namespace android::gralloc4
