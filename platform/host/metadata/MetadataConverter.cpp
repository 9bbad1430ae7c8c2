#include <nscam/IMetadataConverter.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <set>
#include <vector>

#include <mtkcam/log.h>

#include "host/base/Mutex.h"
#include "host/metadata/CameraMetadataLayout.h"

namespace NSCam {

namespace {

constexpr char kLogTag[] = "IMetadataConverter";
constexpr int kDebug = 0;  // the level's place in g_logInfoLv

/** Logs what a conversion leaves out, once per tag. Any thread. */
class LeftOut {
  public:
    void tell(IMetadata::IEntry const& entry, char const* reason);

  private:
    quen::host::Mutex mLock;
    std::set<uint32_t> mTold HOST_GUARDED_BY(mLock);  // tags that were logged
};

void LeftOut::tell(IMetadata::IEntry const& entry, char const* reason) {
    if (!mtkcam_testLog(kLogTag, 'D') || !g_logInfoLv[kDebug].enabled) {
        return;
    }
    {
        quen::host::MutexLock const lock(mLock);
        if (!mTold.insert(entry.tag()).second) {
            return;
        }
    }
    char text[160];
    snprintf(text, sizeof(text), "%s[%s] tag[0x%" PRIX32 "] type[%d] is left out: %s",
             g_logInfoLv[kDebug].prefix, kLogTag, entry.tag(), entry.type(), reason);
    log_dbg_print(kLogTag, kDebug, text);
}

/** Appends `count` packed items to an entry. */
template <typename T>
void pushItems(IMetadata::IEntry& entry, void const* items, size_t count) {
    entry.push_back(static_cast<T const*>(items), count, Type2Type<T>());
}

/** How a `camera_metadata` stores the items of an IMetadata type. */
struct FlatType {
    int type;             ///< -1: not at all
    size_t itemsPerItem;  ///< of that type
    void (*push)(IMetadata::IEntry& entry, void const* items, size_t count);
};

/** Indexed by IMetadata type; the first six also by `camera_metadata` type. */
constexpr FlatType kFlatTypes[] = {
        {TYPE_BYTE, 1, pushItems<uint8_t>},  {TYPE_INT32, 1, pushItems<int32_t>},
        {TYPE_FLOAT, 1, pushItems<float>},   {TYPE_INT64, 1, pushItems<int64_t>},
        {TYPE_DOUBLE, 1, pushItems<double>}, {TYPE_RATIONAL, 1, pushItems<MRational>},
        {TYPE_INT32, 2, pushItems<MPoint>},  {TYPE_INT32, 2, pushItems<MSize>},
        {TYPE_INT32, 4, pushItems<MRect>},   {-1, 0, nullptr},  // nested metadata
};

constexpr FlatType kNoFlatType = {-1, 0, nullptr};

static_assert(kFlatTypes[IMetadata::TYPE_MRect].itemsPerItem == 4, "one line a type, in order");
static_assert(sizeof(MRational) == sizeof(camera_metadata_rational), "copied as they are");

FlatType const& flatTypeOf(int metadataType) {
    return metadataType < 0 ? kNoFlatType : kFlatTypes[metadataType];
}

/** An entry to write to a `camera_metadata`. */
struct FlatEntry {
    IMetadata::IEntry entry;
    uint8_t type;
    size_t count;
};

class MetadataConverter final : public IMetadataConverter {
  public:
    explicit MetadataConverter(IMetadataTagSet const& tagSet) : mTagSet(tagSet) {}

    bool convert(IMetadata const& metadata, camera_metadata*& buffer, size_t* size) const override;
    bool convert(IMetadata const& metadata,
                 android::hardware::hidl_vec<uint8_t>& buffer) const override;
    bool convert(camera_metadata const* buffer, IMetadata& metadata) const override;

  private:
    static std::vector<camera_metadata_ro_entry> entriesInTagOrder(camera_metadata const* buffer);
    int flatTypeOfTag(uint32_t tag) const;
    bool flatten(IMetadata::IEntry&& entry, std::vector<FlatEntry>& out) const;
    IMetadata::IEntry unflatten(camera_metadata_ro_entry const& flat) const;

