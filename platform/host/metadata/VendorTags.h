#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace quen::host {

/** What is known of one metadata tag. */
struct TagInfo {
    uint32_t tag;
    char const* name;  ///< "currentMode", "android.jpeg.quality"
    uint8_t type;      ///< of its items in a `camera_metadata` (TYPE_BYTE ... TYPE_RATIONAL)
    int metadataType;  ///< of its items in an IMetadata (IMetadata::TYPE_*)
    uint32_t count;    ///< `camera_metadata` items of a whole value; 0 for a list of any length
};

/** The known tags, in ascending order of their ids. */
struct TagRange {
    TagInfo const* first;
    TagInfo const* last;

    TagInfo const* begin() const { return first; }
    TagInfo const* end() const { return last; }
};

TagRange allTags();

/** Null for a tag that is not known. */
TagInfo const* findTag(uint32_t tag);

/** By name, upper and lower case alike; null when no tag has it. */
TagInfo const* findTag(std::string_view name);

}  // namespace quen::host
