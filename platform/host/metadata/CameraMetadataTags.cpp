#include <cstring>

#include <system/camera_metadata.h>

#include "host/metadata/VendorTags.h"

using quen::host::findTag;
using quen::host::TagInfo;

const size_t camera_metadata_type_size[NUM_TYPES] = {1, 4, 4, 8, 8, 8};

const char* camera_metadata_type_names[NUM_TYPES] = {"byte",  "int32",  "float",
                                                     "int64", "double", "rational"};

namespace {

constexpr char const* kSectionNames[ANDROID_SECTION_COUNT] = {
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

}  // namespace

const char* get_camera_metadata_section_name(uint32_t tag) {
    uint32_t const section = tag >> 16;
    if (section < ANDROID_SECTION_COUNT) {
        return kSectionNames[section];
    }
    return findTag(tag) == nullptr ? nullptr : "vendor";
}

const char* get_camera_metadata_tag_name(uint32_t tag) {
    TagInfo const* const info = findTag(tag);
    if (info == nullptr) {
        return nullptr;
    }
    // Android's tags are known by their full names, which begin with the section's.
    char const* const lastDot = strrchr(info->name, '.');
    return lastDot == nullptr ? info->name : lastDot + 1;
}

int get_camera_metadata_tag_type(uint32_t tag) {
    TagInfo const* const info = findTag(tag);
    return info == nullptr ? -1 : info->type;
}