    IMetadataTagSet const& mTagSet;
    mutable LeftOut mLeftOut;
};

/** Returns the `camera_metadata` type of a tag; -1 for an unknown one. */
int MetadataConverter::flatTypeOfTag(uint32_t tag) const {
    int const type = get_camera_metadata_tag_type(tag);
    return type != -1 ? type : flatTypeOf(mTagSet.typeOf(tag)).type;
}

/** Adds an entry to those to write. Logs why and returns false when it cannot be written. */
bool MetadataConverter::flatten(IMetadata::IEntry&& entry, std::vector<FlatEntry>& out) const {
    bool const isVendorTag = entry.tag() >= CAMERA_METADATA_VENDOR_TAG_BOUNDARY;
    if (!isVendorTag && get_camera_metadata_tag_type(entry.tag()) == -1) {
        // Validation would refuse the whole buffer.
        mLeftOut.tell(entry, "Android has no such tag");
        return false;
    }
    int const typeOfTag = flatTypeOfTag(entry.tag());
    FlatType const& flat = flatTypeOf(entry.type());
    if (entry.isEmpty() && typeOfTag != -1) {
        out.push_back({std::move(entry), static_cast<uint8_t>(typeOfTag), 0});
        return true;
    }
    if (flat.type == -1) {
        bool const isTyped = entry.type() != IMetadata::TYPE_UNKNOWN;
        mLeftOut.tell(entry,
                      isTyped ? "camera_metadata has no such type" : "its type is not known");
        return false;
    }
    if (typeOfTag != -1 && typeOfTag != flat.type) {
        mLeftOut.tell(entry, "the tag has another type");
        return false;
    }
    size_t const count = entry.count() * flat.itemsPerItem;
    out.push_back({std::move(entry), static_cast<uint8_t>(flat.type), count});
    return true;
}

bool MetadataConverter::convert(IMetadata const& metadata, camera_metadata*& buffer,
                                size_t* size) const {
    std::vector<FlatEntry> entries;
    entries.reserve(metadata.count());
    size_t dataBytes = 0;
    for (size_t i = 0; i < metadata.count(); ++i) {
        if (flatten(metadata.entryAt(i), entries)) {
            dataBytes += calculate_camera_metadata_entry_data_size(entries.back().type,
                                                                   entries.back().count);
        }
    }
    camera_metadata* const result = allocate_camera_metadata(entries.size(), dataBytes);
    if (result == nullptr) {
        return false;
    }
    for (FlatEntry const& flat : entries) {
        if (quen::host::addEntryOfType(result, flat.entry.tag(), flat.type, flat.entry.data(),
                                       flat.count) != 0) {
            free_camera_metadata(result);
            return false;
        }
    }
    sort_camera_metadata(result);
    buffer = result;
    if (size != nullptr) {
        *size = get_camera_metadata_size(result);
    }
    return true;
}

bool MetadataConverter::convert(IMetadata const& metadata,
                                android::hardware::hidl_vec<uint8_t>& buffer) const {
    camera_metadata* result = nullptr;
    size_t size = 0;
    if (!convert(metadata, result, &size)) {
        return false;
    }
    buffer.setToExternal(reinterpret_cast<uint8_t*>(result), size);
    return true;
}

/** Converts an entry to the type of the tag set; to plain items when they do not fit it. */
IMetadata::IEntry MetadataConverter::unflatten(camera_metadata_ro_entry const& flat) const {
    IMetadata::IEntry entry(flat.tag);
    FlatType const& ofTag = flatTypeOf(mTagSet.typeOf(flat.tag));
    bool const fits = flat.type == ofTag.type && flat.count % ofTag.itemsPerItem == 0;
    FlatType const& used = fits ? ofTag : kFlatTypes[flat.type];
    used.push(entry, flat.data.u8, flat.count / used.itemsPerItem);
    return entry;
}

/**
 * Returns the entries in the order of their tags, stable within a tag. IMetadata is filled fastest
 * in this order: an insertion moves all entries behind it.
 */
std::vector<camera_metadata_ro_entry> MetadataConverter::entriesInTagOrder(
        camera_metadata const* buffer) {
    size_t const count = get_camera_metadata_entry_count(buffer);
    std::vector<camera_metadata_ro_entry> entries;
    entries.reserve(count);
    for (size_t i = 0; i < count; ++i) {
        camera_metadata_ro_entry flat;
        if (get_camera_metadata_ro_entry(buffer, i, &flat) == 0 && flat.type < NUM_TYPES) {
            entries.push_back(flat);
        }
    }
    auto const isBefore = [](auto const& a, auto const& b) { return a.tag < b.tag; };
    if (!std::is_sorted(entries.begin(), entries.end(), isBefore)) {
        std::stable_sort(entries.begin(), entries.end(), isBefore);
    }
    return entries;
}

bool MetadataConverter::convert(camera_metadata const* buffer, IMetadata& metadata) const {
    if (buffer == nullptr) {
        return false;
    }
    for (camera_metadata_ro_entry const& flat : entriesInTagOrder(buffer)) {
        metadata.update(flat.tag, unflatten(flat));
    }
    return true;
}

}  // namespace

android::sp<IMetadataConverter> IMetadataConverter::createInstance(IMetadataTagSet const& tagSet) {
    return new MetadataConverter(tagSet);
}

}  // namespace NSCam
