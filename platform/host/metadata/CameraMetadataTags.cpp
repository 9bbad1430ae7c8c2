#include <atomic>
#include <cstring>

#include <camera_metadata_hidden.h>
#include <system/camera_metadata.h>

#include "host/metadata/CameraMetadataLayout.h"
#include "host/metadata/VendorTags.h"

using quen::host::androidTags;
using quen::host::findTag;
using quen::host::TagInfo;
using quen::host::vendorTags;

const size_t camera_metadata_type_size[NUM_TYPES] = {1, 4, 4, 8, 8, 8};

const char* camera_metadata_type_names[NUM_TYPES] = {"byte",  "int32",  "float",
                                                     "int64", "double", "rational"};

const char* camera_metadata_section_names[ANDROID_SECTION_COUNT] = {
        "android.colorCorrection",
        "android.control",
        "android.demosaic",
        "android.edge",
        "android.flash",
        "android.flash.info",
        "android.hotPixel",
        "android.jpeg",
        "android.lens",
        "android.lens.info",
        "android.noiseReduction",
        "android.quirks",
        "android.request",
        "android.scaler",
        "android.sensor",
        "android.sensor.info",
        "android.shading",
        "android.statistics",
        "android.statistics.info",
        "android.tonemap",
        "android.led",
        "android.info",
        "android.blackLevel",
        "android.sync",
        "android.reprocess",
        "android.depth",
        "android.logicalMultiCamera",
        "android.distortionCorrection",
        "android.heic",
        "android.heic.info",
};

unsigned int camera_metadata_section_bounds[ANDROID_SECTION_COUNT][2] = {
        {ANDROID_COLOR_CORRECTION_START, ANDROID_COLOR_CORRECTION_END},
        {ANDROID_CONTROL_START, ANDROID_CONTROL_END},
        {ANDROID_DEMOSAIC_START, ANDROID_DEMOSAIC_END},
        {ANDROID_EDGE_START, ANDROID_EDGE_END},
        {ANDROID_FLASH_START, ANDROID_FLASH_END},
        {ANDROID_FLASH_INFO_START, ANDROID_FLASH_INFO_END},
        {ANDROID_HOT_PIXEL_START, ANDROID_HOT_PIXEL_END},
        {ANDROID_JPEG_START, ANDROID_JPEG_END},
        {ANDROID_LENS_START, ANDROID_LENS_END},
        {ANDROID_LENS_INFO_START, ANDROID_LENS_INFO_END},
        {ANDROID_NOISE_REDUCTION_START, ANDROID_NOISE_REDUCTION_END},
        {ANDROID_QUIRKS_START, ANDROID_QUIRKS_END},
        {ANDROID_REQUEST_START, ANDROID_REQUEST_END},
        {ANDROID_SCALER_START, ANDROID_SCALER_END},
        {ANDROID_SENSOR_START, ANDROID_SENSOR_END},
        {ANDROID_SENSOR_INFO_START, ANDROID_SENSOR_INFO_END},
        {ANDROID_SHADING_START, ANDROID_SHADING_END},
        {ANDROID_STATISTICS_START, ANDROID_STATISTICS_END},
        {ANDROID_STATISTICS_INFO_START, ANDROID_STATISTICS_INFO_END},
        {ANDROID_TONEMAP_START, ANDROID_TONEMAP_END},
        {ANDROID_LED_START, ANDROID_LED_END},
        {ANDROID_INFO_START, ANDROID_INFO_END},
        {ANDROID_BLACK_LEVEL_START, ANDROID_BLACK_LEVEL_END},
        {ANDROID_SYNC_START, ANDROID_SYNC_END},
        {ANDROID_REPROCESS_START, ANDROID_REPROCESS_END},
        {ANDROID_DEPTH_START, ANDROID_DEPTH_END},
        {ANDROID_LOGICAL_MULTI_CAMERA_START, ANDROID_LOGICAL_MULTI_CAMERA_END},
        {ANDROID_DISTORTION_CORRECTION_START, ANDROID_DISTORTION_CORRECTION_END},
        {ANDROID_HEIC_START, ANDROID_HEIC_END},
        {ANDROID_HEIC_INFO_START, ANDROID_HEIC_INFO_END},
};

