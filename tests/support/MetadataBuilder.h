#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <vector>

#include <nscam/IMetadata.h>
#include <system/camera_metadata.h>

namespace quentest {

/** Metadata tags by what the tests call them. */
namespace tags {

inline constexpr uint32_t kCurrentMode = 0xc0030014;  // int64
inline constexpr uint32_t kEngineerMode = 0xc0030022;
inline constexpr uint32_t kFusion = 0xc0030092;
inline constexpr uint32_t kCameraId = 0xc0030099;
inline constexpr uint32_t kDualSlave = 0xc00300a0;
inline constexpr uint32_t kRequestNo = 0xc00300a2;
inline constexpr uint32_t kFastDisplay = 0xc00300a4;
inline constexpr uint32_t kUiMode = 0xc0080001;
inline constexpr uint32_t kSceneMode = 0xc0090002;
inline constexpr uint32_t kForDepth = 0xc00c000a;
inline constexpr uint32_t kSatCrop = 0xc00c0012;
inline constexpr uint32_t kBufferIndex = 0xc00c0018;
inline constexpr uint32_t kFeedback = 0xc00e0032;

inline constexpr uint32_t kFeatureHint = 0x00010038;
inline constexpr uint32_t kCrop = 0x000d0000;
inline constexpr uint32_t kNeedMsnr = 0x800b000b;
inline constexpr uint32_t kRawInputStage = 0x800b000c;
inline constexpr uint32_t kTuningMode = 0x800b000e;
inline constexpr uint32_t kRawTuning = 0x800b0016;  // bytes
inline constexpr uint32_t kYuvTuning = 0x800b0017;  // bytes
inline constexpr uint32_t kRawBitDepth = 0x800b001b;
inline constexpr uint32_t kIspCameraId = 0xc0000005;

}  // namespace tags

/** Builds a `camera_metadata` and owns it. A tag that is set twice keeps the later items. */
class MetadataBuilder {
  public:
    MetadataBuilder& u8(uint32_t tag, std::vector<uint8_t> const& items) {
        return set(tag, TYPE_BYTE, items.data(), items.size());
    }
    MetadataBuilder& i32(uint32_t tag, int32_t item) { return set(tag, TYPE_INT32, &item, 1); }
    MetadataBuilder& i64(uint32_t tag, int64_t item) { return set(tag, TYPE_INT64, &item, 1); }

    camera_metadata* get() const { return mMetadata.get(); }

  private:
    MetadataBuilder& set(uint32_t tag, int type, void const* items, size_t count) {
        EXPECT_EQ(get_camera_metadata_tag_type(tag), type) << std::hex << tag;
        camera_metadata_entry_t entry;
        int const error =
                find_camera_metadata_entry(get(), tag, &entry) == 0
                        ? update_camera_metadata_entry(get(), entry.index, items, count, nullptr)
                        : add_camera_metadata_entry(get(), tag, items, count);
        EXPECT_EQ(error, 0) << std::hex << tag;
        return *this;
    }

    std::unique_ptr<camera_metadata, decltype(&free_camera_metadata)> mMetadata{
            allocate_camera_metadata(64, 4096), &free_camera_metadata};
};

/** The first int32 of a tag, -1 when it is absent. */
inline int32_t int32In(camera_metadata const* metadata, uint32_t tag) {
    camera_metadata_ro_entry_t entry;
    return find_camera_metadata_ro_entry(metadata, tag, &entry) == 0 ? entry.data.i32[0] : -1;
}

/** Sets a tag of an IMetadata to a list of items. */
template <typename T>
void setItems(NSCam::IMetadata& metadata, uint32_t tag, std::vector<T> const& items) {
    NSCam::IMetadata::IEntry entry(tag);
    for (T const& item : items) {
        entry.push_back(item, NSCam::Type2Type<T>());
    }
    metadata.update(tag, entry);
}

/** The items of a tag; fails the test when they are of another type. */
template <typename T>
std::vector<T> itemsOf(NSCam::IMetadata const& metadata, uint32_t tag, int type) {
    NSCam::IMetadata::IEntry const entry = metadata.entryFor(tag);
    EXPECT_TRUE(entry.isEmpty() || entry.type() == type) << std::hex << tag;
    std::vector<T> items;
    for (size_t i = 0; i < entry.count(); ++i) {
        items.push_back(entry.itemAt(i, NSCam::Type2Type<T>()));
    }
    return items;
}

inline std::vector<int32_t> int32sOf(NSCam::IMetadata const& metadata, uint32_t tag) {
    return itemsOf<int32_t>(metadata, tag, NSCam::IMetadata::TYPE_MINT32);
}

inline bool hasTag(NSCam::IMetadata const& metadata, uint32_t tag) {
    for (size_t i = 0; i < metadata.count(); ++i) {
        if (metadata.entryAt(i).tag() == tag) {
            return true;
        }
    }
    return false;
}

/** One record of the ISP's flat metadata buffer. */
struct IspRecordBytes {
    uint32_t tag;
    uint32_t type;  // 0 unsigned 8-bit, 1 int32, 2 int64, 3 float
    uint32_t dataSize;
    std::vector<uint8_t> data;  // zeroes follow, up to 40 bytes
};

template <typename T>
std::vector<uint8_t> packed(std::vector<T> const& items) {
    auto const* const first = reinterpret_cast<uint8_t const*>(items.data());
    return {first, first + items.size() * sizeof(T)};
}

template <typename T>
IspRecordBytes ispRecord(uint32_t tag, uint32_t type, std::vector<T> const& items) {
    return {tag, type, static_cast<uint32_t>(items.size() * sizeof(T)), packed(items)};
}

/**
 * An ISP metadata buffer, put together by hand.
 *
 * @param firstRecord offset of the first record, 20 or more; what lies between is 0xee
 */
inline std::vector<uint8_t> ispBuffer(std::vector<IspRecordBytes> const& records,
                                      uint32_t firstRecord = 20) {
    std::vector<uint8_t> buffer;
    auto const append = [&buffer](std::vector<uint8_t> const& bytes) {
        buffer.insert(buffer.end(), bytes.begin(), bytes.end());
    };
    append(packed<uint32_t>({0, 0, 0, static_cast<uint32_t>(records.size()), firstRecord}));
    buffer.resize(firstRecord, 0xee);
    for (IspRecordBytes const& record : records) {
        size_t const end = buffer.size() + 56;
        append(packed<uint32_t>({record.tag, record.type, record.dataSize, 0}));
        append(record.data);
        buffer.resize(end);
    }
    return buffer;
}

}  // namespace quentest
