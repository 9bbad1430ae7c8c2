#include "host/metadata/CameraMetadataLayout.h"

#include <cstdlib>
#include <cstring>

using namespace quen::host;

namespace {

size_t dataStart(size_t entryCapacity) {
    return alignData(sizeof(camera_metadata) + entryCapacity * sizeof(MetadataEntry));
}

/** Checks that 32 bits can hold the size of a buffer of such capacities. */
bool isRepresentable(size_t entryCapacity, size_t dataCapacity) {
    constexpr size_t kMost = UINT32_MAX - kDataAlignment;
    return entryCapacity <= (kMost - sizeof(camera_metadata)) / sizeof(MetadataEntry) &&
           dataCapacity <= kMost - dataStart(entryCapacity);
}

}  // namespace

size_t calculate_camera_metadata_size(size_t entry_count, size_t data_count) {
    return alignData(dataStart(entry_count) + data_count);
}

size_t calculate_camera_metadata_entry_data_size(uint8_t type, size_t data_count) {
    if (type >= NUM_TYPES) {
        return 0;
    }
    size_t const bytes = data_count * camera_metadata_type_size[type];
    return bytes <= kInlineDataBytes ? 0 : alignData(bytes);
}

camera_metadata_t* place_camera_metadata(void* dst, size_t dst_size, size_t entry_capacity,
                                         size_t data_capacity) {
    if (dst == nullptr || !isRepresentable(entry_capacity, data_capacity)) {
        return nullptr;
    }
    size_t const size = calculate_camera_metadata_size(entry_capacity, data_capacity);
    if (size > dst_size) {
        return nullptr;
    }
    auto* const metadata = static_cast<camera_metadata*>(dst);
    *metadata = {};
    metadata->size = static_cast<uint32_t>(size);
    metadata->version = kMetadataVersion;
    metadata->entry_capacity = static_cast<uint32_t>(entry_capacity);
    metadata->entries_start = sizeof(camera_metadata);
    metadata->data_capacity = static_cast<uint32_t>(data_capacity);
    metadata->data_start = static_cast<uint32_t>(dataStart(entry_capacity));
    metadata->vendor_id = kNoVendorId;
    return metadata;
}

camera_metadata_t* allocate_camera_metadata(size_t entry_capacity, size_t data_capacity) {
    if (!isRepresentable(entry_capacity, data_capacity)) {
        return nullptr;
    }
    size_t const size = calculate_camera_metadata_size(entry_capacity, data_capacity);
    void* const memory = calloc(1, size);
    return place_camera_metadata(memory, size, entry_capacity, data_capacity);
}

void free_camera_metadata(camera_metadata_t* metadata) {
    free(metadata);
}

size_t get_camera_metadata_size(const camera_metadata_t* metadata) {
    return metadata == nullptr ? kMetadataError : metadata->size;
}

size_t get_camera_metadata_compact_size(const camera_metadata_t* metadata) {
    return metadata == nullptr
                   ? kMetadataError
                   : calculate_camera_metadata_size(metadata->entry_count, metadata->data_count);
}

size_t get_camera_metadata_entry_count(const camera_metadata_t* metadata) {
    return metadata == nullptr ? 0 : metadata->entry_count;
}

size_t get_camera_metadata_entry_capacity(const camera_metadata_t* metadata) {
    return metadata == nullptr ? 0 : metadata->entry_capacity;
}

size_t get_camera_metadata_data_count(const camera_metadata_t* metadata) {
    return metadata == nullptr ? 0 : metadata->data_count;
}

size_t get_camera_metadata_data_capacity(const camera_metadata_t* metadata) {
    return metadata == nullptr ? 0 : metadata->data_capacity;
}

camera_metadata_t* copy_camera_metadata(void* dst, size_t dst_size, const camera_metadata_t* src) {
    if (src == nullptr) {
        return nullptr;
    }
    camera_metadata* const metadata =
            place_camera_metadata(dst, dst_size, src->entry_count, src->data_count);
    if (metadata == nullptr) {
        return nullptr;
    }
    metadata->flags = src->flags;
    metadata->entry_count = src->entry_count;
    metadata->data_count = src->data_count;
    metadata->vendor_id = src->vendor_id;
    memcpy(entriesOf(metadata), entriesOf(src), src->entry_count * sizeof(MetadataEntry));
    memcpy(dataOf(metadata), dataOf(src), src->data_count);
    return metadata;
}

camera_metadata_t* clone_camera_metadata(const camera_metadata_t* src) {
    if (src == nullptr) {
        return nullptr;
    }
    size_t const size = get_camera_metadata_compact_size(src);
    return copy_camera_metadata(calloc(1, size), size, src);
}

camera_metadata_t* allocate_copy_camera_metadata_checked(const camera_metadata_t* src,
                                                         size_t src_size) {
    if (src == nullptr || src_size < sizeof(camera_metadata)) {
        return nullptr;
    }
    void* const memory = calloc(1, src_size);
    if (memory == nullptr) {
        return nullptr;
    }
    memcpy(memory, src, src_size);
    auto* const metadata = static_cast<camera_metadata*>(memory);
    if (validate_camera_metadata_structure(metadata, &src_size) != kMetadataOk) {
        free(memory);
        return nullptr;
    }
    return metadata;
}
