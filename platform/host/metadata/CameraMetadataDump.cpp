#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <string>

#include <unistd.h>

#include "host/metadata/CameraMetadataLayout.h"

using namespace quen::host;

namespace {

constexpr int kMostOfMany = 16;  // values of an entry, below verbosity 2

/** Values on one line of text, by type. */
constexpr size_t kValuesPerLine[NUM_TYPES] = {16, 4, 8, 2, 4, 2};

template <typename T>
T load(uint8_t const* items, size_t index) {
    T item;
    memcpy(&item, items + index * sizeof(item), sizeof(item));
    return item;
}

/** Formats one value, followed by a blank. */
std::string valueText(uint8_t type, uint8_t const* items, size_t index) {
    char text[400] = "";  // the longest double takes 320
    switch (type) {
        case TYPE_BYTE:
            snprintf(text, sizeof(text), "%u ", items[index]);
            break;
        case TYPE_INT32:
            snprintf(text, sizeof(text), "%" PRId32 " ", load<int32_t>(items, index));
            break;
        case TYPE_FLOAT:
            snprintf(text, sizeof(text), "%0.8f ", static_cast<double>(load<float>(items, index)));
            break;
        case TYPE_INT64:
            snprintf(text, sizeof(text), "%" PRId64 " ", load<int64_t>(items, index));
            break;
        case TYPE_DOUBLE:
            snprintf(text, sizeof(text), "%0.8f ", load<double>(items, index));
            break;
        case TYPE_RATIONAL: {
            auto const value = load<camera_metadata_rational_t>(items, index);
            snprintf(text, sizeof(text), "(%d / %d) ", value.numerator, value.denominator);
            break;
        }
        default:
            break;
    }
    return text;
}

void appendValues(std::string& text, MetadataEntry const& entry, uint8_t const* items, size_t count,
                  std::string const& margin) {
    size_t const perLine = kValuesPerLine[entry.type];
    for (size_t first = 0; first < count; first += perLine) {
        text += margin + "    [";
        for (size_t i = first; i < std::min(first + perLine, count); ++i) {
            text += valueText(entry.type, items, i);
        }
        text += "]\n";
    }
}

char const* orElse(char const* name, char const* otherwise) {
    return name == nullptr ? otherwise : name;
}

void appendEntry(std::string& text, camera_metadata const* metadata, MetadataEntry const& entry,
                 int verbosity, std::string const& margin) {
    bool const isTyped = entry.type < NUM_TYPES;
    char id[24];
    snprintf(id, sizeof(id), " (%05" PRIx32 "): ", entry.tag);
    text += margin + "  ";
    text += orElse(get_local_camera_metadata_section_name(entry.tag, metadata), "unknownSection");
    text += '.';
    text += orElse(get_local_camera_metadata_tag_name(entry.tag, metadata), "unknownTag");
    text += id;
    text += isTyped ? camera_metadata_type_names[entry.type] : "unknown";
    text += '[' + std::to_string(entry.count) + "]\n";
    if (verbosity < 1 || !isTyped) {
        return;
    }
    bool const isInline = itemBytes(entry) <= kInlineDataBytes;
    if (!isInline && entry.data.offset >= metadata->data_count) {
        return;  // an offset outside of the data
    }
    uint8_t const* const items = isInline ? entry.data.value : dataOf(metadata) + entry.data.offset;
    size_t const count = verbosity < 2 ? std::min<size_t>(entry.count, kMostOfMany) : entry.count;
    appendValues(text, entry, items, count, margin);
}

std::string dumpText(camera_metadata const* metadata, int verbosity, std::string const& margin) {
    if (metadata == nullptr) {
        return margin + "Dumping camera metadata array: Not allocated\n";
    }
    char head[200];
    snprintf(head, sizeof(head),
             "Dumping camera metadata array: %" PRIu32 " / %" PRIu32 " entries, %" PRIu32
             " / %" PRIu32 " bytes of extra data.\n",
             metadata->entry_count, metadata->entry_capacity, metadata->data_count,
             metadata->data_capacity);
    std::string text = margin + head;
    snprintf(head, sizeof(head), "  Version: %" PRIu32 ", Flags: %08" PRIx32 "\n",
             metadata->version, metadata->flags);
    text += margin + head;
    for (uint32_t i = 0; i < metadata->entry_count; ++i) {
        appendEntry(text, metadata, entriesOf(metadata)[i], verbosity, margin);
    }
    return text;
}

}  // namespace

void dump_indented_camera_metadata(const camera_metadata_t* metadata, int fd, int verbosity,
                                   int indentation) {
    std::string const margin(static_cast<size_t>(std::max(indentation, 0)), ' ');
    std::string const text = dumpText(metadata, verbosity, margin);
    for (size_t written = 0; written < text.size();) {
        ssize_t const count = write(fd, text.data() + written, text.size() - written);
        if (count <= 0) {
            return;  // the reader has closed it
        }
        written += static_cast<size_t>(count);
    }
}

void dump_camera_metadata(const camera_metadata_t* metadata, int fd, int verbosity) {
    dump_indented_camera_metadata(metadata, fd, verbosity, 0);
}
