#include <algorithm>
#include <cerrno>
#include <cstring>

#include "host/metadata/CameraMetadataLayout.h"

using namespace quen::host;

namespace {

bool tagLess(MetadataEntry const& left, MetadataEntry const& right) {
    return left.tag < right.tag;
}

/**
 * Writes items to an entry's data, and zeroes the padding behind them. `data` may be the entry's
 * own.
 */
void writeData(camera_metadata* metadata, MetadataEntry const& entry, void const* data) {
    size_t const bytes = itemBytes(entry);
    uint8_t* const destination = dataOf(metadata) + entry.data.offset;
    memmove(destination, data, bytes);
    memset(destination + bytes, 0, dataBytes(entry) - bytes);
}

/**
 * Stores the items of an entry that has no data: in the entry itself, or at the end of the data,
 * where the caller has checked for room.
 */
void storeItems(camera_metadata* metadata, MetadataEntry& entry, void const* data) {
    size_t const bytes = itemBytes(entry);
    if (bytes > kInlineDataBytes) {
        entry.data.offset = metadata->data_count;
        writeData(metadata, entry, data);
        metadata->data_count += static_cast<uint32_t>(dataBytes(entry));
        return;
    }
    uint8_t items[kInlineDataBytes] = {};
    if (bytes != 0) {
        memcpy(items, data, bytes);  // they may be the entry's own
    }
    memcpy(entry.data.value, items, sizeof(items));
}

/** Removes an entry's data and closes the gap. The caller updates the entry itself. */
void removeData(camera_metadata* metadata, MetadataEntry const& entry) {
    uint32_t const taken = static_cast<uint32_t>(dataBytes(entry));
    if (taken == 0) {
        return;
    }
    uint32_t const offset = entry.data.offset;
    uint8_t* const gap = dataOf(metadata) + offset;
    memmove(gap, gap + taken, metadata->data_count - offset - taken);
    metadata->data_count -= taken;
    MetadataEntry* const entries = entriesOf(metadata);
    for (uint32_t i = 0; i < metadata->entry_count; ++i) {
        if (dataBytes(entries[i]) != 0 && entries[i].data.offset > offset) {
            entries[i].data.offset -= taken;
        }
    }
}

/** Checks that 32 bits can hold the size of so many items. */
bool isCountable(uint8_t type, size_t count) {
    return count <= (UINT32_MAX - kDataAlignment) / camera_metadata_type_size[type];
}

void const* itemsOf(camera_metadata const* metadata, MetadataEntry const& entry) {
    if (dataBytes(entry) == 0) {
        return entry.data.value;
    }
    return dataOf(metadata) + entry.data.offset;
}

template <typename Entry>
void describe(camera_metadata const* metadata, size_t index, Entry* out) {
    MetadataEntry const& entry = entriesOf(metadata)[index];
    out->index = index;
    out->tag = entry.tag;
    out->type = entry.type;
    out->count = entry.count;
    // Serves both record types: a writable pointer is only returned for a writable buffer.
    out->data.u8 = static_cast<uint8_t*>(const_cast<void*>(itemsOf(metadata, entry)));
}

int findIndex(camera_metadata const* metadata, uint32_t tag, size_t* index) {
    if (metadata == nullptr) {
        return kMetadataError;
    }
    MetadataEntry const* const first = entriesOf(metadata);
    MetadataEntry const* const last = first + metadata->entry_count;
    MetadataEntry const* found = last;
    if ((metadata->flags & kMetadataSorted) != 0) {
        MetadataEntry key{};
        key.tag = tag;
        found = std::lower_bound(first, last, key, tagLess);
    } else {
        found = std::find_if(first, last,
                             [tag](MetadataEntry const& entry) { return entry.tag == tag; });
    }
    if (found == last || found->tag != tag) {
        return -ENOENT;
    }
    *index = static_cast<size_t>(found - first);
    return kMetadataOk;
}

template <typename Metadata, typename Entry>
int getEntry(Metadata* src, size_t index, Entry* entry) {
    if (src == nullptr || entry == nullptr || index >= src->entry_count) {
        return kMetadataError;
    }
    describe(src, index, entry);
    return kMetadataOk;
}

template <typename Metadata, typename Entry>
int findEntry(Metadata* src, uint32_t tag, Entry* entry) {
    size_t index = 0;
    int const error = findIndex(src, tag, &index);
    return error != kMetadataOk ? error : getEntry(src, index, entry);
}

}  // namespace

namespace quen::host {

int addEntryOfType(camera_metadata* metadata, uint32_t tag, uint8_t type, void const* data,
                   size_t count) {
    if (metadata == nullptr || type >= NUM_TYPES || (data == nullptr && count != 0) ||
        metadata->entry_count == metadata->entry_capacity || !isCountable(type, count)) {
        return kMetadataError;
    }
    size_t const taken = calculate_camera_metadata_entry_data_size(type, count);
    if (taken > metadata->data_capacity - metadata->data_count) {
        return kMetadataError;
    }
    MetadataEntry& entry = entriesOf(metadata)[metadata->entry_count];
    entry = {};
    entry.tag = tag;
    entry.type = type;
    entry.count = static_cast<uint32_t>(count);
    storeItems(metadata, entry, data);
    ++metadata->entry_count;
    metadata->flags &= ~kMetadataSorted;
    return kMetadataOk;
}

}  // namespace quen::host

