#include "metadata/Requests.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>

#include "host/metadata/CameraMetadataLayout.h"

using NSCam::IMetadata;
using NSCam::IMetadataTagSet;
using NSCam::MRect;
using NSCam::Type2Type;

namespace quenbench {

namespace {

constexpr uint32_t kFillTag = 0xc1000000;
constexpr uint32_t kYuvTuningTag = 0x800b0017;
constexpr uint32_t k3ABufferIndexTag = 0xc00c0018;
constexpr size_t kLargestItems = 32;  // bytes

/** A kind of entry that fills requests up. */
struct Kind {
    int metadataType;
    uint8_t flatType;
    size_t flatCount;
};

constexpr Kind kKinds[] = {
        {IMetadata::TYPE_MUINT8, TYPE_BYTE, 24}, {IMetadata::TYPE_MINT32, TYPE_INT32, 6},
        {IMetadata::TYPE_MRect, TYPE_INT32, 4},  {IMetadata::TYPE_MFLOAT, TYPE_FLOAT, 8},
        {IMetadata::TYPE_MINT64, TYPE_INT64, 2},
};
constexpr size_t kKindCount = sizeof(kKinds) / sizeof(kKinds[0]);
constexpr Kind kSingle = {IMetadata::TYPE_MINT32, TYPE_INT32, 1};

// The tags that describe a capture are single numbers. Requests of every size have the same share
// of them, so that costs per entry can be compared across sizes.
constexpr size_t kPeriod = 20;
constexpr size_t kListsAPeriod = 11;

Kind const& kindOf(size_t index) {
    size_t const place = index % kPeriod;
    return place < kListsAPeriod ? kKinds[place % kKindCount] : kSingle;
}

/** An entry of a client's metadata. */
struct FlatEntry {
    uint32_t tag;
    uint8_t type;
    size_t count;
    std::vector<uint8_t> items;
};

/** The tags that describe a capture, in their order. */
std::vector<FlatEntry> captureEntries(bool threeABuffer) {
    struct {
        uint32_t tag;
        uint8_t type;
        int64_t value;
    } const told[] = {{0xc0030014, TYPE_INT64, 1 << 24}, {0xc0030022, TYPE_INT32, 0},
                      {0xc0030092, TYPE_INT32, 0},       {0xc0030099, TYPE_INT32, 0},
                      {0xc00300a2, TYPE_INT32, 7},       {0xc0080001, TYPE_INT32, 1},
                      {0xc0090002, TYPE_INT32, 2},       {0xc00c000a, TYPE_INT32, 0},
                      {k3ABufferIndexTag, TYPE_INT32, 1}};
    std::vector<FlatEntry> entries;
    for (auto const& one : told) {
        if (one.tag != k3ABufferIndexTag || threeABuffer) {
            std::vector<uint8_t> items(camera_metadata_type_size[one.type]);
            memcpy(items.data(), &one.value, items.size());
            entries.push_back({one.tag, one.type, 1, items});
        }
    }
    return entries;
}

class BenchTagSet final : public IMetadataTagSet {
  public:
    int typeOf(uint32_t tag) const override {
        return tag >= kFillTag ? kindOf(tag - kFillTag).metadataType : mPlatform.typeOf(tag);
    }
    char const* nameOf(uint32_t tag) const override { return mPlatform.nameOf(tag); }

  private:
    IMetadataTagSet const& mPlatform = NSCam::IDefaultMetadataTagSet::singleton()->getTagSet();
};

}  // namespace

IMetadataTagSet const& benchTagSet() {
    static BenchTagSet const tagSet;
    return tagSet;
}

ClientMetadata makeRequest(RequestShape const& shape) {
    std::vector<FlatEntry> entries = captureEntries(shape.threeABuffer);
    if (shape.tuningBytes) {
        entries.insert(entries.begin(), {kYuvTuningTag, TYPE_BYTE, kTuningBytes,
                                         std::vector<uint8_t>(kTuningBytes, 0x5A)});
    }
    for (size_t i = 0; entries.size() < shape.entries + shape.tuningBytes; ++i) {
        Kind const& kind = kindOf(i);
        std::vector<uint8_t> items(kind.flatCount * camera_metadata_type_size[kind.flatType], 1);
        entries.push_back(
                {static_cast<uint32_t>(kFillTag + i), kind.flatType, kind.flatCount, items});
    }
    if (shape.order == Order::Shuffled) {
        std::shuffle(entries.begin(), entries.end(), std::mt19937(1));
    }
    size_t const dataBytes = entries.size() * (kLargestItems + 8) + kTuningBytes;
    ClientMetadata request(allocate_camera_metadata(entries.size(), dataBytes),
                           &free_camera_metadata);
    for (FlatEntry const& entry : entries) {
        if (quen::host::addEntryOfType(request.get(), entry.tag, entry.type, entry.items.data(),
                                       entry.count) != 0) {
            fprintf(stderr, "request: tag 0x%x cannot be added\n", entry.tag);
            exit(EXIT_FAILURE);
        }
    }
    if (shape.order == Order::Sorted) {
        sort_camera_metadata(request.get());
    }
    return request;
}

IMetadata makeResult(size_t entries) {
    IMetadata result;
    for (size_t i = 0; i < entries; ++i) {
        size_t const index = i * 2;  // every second tag of the request, and as many others
        uint32_t const tag = static_cast<uint32_t>(kFillTag + index);
        IMetadata::IEntry entry(tag);
        int32_t const values[6] = {1, 2, 3, 4, 5, 6};
        entry.push_back(values, 6, Type2Type<int32_t>());
        result.update(tag, entry);
    }
    return result;
}

}  // namespace quenbench
