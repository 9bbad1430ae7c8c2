#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace quen::host {

/** Properties of a metadata tag. */
struct TagInfo {
    uint32_t tag;
    char const* name;  ///< "currentMode", "android.jpeg.quality"
    uint8_t type;      ///< of its items in a `camera_metadata` (TYPE_BYTE ... TYPE_RATIONAL)
    int metadataType;  ///< of its items in an IMetadata (IMetadata::TYPE_*)
    uint32_t count;    ///< `camera_metadata` items of a whole value; 0 for a list of any length
};

/** Tags in ascending order of their ids. */
struct TagRange {
    TagInfo const* first;
    TagInfo const* last;

    TagInfo const* begin() const { return first; }
    TagInfo const* end() const { return last; }
    size_t size() const { return static_cast<size_t>(last - first); }
    TagInfo const& operator[](size_t index) const { return first[index]; }
};

/** Android 11's own tags. */
TagRange androidTags();

/** The chip maker's and the phone maker's tags, one of which has an id in an Android section. */
TagRange vendorTags();

/** Find a tag by id; null for an unknown one. */
TagInfo const* findTag(TagRange const& tags, uint32_t tag);
TagInfo const* findTag(uint32_t tag);

/** Finds a tag by name, ignoring case; null for an unknown one. */
TagInfo const* findTag(std::string_view name);

}  // namespace quen::host
