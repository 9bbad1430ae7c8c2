#include <nscam/IMetadata.h>
#include <nscam/IMetadataTagSet.h>

#include "host/metadata/VendorTags.h"

namespace NSCam {

namespace {

class TableTagSet final : public IMetadataTagSet {
  public:
    int typeOf(uint32_t tag) const override {
        auto const* const info = quen::host::findTag(tag);
        return info == nullptr ? IMetadata::TYPE_UNKNOWN : info->metadataType;
    }

    char const* nameOf(uint32_t tag) const override {
        auto const* const info = quen::host::findTag(tag);
        return info == nullptr ? nullptr : info->name;
    }
};

class DefaultMetadataTagSet final : public IDefaultMetadataTagSet {
  public:
    IMetadataTagSet const& getTagSet() const override { return mTagSet; }

  private:
    TableTagSet mTagSet;
};

}  // namespace

IDefaultMetadataTagSet* IDefaultMetadataTagSet::singleton() {
    static DefaultMetadataTagSet tagSet;
    return &tagSet;
}

}  // namespace NSCam
