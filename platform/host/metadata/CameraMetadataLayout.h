#pragma once

#include <cstddef>
#include <cstdint>

#include <system/camera_metadata.h>

/**
 * The flat buffer: this header, then entries of 16 bytes, then the data of the entries whose items
 * are more than the four bytes that an entry holds itself. Each entry's data begins at a multiple
 * of 8. Offsets count from the header, those in entries from the data's start.
 */
struct camera_metadata {
    uint32_t size;  ///< bytes of the whole buffer
    uint32_t version;
    uint32_t flags;
    uint32_t entry_count;
    uint32_t entry_capacity;
    uint32_t entries_start;
    uint32_t data_count;     ///< bytes
    uint32_t data_capacity;  ///< bytes
    uint32_t data_start;
    uint32_t padding;
    uint64_t vendor_id;
};

static_assert(offsetof(camera_metadata, entry_count) == 12, "wrong offset");
static_assert(offsetof(camera_metadata, data_start) == 32, "wrong offset");
static_assert(offsetof(camera_metadata, vendor_id) == 40, "wrong offset");
static_assert(sizeof(camera_metadata) == 48, "wrong size");

namespace quen::host {

struct MetadataEntry {
    uint32_t tag;
    uint32_t count;  ///< items
    union {
        uint32_t offset;
        uint8_t value[4];
    } data;
    uint8_t type;
    uint8_t reserved[3];
};

static_assert(offsetof(MetadataEntry, data) == 8, "wrong offset");
static_assert(offsetof(MetadataEntry, type) == 12, "wrong offset");
static_assert(sizeof(MetadataEntry) == 16, "wrong size");

inline constexpr uint32_t kMetadataVersion = 1;
inline constexpr uint32_t kMetadataSorted = 1;  // in camera_metadata::flags
inline constexpr uint64_t kNoVendorId = UINT64_MAX;
inline constexpr size_t kInlineDataBytes = 4;
inline constexpr size_t kDataAlignment = 8;

inline constexpr int kMetadataOk = 0;
inline constexpr int kMetadataError = 1;

constexpr size_t alignData(size_t bytes) {
    return (bytes + kDataAlignment - 1) / kDataAlignment * kDataAlignment;
}

inline MetadataEntry* entriesOf(camera_metadata* metadata) {
    return reinterpret_cast<MetadataEntry*>(reinterpret_cast<uint8_t*>(metadata) +
                                            metadata->entries_start);
}

inline MetadataEntry const* entriesOf(camera_metadata const* metadata) {
    return entriesOf(const_cast<camera_metadata*>(metadata));
}

inline uint8_t* dataOf(camera_metadata* metadata) {
    return reinterpret_cast<uint8_t*>(metadata) + metadata->data_start;
}

inline uint8_t const* dataOf(camera_metadata const* metadata) {
    return dataOf(const_cast<camera_metadata*>(metadata));
}

/** Bytes of an entry's items, in the entry itself or in the data area. */
inline size_t itemBytes(MetadataEntry const& entry) {
    return camera_metadata_type_size[entry.type] * entry.count;
}

/** Bytes of the data area that an entry takes. */
inline size_t dataBytes(MetadataEntry const& entry) {
    return calculate_camera_metadata_entry_data_size(entry.type, entry.count);
}

/**
 * Appends an entry of the given type, which is not checked.
 *
 * @param data may be null when `count` is 0
 * @return kMetadataOk or kMetadataError
 */
int addEntryOfType(camera_metadata* metadata, uint32_t tag, uint8_t type, void const* data,
                   size_t count);

}  // namespace quen::host