int add_camera_metadata_entry(camera_metadata_t* dst, uint32_t tag, const void* data,
                              size_t data_count) {
    int const type = get_local_camera_metadata_tag_type(tag, dst);
    if (type == -1) {
        return kMetadataError;
    }
    return addEntryOfType(dst, tag, static_cast<uint8_t>(type), data, data_count);
}

int append_camera_metadata(camera_metadata_t* dst, const camera_metadata_t* src) {
    if (dst == nullptr || src == nullptr ||
        src->entry_count > dst->entry_capacity - dst->entry_count ||
        src->data_count > dst->data_capacity - dst->data_count) {
        return kMetadataError;
    }
    if (dst->vendor_id == kNoVendorId) {
        dst->vendor_id = src->vendor_id;
    } else if (src->vendor_id != kNoVendorId && src->vendor_id != dst->vendor_id) {
        return kMetadataError;
    }
    if (src->entry_count == 0) {
        return kMetadataOk;
    }
    uint32_t const count = src->entry_count;
    uint32_t const bytes = src->data_count;
    MetadataEntry* const added = entriesOf(dst) + dst->entry_count;
    memcpy(added, entriesOf(src), count * sizeof(MetadataEntry));
    memcpy(dataOf(dst) + dst->data_count, dataOf(src), bytes);
    for (uint32_t i = 0; i < count; ++i) {
        if (dataBytes(added[i]) != 0) {
            added[i].data.offset += dst->data_count;
        }
    }
    // Entries appended to an empty buffer keep their order; others have to be sorted again.
    dst->flags &= ~kMetadataSorted;
    if (dst->entry_count == 0) {
        dst->flags |= src->flags & kMetadataSorted;
    }
    dst->entry_count += count;
    dst->data_count += bytes;
    return kMetadataOk;
}

int sort_camera_metadata(camera_metadata_t* dst) {
    if (dst == nullptr) {
        return kMetadataError;
    }
    if ((dst->flags & kMetadataSorted) == 0) {
        MetadataEntry* const entries = entriesOf(dst);
        std::sort(entries, entries + dst->entry_count, tagLess);
        dst->flags |= kMetadataSorted;
    }
    return kMetadataOk;
}

int get_camera_metadata_entry(camera_metadata_t* src, size_t index,
                              camera_metadata_entry_t* entry) {
    return getEntry(src, index, entry);
}

int get_camera_metadata_ro_entry(const camera_metadata_t* src, size_t index,
                                 camera_metadata_ro_entry_t* entry) {
    return getEntry(src, index, entry);
}

int find_camera_metadata_entry(camera_metadata_t* src, uint32_t tag,
                               camera_metadata_entry_t* entry) {
    return findEntry(src, tag, entry);
}

int find_camera_metadata_ro_entry(const camera_metadata_t* src, uint32_t tag,
                                  camera_metadata_ro_entry_t* entry) {
    return findEntry(src, tag, entry);
}

int delete_camera_metadata_entry(camera_metadata_t* dst, size_t index) {
    if (dst == nullptr || index >= dst->entry_count) {
        return kMetadataError;
    }
    MetadataEntry* const entries = entriesOf(dst);
    MetadataEntry* const deleted = entries + index;
    removeData(dst, *deleted);
    std::copy(deleted + 1, entries + dst->entry_count, deleted);
    --dst->entry_count;
    return kMetadataOk;
}

int update_camera_metadata_entry(camera_metadata_t* dst, size_t index, const void* data,
                                 size_t data_count, camera_metadata_entry_t* updated_entry) {
    if (dst == nullptr || index >= dst->entry_count || (data == nullptr && data_count != 0)) {
        return kMetadataError;
    }
    MetadataEntry& entry = entriesOf(dst)[index];
    if (!isCountable(entry.type, data_count)) {
        return kMetadataError;
    }
    size_t const taken = calculate_camera_metadata_entry_data_size(entry.type, data_count);
    size_t const takenBefore = dataBytes(entry);
    bool const staysInPlace = taken == takenBefore;
    if (!staysInPlace) {
        if (taken > dst->data_capacity - dst->data_count + takenBefore) {
            return kMetadataError;
        }
        removeData(dst, entry);
    }
    entry.count = static_cast<uint32_t>(data_count);
    if (staysInPlace && taken != 0) {
        writeData(dst, entry, data);
    } else {
        storeItems(dst, entry, data);
    }
    if (updated_entry != nullptr) {
        describe(dst, index, updated_entry);
    }
    return kMetadataOk;
}
