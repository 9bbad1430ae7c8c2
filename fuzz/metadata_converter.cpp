// A client's camera_metadata on its way to the ISP and back: buffers of arbitrary bytes, validated
// as the platform validates what it receives, and buffers that the platform's own calls have made.

#include <fuzzer/FuzzedDataProvider.h>

#include <cstring>
#include <memory>
#include <vector>

#include <nscam/IMetadataConverter.h>
#include <system/camera_metadata.h>

#include <host/metadata/IspMetadataReader.h>
#include <host/metadata/MetadataText.h>
#include <host/metadata/VendorTags.h>
#include <quenOfflineDevice/metadata/IspMetadata.h>

#include "support/Require.h"

using NSCam::IMetadata;
using NSCam::IMetadataConverter;
using quenfuzz::require;

namespace {

struct Free {
    void operator()(camera_metadata* metadata) const { free_camera_metadata(metadata); }
};
using Metadata = std::unique_ptr<camera_metadata, Free>;

IMetadataConverter& converter() {
    static auto const instance = IMetadataConverter::createInstance(
            NSCam::IDefaultMetadataTagSet::singleton()->getTagSet());
    return *instance;
}

bool isSound(camera_metadata const* metadata) {
    size_t const size = get_camera_metadata_size(metadata);
    return validate_camera_metadata_structure(metadata, &size) == 0;
}

/** Bytes of an entry that is not nested metadata, which the library's neighbours never send. */
size_t bytesOf(camera_metadata_ro_entry_t const& entry) {
    return entry.count * camera_metadata_type_size[entry.type];
}

void readEveryItem(camera_metadata const* metadata) {
    std::vector<uint8_t> items;
    for (size_t i = 0; i < get_camera_metadata_entry_count(metadata); ++i) {
        camera_metadata_ro_entry_t entry;
        require(get_camera_metadata_ro_entry(metadata, i, &entry) == 0, "every entry is given");
        items.assign(entry.data.u8, entry.data.u8 + bytesOf(entry));
    }
}

void sendToIsp(IMetadata const& metadata) {
    static std::vector<unsigned char> encoded;
    quen::convertToISPMetadata(&metadata, encoded);
    quen::host::IspMetadataReader reader;
    require(reader.parse(encoded.data(), encoded.size()), "the ISP gets a sound buffer");
    require(reader.count() <= metadata.count(), "an entry is one record at most");
}

Metadata flatten(IMetadata const& metadata) {
    camera_metadata* flat = nullptr;
    size_t size = 0;
    require(converter().convert(metadata, flat, &size), "metadata can be made flat");
    require(size == get_camera_metadata_size(flat) && isSound(flat), "what is made is sound");
    return Metadata(flat);
}

void convert(camera_metadata const* metadata) {
    readEveryItem(metadata);
    IMetadata converted;
    require(converter().convert(metadata, converted), "sound metadata is converted");
    sendToIsp(converted);

    Metadata const back = flatten(converted);
    IMetadata again;
    require(converter().convert(back.get(), again), "what was converted is converted again");
    Metadata const backAgain = flatten(again);
    size_t const size = get_camera_metadata_size(back.get());
    require(size == get_camera_metadata_size(backAgain.get()) &&
                    memcmp(back.get(), backAgain.get(), size) == 0,
            "nothing changes on the second way");
}

void convertAnyBytes(uint8_t const* data, size_t size) {
    auto const* const bytes = reinterpret_cast<camera_metadata const*>(data);
    Metadata const received(allocate_copy_camera_metadata_checked(bytes, size));
    if (received == nullptr) {
        return;
    }
    convert(received.get());
    Metadata const clone(clone_camera_metadata(received.get()));
    require(clone != nullptr && isSound(clone.get()), "a clone is sound");
    readEveryItem(clone.get());
    require(!quen::host::metadataText(clone.get()).empty() ||
                    get_camera_metadata_entry_count(clone.get()) == 0,
            "entries have a text");
}

/** A tag of the tables more often than not: only those can be added by their number alone. */
uint32_t takeTag(FuzzedDataProvider& input) {
    quen::host::TagRange const androids = quen::host::androidTags();
    quen::host::TagRange const vendors = quen::host::vendorTags();
    size_t const choice =
            input.ConsumeIntegralInRange<size_t>(0, androids.size() + vendors.size() + 7);
    if (choice < androids.size()) {
        return androids[choice].tag;
    }
    size_t const place = choice - androids.size();
    return place < vendors.size() ? vendors[place].tag : input.ConsumeIntegral<uint32_t>();
}

/** One change of the kind that clients make. Any of them may be refused, none may do harm. */
void change(camera_metadata* metadata, FuzzedDataProvider& input) {
    enum { kAdd, kUpdate, kDelete, kSort, kAppend, kChanges };
    int const kind = input.ConsumeIntegralInRange<int>(0, kChanges - 1);
    uint32_t const tag = kind <= kUpdate ? takeTag(input) : 0;
    auto const items =
            input.ConsumeBytes<uint8_t>(kind <= kUpdate ? input.ConsumeIntegral<uint8_t>() : 0);
    int const type = get_camera_metadata_tag_type(tag);
    size_t const count = type == -1 ? items.size() : items.size() / camera_metadata_type_size[type];
    size_t const index = input.ConsumeIntegral<uint8_t>();
    camera_metadata_entry_t entry;
    switch (kind) {
        case kAdd:
            add_camera_metadata_entry(metadata, tag, items.data(), count);
            break;
        case kUpdate:
            if (find_camera_metadata_entry(metadata, tag, &entry) == 0) {
                update_camera_metadata_entry(metadata, entry.index, items.data(), count, &entry);
            }
            break;
        case kDelete:
            delete_camera_metadata_entry(metadata, index);
            break;
        case kSort:
            sort_camera_metadata(metadata);
            break;
        default:
            append_camera_metadata(metadata, Metadata(clone_camera_metadata(metadata)).get());
            break;
    }
}

void convertWhatClientsMake(FuzzedDataProvider& input) {
    Metadata const metadata(allocate_camera_metadata(input.ConsumeIntegralInRange<size_t>(0, 24),
                                                     input.ConsumeIntegralInRange<size_t>(0, 512)));
    for (int changes = 0; changes < 24 && input.remaining_bytes() != 0; ++changes) {
        change(metadata.get(), input);
        require(isSound(metadata.get()), "a change leaves sound metadata");
    }
    convert(metadata.get());
}

}  // namespace

/** The last byte chooses the way; the others are the buffer, or the client's changes. */
extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    if (size == 0) {
        return 0;
    }
    if (data[size - 1] % 2 == 0) {
        convertAnyBytes(data, size - 1);
    } else {
        FuzzedDataProvider input(data, size - 1);
        convertWhatClientsMake(input);
    }
    return 0;
}
