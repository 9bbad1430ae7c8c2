#pragma once

#include <cstdint>

namespace NSCam {

/** Types and names of the metadata tags. */
class IMetadataTagSet {
  public:
    virtual ~IMetadataTagSet() = default;

    /** Returns the type of a tag (`IMetadata::TYPE_*`), TYPE_UNKNOWN for an unknown one. */
    virtual int typeOf(uint32_t tag) const = 0;

    /** Returns the name of a tag, null for an unknown one. */
    virtual char const* nameOf(uint32_t tag) const = 0;
};

/** Access to the tag set of the platform. */
class IDefaultMetadataTagSet {
  public:
    static IDefaultMetadataTagSet* singleton();

    virtual ~IDefaultMetadataTagSet() = default;

    virtual IMetadataTagSet const& getTagSet() const = 0;
};

}  // namespace NSCam
