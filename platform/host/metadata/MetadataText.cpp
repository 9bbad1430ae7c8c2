#include "host/metadata/MetadataText.h"

#include <cinttypes>
#include <cstdio>
#include <cstring>

#include "host/metadata/IspMetadataReader.h"
#include "host/metadata/VendorTags.h"

namespace quen::host {

namespace {

constexpr size_t kMostItems = 16;

/** Types of an ISP metadata buffer as those of a `camera_metadata`. */
constexpr uint8_t kTypeOfIspType[] = {TYPE_BYTE, TYPE_INT32, TYPE_INT64, TYPE_FLOAT};

template <typename T>
T load(uint8_t const* items, size_t index) {
    T item;
    memcpy(&item, items + index * sizeof(item), sizeof(item));
    return item;
}

void appendItem(std::string& text, uint8_t type, uint8_t const* items, size_t index) {
    char item[40] = "";
    switch (type) {
        case TYPE_BYTE:
            snprintf(item, sizeof(item), " %u", items[index]);
            break;
        case TYPE_INT32:
            snprintf(item, sizeof(item), " %" PRId32, load<int32_t>(items, index));
            break;
        case TYPE_FLOAT:
            snprintf(item, sizeof(item), " %g", static_cast<double>(load<float>(items, index)));
            break;
        case TYPE_INT64:
            snprintf(item, sizeof(item), " %" PRId64, load<int64_t>(items, index));
            break;
        case TYPE_DOUBLE:
            snprintf(item, sizeof(item), " %g", load<double>(items, index));
            break;
        case TYPE_RATIONAL: {
            auto const rational = load<camera_metadata_rational_t>(items, index);
            snprintf(item, sizeof(item), " %" PRId32 "/%" PRId32, rational.numerator,
                     rational.denominator);
            break;
        }
        default:
            break;
    }
    text += item;
}

/** @param items of no particular alignment */
void appendLine(std::string& text, uint32_t tag, uint8_t type, size_t count, uint8_t const* items) {
    TagInfo const* const info = findTag(tag);
    char head[24];
    snprintf(head, sizeof(head), "0x%08" PRIx32 " ", tag);
    text += head;
    text += info == nullptr ? "?" : info->name;
    text += ' ';
    text += type < NUM_TYPES ? camera_metadata_type_names[type] : "?";
    text += '[';
    text += std::to_string(count);
    text += ']';
    for (size_t i = 0; i < count && i < kMostItems; ++i) {
        appendItem(text, type, items, i);
    }
    if (count > kMostItems) {
        text += " ...";
    }
}

}  // namespace

void appendEntryText(std::string& text, camera_metadata_ro_entry_t const& entry) {
    appendLine(text, entry.tag, entry.type, entry.count, entry.data.u8);
}

std::string metadataText(camera_metadata const* metadata) {
    std::string text;
    size_t const count = get_camera_metadata_entry_count(metadata);
    for (size_t i = 0; i < count; ++i) {
        camera_metadata_ro_entry_t entry;
        if (get_camera_metadata_ro_entry(metadata, i, &entry) == 0) {
            appendEntryText(text, entry);
            text += '\n';
        }
    }
    return text;
}

std::string ispMetadataText(void const* data, size_t size) {
    IspMetadataReader reader;
    if (!reader.parse(data, size)) {
        return std::string("malformed: ") + reader.error() + '\n';
    }
    std::string text;
    for (size_t i = 0; i < reader.count(); ++i) {
        IspRecord const record = reader.at(i);
        appendLine(text, record.tag, kTypeOfIspType[record.type], record.count(), record.data);
        text += '\n';
    }
    return text;
}

}  // namespace quen::host
