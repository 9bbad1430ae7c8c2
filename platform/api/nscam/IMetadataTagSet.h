#pragma once

#include <cstdint>

namespace NSCam {

/** What is known of the metadata tags: the `IMetadata` type each one has. */
class IMetadataTagSet {
  public:
    virtual ~IMetadataTagSet() = default;

    /** Type code of a tag (`IMetadata::TYPE_*`), TYPE_UNKNOWN for a tag that is not known. */
    virtual int typeOf(uint32_t tag) const = 0;

    /** Name of a tag, or null for a tag that is not known. */
    virtual char const* nameOf(uint32_t tag) const = 0;
};

/** Where the platform keeps its tag set. */
class IDefaultMetadataTagSet {
  public:
    static IDefaultMetadataTagSet* singleton();

    virtual ~IDefaultMetadataTagSet() = default;

    virtual IMetadataTagSet const& getTagSet() const = 0;
};

}  // namespace NSCam
