#include <cstring>

#include "host/metadata/CameraMetadataLayout.h"

using namespace quen::host;

namespace {

/** Checks that the header places all parts within the buffer, in order. */
bool isHeaderSound(camera_metadata const& header) {
    uint64_t const entriesEnd = uint64_t{header.entries_start} +
                                uint64_t{header.entry_capacity} * sizeof(MetadataEntry);
    uint64_t const dataEnd = uint64_t{header.data_start} + header.data_capacity;
    return header.entry_count <= header.entry_capacity &&
           header.data_count <= header.data_capacity && entriesEnd <= header.data_start &&
           dataEnd <= header.size;
}

/** Checks that the entries, if there are any, are aligned and lie behind the header. */
bool isPlaceSound(camera_metadata const& header) {
    return header.entry_count == 0 || (header.entries_start >= sizeof(camera_metadata) &&
                                       header.entries_start % alignof(MetadataEntry) == 0);
}

bool isTypeSound(MetadataEntry const& entry, camera_metadata const& header) {
    if (entry.type >= NUM_TYPES) {
        return false;
    }
    return entry.tag >= CAMERA_METADATA_VENDOR_TAG_BOUNDARY ||
           get_local_camera_metadata_tag_type(entry.tag, &header) == entry.type;
}

/** Checks that an entry's data lies within data_count: copies leave out what is behind it. */
bool isDataSound(MetadataEntry const& entry, camera_metadata const& header) {
    uint64_t const bytes = uint64_t{entry.count} * camera_metadata_type_size[entry.type];
    if (bytes == 0) {
        return entry.data.offset == 0;
    }
    if (bytes <= kInlineDataBytes) {
        return true;
    }
    uint64_t const place = uint64_t{header.data_start} + entry.data.offset;
    return place % kDataAlignment == 0 &&
           entry.data.offset + uint64_t{dataBytes(entry)} <= header.data_count;
}

}  // namespace

int validate_camera_metadata_structure(const camera_metadata_t* metadata,
                                       const size_t* expected_size) {
    if (metadata == nullptr) {
        return CAMERA_METADATA_VALIDATION_ERROR;
    }
    // The buffer may lie at any address: it is read through copies only.
    void const* const address = metadata;
    auto const* const bytes = static_cast<uint8_t const*>(address);
    if (expected_size != nullptr && *expected_size < sizeof(camera_metadata)) {
        return CAMERA_METADATA_VALIDATION_ERROR;
    }
    camera_metadata header;
    memcpy(&header, bytes, sizeof(header));
    if ((expected_size != nullptr && header.size > *expected_size) || !isHeaderSound(header) ||
        !isPlaceSound(header)) {
        return CAMERA_METADATA_VALIDATION_ERROR;
    }
    for (uint32_t i = 0; i < header.entry_count; ++i) {
        MetadataEntry entry;
        memcpy(&entry, bytes + header.entries_start + i * sizeof(entry), sizeof(entry));
        if (!isTypeSound(entry, header) || !isDataSound(entry, header)) {
            return CAMERA_METADATA_VALIDATION_ERROR;
        }
    }
    bool const isAligned = reinterpret_cast<uintptr_t>(address) % kDataAlignment == 0;
    return isAligned ? kMetadataOk : CAMERA_METADATA_VALIDATION_SHIFTED;
}
