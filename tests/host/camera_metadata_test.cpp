#include <algorithm>
#include <cerrno>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <system/camera_metadata.h>

#include "host/metadata/VendorTags.h"

namespace {

constexpr uint32_t kCurrentMode = 0xc0030014;    // int64
constexpr uint32_t kFeatureHint = 0x00010038;    // int32 list
constexpr uint32_t kYuvTuningData = 0x800b0017;  // bytes

using Metadata = std::unique_ptr<camera_metadata, decltype(&free_camera_metadata)>;

Metadata owned(camera_metadata* metadata) {
    return {metadata, &free_camera_metadata};
}

std::vector<uint8_t> bytesOf(Metadata const& metadata) {
    auto const* const first = reinterpret_cast<uint8_t const*>(metadata.get());
    return {first, first + get_camera_metadata_size(metadata.get())};
}

std::vector<uint8_t> itemsOf(Metadata const& metadata, uint32_t tag) {
    camera_metadata_entry_t entry{};
    EXPECT_EQ(find_camera_metadata_entry(metadata.get(), tag, &entry), 0);
    return {entry.data.u8, entry.data.u8 + entry.count * camera_metadata_type_size[entry.type]};
}

TEST(CameraMetadata, LiesInMemoryAsOnThePhone) {
    Metadata const metadata = owned(allocate_camera_metadata(3, 20));
    int64_t const mode = 0x0102030405060708;
    int32_t const hints[] = {28, 7};
    ASSERT_EQ(add_camera_metadata_entry(metadata.get(), ANDROID_JPEG_QUALITY, "_", 1), 0);
    ASSERT_EQ(add_camera_metadata_entry(metadata.get(), kCurrentMode, &mode, 1), 0);
    ASSERT_EQ(add_camera_metadata_entry(metadata.get(), kFeatureHint, hints, 2), 0);
    ASSERT_EQ(sort_camera_metadata(metadata.get()), 0);

    ASSERT_EQ(get_camera_metadata_size(metadata.get()), 120u);  // 48 + 3 * 16, then 20, aligned
    using Words = std::vector<uint32_t>;
    auto const* const words = reinterpret_cast<uint32_t const*>(metadata.get());
    EXPECT_EQ(Words(words, words + 12),
              (Words{120, 1, 1, 3, 3, 48, 16, 20, 96, 0, UINT32_MAX, UINT32_MAX}));
    Words const entries = {kFeatureHint, 2, 8, TYPE_INT32, ANDROID_JPEG_QUALITY, 1, 95, TYPE_BYTE,
                           kCurrentMode, 1, 0, TYPE_INT64};
    EXPECT_EQ(Words(words + 12, words + 24), entries);
    EXPECT_EQ(Words(words + 24, words + 30), (Words{0x05060708, 0x01020304, 28, 7, 0, 0}));
}

TEST(CameraMetadata, RefusesWhatDoesNotFitAndStaysAsItWas) {
    Metadata const metadata = owned(allocate_camera_metadata(2, 8));
    int64_t const modes[] = {1, 2};
    ASSERT_EQ(add_camera_metadata_entry(metadata.get(), kCurrentMode, modes, 1), 0);
    auto const before = bytesOf(metadata);
    camera_metadata_entry_t entry;
    EXPECT_NE(add_camera_metadata_entry(metadata.get(), 0x80ff0001, modes, 1), 0);  // unknown tag
    EXPECT_NE(update_camera_metadata_entry(metadata.get(), 0, modes, SIZE_MAX / 4, nullptr), 0);
    EXPECT_NE(update_camera_metadata_entry(metadata.get(), 1, modes, 1, nullptr), 0);
    EXPECT_NE(delete_camera_metadata_entry(metadata.get(), 1), 0);
    EXPECT_EQ(find_camera_metadata_entry(metadata.get(), kFeatureHint, &entry), -ENOENT);
    EXPECT_EQ(bytesOf(metadata), before);
    EXPECT_EQ(allocate_camera_metadata(UINT32_MAX, 0), nullptr);
    EXPECT_EQ(allocate_camera_metadata(0, UINT32_MAX), nullptr);
}

TEST(CameraMetadata, AnUpdateOfTheSameSizeStaysInPlace) {
    Metadata const metadata = owned(allocate_camera_metadata(4, 64));
    int64_t const modes[] = {1, 2};
    add_camera_metadata_entry(metadata.get(), kCurrentMode, modes, 1);
    add_camera_metadata_entry(metadata.get(), kYuvTuningData, "tuning", 6);
    add_camera_metadata_entry(metadata.get(), ANDROID_JPEG_QUALITY, "x", 1);
    for (size_t index = 0; index < 3; ++index) {
        camera_metadata_entry_t before;
        camera_metadata_entry_t after;
        get_camera_metadata_entry(metadata.get(), index, &before);
        before.data.u8[0] = 'y';  // what is written may be the entry's own
        ASSERT_EQ(update_camera_metadata_entry(metadata.get(), index, before.data.u8, before.count,
                                               &after),
                  0);
        EXPECT_EQ(after.data.u8, before.data.u8) << index;
        EXPECT_EQ(after.data.u8[0], 'y') << index;
    }
}

// Entries grow, shrink, come and go at random; a plain map says what must be found.
TEST(CameraMetadata, HoldsWhatAMapHoldsThroughAnyChanges) {
    constexpr size_t kRoom = 500;
    auto const* const tags = quen::host::allTags().begin();
    auto const tagCount = static_cast<size_t>(quen::host::allTags().end() - tags);
    Metadata const metadata = owned(allocate_camera_metadata(tagCount, kRoom));
    std::map<uint32_t, std::vector<uint8_t>> model;
    std::mt19937 random(7);
    for (int step = 0; step < 20000; ++step) {
        uint32_t const tag = tags[random() % tagCount].tag;
        auto const type = static_cast<uint8_t>(get_camera_metadata_tag_type(tag));
        size_t const count = random() % 6;
        std::vector<uint8_t> items(count * camera_metadata_type_size[type]);
        std::generate(items.begin(), items.end(), std::ref(random));
        size_t used = calculate_camera_metadata_entry_data_size(type, count);
        for (auto const& [held, bytes] : model) {
            used += held == tag || bytes.size() <= 4 ? 0 : (bytes.size() + 7) / 8 * 8;
        }
        camera_metadata_entry_t entry;
        int error = 0;
        if (find_camera_metadata_entry(metadata.get(), tag, &entry) != 0) {
            ASSERT_EQ(model.count(tag), 0u);
            error = add_camera_metadata_entry(metadata.get(), tag, items.data(), count);
        } else if (random() % 3 == 0) {
            ASSERT_EQ(delete_camera_metadata_entry(metadata.get(), entry.index), 0);
            model.erase(tag);
            continue;
        } else {
            error = update_camera_metadata_entry(metadata.get(), entry.index, items.data(), count,
                                                 nullptr);
        }
        ASSERT_EQ(error == 0, used <= kRoom);
        if (error == 0) {
            model[tag] = items;
        }
        if (random() % 16 == 0) {
            ASSERT_EQ(sort_camera_metadata(metadata.get()), 0);
        }
        ASSERT_EQ(validate_camera_metadata_structure(metadata.get(), nullptr), 0);
        ASSERT_EQ(get_camera_metadata_entry_count(metadata.get()), model.size());
        for (auto const& [held, expected] : model) {
            ASSERT_EQ(itemsOf(metadata, held), expected) << std::hex << held;
        }
    }
}

TEST(CameraMetadata, CopiesCarryTheSameEntries) {
    Metadata const metadata = owned(allocate_camera_metadata(8, 100));
    int64_t const mode = 3;
    uint8_t const tuning[] = {1, 2, 3, 4, 5};
    add_camera_metadata_entry(metadata.get(), kCurrentMode, &mode, 1);
    add_camera_metadata_entry(metadata.get(), kYuvTuningData, tuning, 5);

    Metadata const clone = owned(clone_camera_metadata(metadata.get()));
    EXPECT_EQ(get_camera_metadata_size(clone.get()), 48u + 2 * 16 + 16);
    ASSERT_EQ(append_camera_metadata(metadata.get(), clone.get()), 0);
    camera_metadata_entry_t appended;
    ASSERT_EQ(get_camera_metadata_entry(metadata.get(), 3, &appended), 0);
    EXPECT_EQ(memcmp(appended.data.u8, tuning, 5), 0);
    EXPECT_NE(append_camera_metadata(clone.get(), metadata.get()), 0);  // no room

    // Bytes of any alignment: told apart by the check, and copied into a sound buffer.
    std::vector<uint8_t> shifted = bytesOf(clone);
    size_t const size = shifted.size();
    shifted.insert(shifted.begin(), 4, 0);
    auto const* const address = reinterpret_cast<camera_metadata*>(shifted.data() + 4);
    EXPECT_EQ(validate_camera_metadata_structure(address, &size),
              CAMERA_METADATA_VALIDATION_SHIFTED);
    EXPECT_EQ(bytesOf(owned(allocate_copy_camera_metadata_checked(address, size))), bytesOf(clone));
    EXPECT_EQ(allocate_copy_camera_metadata_checked(address, size - 1), nullptr);
}

TEST(CameraMetadata, ValidationFindsEveryBrokenFigure) {
    Metadata const metadata = owned(allocate_camera_metadata(2, 16));
    int64_t const mode = 3;
    add_camera_metadata_entry(metadata.get(), kCurrentMode, &mode, 1);
    add_camera_metadata_entry(metadata.get(), ANDROID_JPEG_QUALITY, "x", 1);
    size_t const size = get_camera_metadata_size(metadata.get());
    // Words of the header, then of the first entry, and the second's type.
    std::pair<size_t, uint32_t> const faults[] = {
            {0, 200},         {0, 80}, {3, 3},          {4, 0x10000002}, {5, 52},         {5, 0},
            {6, 17},          {6, 0},  {7, UINT32_MAX}, {8, 84},         {8, 64},         {13, 3},
            {13, UINT32_MAX}, {14, 4}, {14, 16},        {15, NUM_TYPES}, {19, TYPE_INT32}};
    ASSERT_EQ(validate_camera_metadata_structure(metadata.get(), &size), 0);
    for (auto const& [word, value] : faults) {
        uint32_t& figure = reinterpret_cast<uint32_t*>(metadata.get())[word];
        uint32_t const sound = std::exchange(figure, value);
        EXPECT_EQ(validate_camera_metadata_structure(metadata.get(), &size),
                  CAMERA_METADATA_VALIDATION_ERROR)
                << "word " << word << " as " << value;
        figure = sound;
    }
}

TEST(CameraMetadata, KnowsTagsByIdAndName) {
    for (quen::host::TagInfo const& info : quen::host::allTags()) {
        EXPECT_EQ(quen::host::findTag(info.name), &info) << "two tags of one name";
        EXPECT_EQ(quen::host::findTag(info.tag), &info);
    }
    EXPECT_STREQ(get_camera_metadata_section_name(ANDROID_JPEG_QUALITY), "android.jpeg");
    EXPECT_STREQ(get_camera_metadata_tag_name(ANDROID_JPEG_QUALITY), "quality");
    EXPECT_EQ(get_camera_metadata_tag_type(0xdeadbeef), -1);
}

}  // namespace