namespace {

/** Finds a vendor's tag whose id is in the vendors' range, too. */
TagInfo const* findVendorTag(uint32_t tag) {
    return tag < CAMERA_METADATA_VENDOR_TAG_BOUNDARY ? nullptr : findTag(vendorTags(), tag);
}

char const* sectionOfPlatformTag(vendor_tag_ops_t const* /*ops*/, uint32_t tag) {
    return findVendorTag(tag) == nullptr ? nullptr : "vendor";
}

char const* nameOfPlatformTag(vendor_tag_ops_t const* /*ops*/, uint32_t tag) {
    TagInfo const* const info = findVendorTag(tag);
    return info == nullptr ? nullptr : info->name;
}

int typeOfPlatformTag(vendor_tag_ops_t const* /*ops*/, uint32_t tag) {
    TagInfo const* const info = findVendorTag(tag);
    return info == nullptr ? -1 : info->type;
}

// The list of the tags is never asked for.
constexpr vendor_tag_ops_t kPlatformTags = {
        nullptr, nullptr, sectionOfPlatformTag, nameOfPlatformTag, typeOfPlatformTag, {}};

std::atomic<vendor_tag_ops_t const*> gVendorTags{&kPlatformTags};
std::atomic<vendor_tag_cache_ops const*> gVendorsTags{nullptr};

/** Asks about a vendor's tag: the operations for the vendor id, else those of the process. */
template <typename ByVendor, typename OfProcess, typename Answer>
Answer askVendor(metadata_vendor_id_t id, ByVendor const& byVendor, OfProcess const& ofProcess,
                 Answer unknown) {
    vendor_tag_cache_ops const* const vendors = gVendorsTags;
    if (vendors != nullptr && id != CAMERA_METADATA_INVALID_VENDOR_ID) {
        return byVendor(*vendors);
    }
    vendor_tag_ops_t const* const ops = gVendorTags;
    return ops == nullptr ? unknown : ofProcess(ops);
}

bool isVendorTag(uint32_t tag) {
    return tag >= CAMERA_METADATA_VENDOR_TAG_BOUNDARY;
}

}  // namespace

int set_camera_metadata_vendor_ops(const vendor_tag_ops_t* query_ops) {
    gVendorTags = query_ops;
    return quen::host::kMetadataOk;
}

int set_camera_metadata_vendor_cache_ops(const struct vendor_tag_cache_ops* query_cache_ops) {
    gVendorsTags = query_cache_ops;
    return quen::host::kMetadataOk;
}

void set_camera_metadata_vendor_id(camera_metadata_t* meta, metadata_vendor_id_t id) {
    if (meta != nullptr) {
        meta->vendor_id = id;
    }
}

metadata_vendor_id_t get_camera_metadata_vendor_id(const camera_metadata_t* meta) {
    return meta == nullptr ? CAMERA_METADATA_INVALID_VENDOR_ID : meta->vendor_id;
}

const char* get_local_camera_metadata_section_name_vendor_id(uint32_t tag,
                                                             metadata_vendor_id_t id) {
    if (isVendorTag(tag)) {
        return askVendor(
                id, [=](auto const& vendors) { return vendors.get_section_name(tag, id); },
                [=](auto const* ops) { return ops->get_section_name(ops, tag); },
                static_cast<char const*>(nullptr));
    }
    uint32_t const section = tag >> 16;
    return section < ANDROID_SECTION_COUNT ? camera_metadata_section_names[section] : nullptr;
}

const char* get_local_camera_metadata_tag_name_vendor_id(uint32_t tag, metadata_vendor_id_t id) {
    if (isVendorTag(tag)) {
        return askVendor(
                id, [=](auto const& vendors) { return vendors.get_tag_name(tag, id); },
                [=](auto const* ops) { return ops->get_tag_name(ops, tag); },
                static_cast<char const*>(nullptr));
    }
    // The table has full names, which begin with the name of the section.
    TagInfo const* const info = findTag(androidTags(), tag);
    return info == nullptr ? nullptr : strrchr(info->name, '.') + 1;
}

int get_local_camera_metadata_tag_type_vendor_id(uint32_t tag, metadata_vendor_id_t id) {
    if (isVendorTag(tag)) {
        return askVendor(
                id, [=](auto const& vendors) { return vendors.get_tag_type(tag, id); },
                [=](auto const* ops) { return ops->get_tag_type(ops, tag); }, -1);
    }
    TagInfo const* const info = findTag(androidTags(), tag);
    return info == nullptr ? -1 : info->type;
}

const char* get_local_camera_metadata_section_name(uint32_t tag, const camera_metadata_t* meta) {
    return get_local_camera_metadata_section_name_vendor_id(tag,
                                                            get_camera_metadata_vendor_id(meta));
}

const char* get_local_camera_metadata_tag_name(uint32_t tag, const camera_metadata_t* meta) {
    return get_local_camera_metadata_tag_name_vendor_id(tag, get_camera_metadata_vendor_id(meta));
}

int get_local_camera_metadata_tag_type(uint32_t tag, const camera_metadata_t* meta) {
    return get_local_camera_metadata_tag_type_vendor_id(tag, get_camera_metadata_vendor_id(meta));
}

const char* get_camera_metadata_section_name(uint32_t tag) {
    return get_local_camera_metadata_section_name(tag, nullptr);
}

const char* get_camera_metadata_tag_name(uint32_t tag) {
    return get_local_camera_metadata_tag_name(tag, nullptr);
}

int get_camera_metadata_tag_type(uint32_t tag) {
    return get_local_camera_metadata_tag_type(tag, nullptr);
}
