#pragma once

#include <cstddef>
#include <cstdint>

#include <nscam/IMetadata.h>
#include <system/camera_metadata.h>

#include "host/metadata/VendorTags.h"

namespace quen::host {

/** Make the record of a tag: its type in both forms of metadata, its number of items. */
constexpr TagInfo bytes(uint32_t tag, char const* name, uint32_t count) {
    return {tag, name, TYPE_BYTE, NSCam::IMetadata::TYPE_MUINT8, count};
}

constexpr TagInfo ints(uint32_t tag, char const* name, uint32_t count) {
    return {tag, name, TYPE_INT32, NSCam::IMetadata::TYPE_MINT32, count};
}

constexpr TagInfo longs(uint32_t tag, char const* name, uint32_t count) {
    return {tag, name, TYPE_INT64, NSCam::IMetadata::TYPE_MINT64, count};
}

constexpr TagInfo floats(uint32_t tag, char const* name, uint32_t count) {
    return {tag, name, TYPE_FLOAT, NSCam::IMetadata::TYPE_MFLOAT, count};
}

constexpr TagInfo doubles(uint32_t tag, char const* name, uint32_t count) {
    return {tag, name, TYPE_DOUBLE, NSCam::IMetadata::TYPE_MDOUBLE, count};
}

constexpr TagInfo rationals(uint32_t tag, char const* name, uint32_t count) {
    return {tag, name, TYPE_RATIONAL, NSCam::IMetadata::TYPE_MRational, count};
}

constexpr TagInfo rectangle(uint32_t tag, char const* name) {
    return {tag, name, TYPE_INT32, NSCam::IMetadata::TYPE_MRect, 4};
}

inline constexpr uint32_t kAnyNumber = 0;

/** Checks that a table's ids ascend, as binary search needs. */
template <size_t SIZE>
constexpr bool isAscending(TagInfo const (&tags)[SIZE]) {
    for (size_t i = 1; i < SIZE; ++i) {
        if (tags[i - 1].tag >= tags[i].tag) {
            return false;
        }
    }
    return true;
}

}  // namespace quen::host
