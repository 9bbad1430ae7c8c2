#include <cstring>
#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nscam/IMetadata.h>
#include <nscam/IMetadataConverter.h>
#include <nscam/IMetadataTagSet.h>

#include "host/LogLines.h"
#include "host/log/LogControl.h"
#include "host/metadata/MetadataText.h"
#include "support/Golden.h"

using NSCam::IMetadata;
using NSCam::IMetadataConverter;
using NSCam::MRect;
using NSCam::Type2Type;
using testing::ElementsAre;

namespace {

constexpr uint32_t kCurrentMode = 0xc0030014;
constexpr uint32_t kFeatureHint = 0x00010038;  // an int32 list, and none of Android's
constexpr uint32_t kRegions = ANDROID_CONTROL_AE_REGIONS;
constexpr uint32_t kYuvTuningData = 0x800b0017;

using Flat = std::unique_ptr<camera_metadata, decltype(&free_camera_metadata)>;

template <typename T>
IMetadata::IEntry entryOf(uint32_t tag, std::vector<T> const& items) {
    IMetadata::IEntry entry(tag);
    entry.push_back(items.data(), items.size(), Type2Type<T>());
    return entry;
}

template <typename T>
std::vector<T> itemsOf(IMetadata::IEntry const& entry) {
    std::vector<T> items;
    for (size_t i = 0; i < entry.count(); ++i) {
        items.push_back(entry.itemAt(i, Type2Type<T>()));
    }
    return items;
}

TEST(IEntry, FirstItemDecidesTheType) {
    IMetadata::IEntry entry(7);
    EXPECT_EQ(entry.type(), IMetadata::TYPE_UNKNOWN);
    entry.push_back(5, Type2Type<int>());
    entry.push_back(2.5F, Type2Type<float>());
    EXPECT_THAT(itemsOf<int>(entry), ElementsAre(5));
    EXPECT_EQ(entry.itemAt(0, Type2Type<long>()), 0) << "an item of another type";
    EXPECT_EQ(entry.itemAt(1, Type2Type<int>()), 0) << "an item beyond the last";
    EXPECT_FALSE(entry.replaceItemAt(1, 6, Type2Type<int>()));
    EXPECT_FALSE(entry.replaceItemAt(0, 6.0f, Type2Type<float>()));
    entry.clear();
    EXPECT_EQ(entry.type(), IMetadata::TYPE_MINT32);
    IMetadata::IEntry hint = IMetadata().entryFor(kFeatureHint);
    hint.clear();
    EXPECT_EQ(hint.type(), IMetadata::TYPE_MINT32) << "its tag's";
    hint.push_back(static_cast<float const*>(nullptr), 0, Type2Type<float>());
    EXPECT_EQ(hint.type(), IMetadata::TYPE_MFLOAT) << "an empty block's";
    entry.push_back(MRect({1, 2}, {3, 4}), Type2Type<MRect>());
    EXPECT_EQ(entry.itemAt(0, Type2Type<MRect>()).s.w, 3);
    IMetadata::IEntry const moved = std::move(entry);
    EXPECT_TRUE(entry.isEmpty() && moved.count() == 1);
}

// Few items lie in the entry, many in a block: neither the change-over nor items that come from the
// entry itself may show.
TEST(IEntry, GrowsAcrossItsOwnStorage) {
    IMetadata::IEntry entry = entryOf<int64_t>(1, {11, 22});
    std::vector<int64_t> expected{11, 22};
    while (expected.size() < 128) {
        entry.push_back(static_cast<int64_t const*>(entry.data()), entry.count(),
                        Type2Type<int64_t>());
        std::vector<int64_t> const before = expected;
        expected.insert(expected.end(), before.begin(), before.end());
        ASSERT_EQ(itemsOf<int64_t>(entry), expected);
    }
}

TEST(IEntry, CopiesShareLargeItemsUntilOneChanges) {
    auto const original = entryOf<uint8_t>(kYuvTuningData, std::vector<uint8_t>(2'000'000, 9));
    IMetadata metadata;
    metadata.update(kYuvTuningData, original);
    IMetadata::IEntry copy = IMetadata(metadata).entryFor(kYuvTuningData);
    EXPECT_EQ(copy.data(), original.data());

    copy.replaceItemAt(0, uint8_t{1}, Type2Type<uint8_t>());
    EXPECT_EQ(copy.itemAt(0, Type2Type<uint8_t>()), 1);
    EXPECT_EQ(original.itemAt(0, Type2Type<uint8_t>()), 9);
    copy.push_back(uint8_t{2}, Type2Type<uint8_t>());
    // Sharing a block with room to spare: the room belongs to neither.
    IMetadata::IEntry another = copy;
    another.push_back(uint8_t{3}, Type2Type<uint8_t>());
    copy.push_back(uint8_t{4}, Type2Type<uint8_t>());
    EXPECT_EQ(another.itemAt(2'000'001, Type2Type<uint8_t>()), 3);
    EXPECT_EQ(original.count(), 2'000'000u);
}

TEST(IEntry, NestedMetadataIsCopiedAndEnded) {
    auto items = entryOf<uint8_t>(1, std::vector<uint8_t>(100, 9));
    void const* const address = items.data();
    {
        IMetadata inner;
        inner.update(1, items);
        IMetadata::IEntry const nested = entryOf<IMetadata>(2, {inner, inner});
        IMetadata::IEntry copy = nested;
        copy.push_back(inner, Type2Type<IMetadata>());
        copy.replaceItemAt(0, IMetadata(), Type2Type<IMetadata>());
        EXPECT_TRUE(copy.itemAt(0, Type2Type<IMetadata>()).isEmpty());
        EXPECT_EQ(copy.itemAt(2, Type2Type<IMetadata>()).entryFor(1).data(), address);
        EXPECT_EQ(nested.itemAt(0, Type2Type<IMetadata>()).entryFor(1).data(), address);
    }
    items.replaceItemAt(0, uint8_t{1}, Type2Type<uint8_t>());
    EXPECT_EQ(items.data(), address) << "shared with metadata that has ended";
}

TEST(IMetadataSet, HoldsWhatAMapHolds) {
    std::mt19937 random(3);
    IMetadata metadata;
    std::map<uint32_t, int> model;
    for (int step = 0; step < 3000; ++step) {
        uint32_t const tag = random() % 40;
        if (random() % 3 == 0) {
            ASSERT_EQ(metadata.remove(tag), model.erase(tag) == 1);
        } else {
            IMetadata added;  // an entry answers to the tag that it is put under
            added.update(tag, entryOf<int>(999, {step}));
            added.update(tag / 2, entryOf<int>(999, {step}));
            metadata += added;
            model[tag] = model[tag / 2] = step;
        }
        ASSERT_EQ(metadata.count(), model.size());
        size_t index = 0;
        for (auto const& [held, value] : model) {
            ASSERT_EQ(metadata.entryAt(index).tag(), held);
            ASSERT_EQ(metadata.entryAt(index++).itemAt(0, Type2Type<int>()), value);
            ASSERT_EQ(metadata.entryFor(held).itemAt(0, Type2Type<int>()), value);
        }
    }
    EXPECT_EQ(metadata.entryFor(41).tag(), 41u);
    EXPECT_TRUE(metadata.entryFor(41).isEmpty());
    EXPECT_TRUE(metadata.entryAt(metadata.count()).isEmpty());
    IMetadata const copy = metadata;
    metadata.clear();
    EXPECT_TRUE(metadata.isEmpty() && !copy.isEmpty());
}

class Converter : public testing::Test {
  protected:
    Flat flatten(IMetadata const& metadata) {
        camera_metadata* flat = nullptr;
        size_t size = 0;
        android::hardware::hidl_vec<uint8_t> bytes;
        EXPECT_TRUE(mConverter->convert(metadata, flat, &size));
        EXPECT_TRUE(mConverter->convert(metadata, bytes));
        EXPECT_EQ(validate_camera_metadata_structure(flat, &size), 0);
        EXPECT_TRUE(bytes.size() == size && memcmp(bytes.data(), flat, size) == 0);
        free_camera_metadata(reinterpret_cast<camera_metadata*>(bytes.data()));
        return {flat, &free_camera_metadata};
    }

    android::sp<IMetadataConverter> const mConverter = IMetadataConverter::createInstance(
            NSCam::IDefaultMetadataTagSet::singleton()->getTagSet());
};

TEST_F(Converter, CarriesEveryTypeThereAndBack) {
    IMetadata metadata;
    auto const put = [&](auto const& entry) { metadata.update(entry.tag(), entry); };
    put(entryOf<uint8_t>(kYuvTuningData, {1, 2, 3, 4, 5}));
    put(entryOf<int32_t>(kRegions, {28, 7}));
    put(entryOf<float>(ANDROID_COLOR_CORRECTION_GAINS, {2, 1, 1, 1.5F}));
    put(entryOf<int64_t>(kCurrentMode, {-1}));
    put(entryOf<double>(ANDROID_SENSOR_NOISE_PROFILE, {0.25, 0.5}));
    put(entryOf<NSCam::MRational>(ANDROID_SENSOR_NEUTRAL_COLOR_POINT, {{1, 2}, {3, 4}, {5, 6}}));
    put(entryOf<MRect>(ANDROID_SCALER_CROP_REGION, {MRect({1, 2}, {3, 4})}));
    put(IMetadata::IEntry(ANDROID_JPEG_QUALITY));  // no items, and its type is known
    put(IMetadata::IEntry(0x80ff0001));            // no items, and nothing known: left out

    Flat const flat = flatten(metadata);
    EXPECT_EQ(get_camera_metadata_entry_capacity(flat.get()), 8u);
    EXPECT_EQ(get_camera_metadata_data_capacity(flat.get()),
              get_camera_metadata_data_count(flat.get()));
    EXPECT_EQ(reinterpret_cast<uint32_t const*>(flat.get())[2], 1u) << "not marked as sorted";
    std::istringstream text(quen::host::metadataText(flat.get()));
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);) {
        lines.push_back(line);
    }
    quentest::expectGolden("flat_metadata", lines);

    IMetadata back;
    back.update(1, entryOf<int>(1, {1}));
    ASSERT_TRUE(mConverter->convert(flat.get(), back));
    EXPECT_EQ(back.count(), 9u);
    EXPECT_EQ(back.entryFor(ANDROID_SCALER_CROP_REGION).type(), IMetadata::TYPE_MRect);
    EXPECT_EQ(back.entryFor(ANDROID_JPEG_QUALITY).type(), IMetadata::TYPE_MUINT8);
    EXPECT_EQ(quen::host::metadataText(flatten(back).get()), quen::host::metadataText(flat.get()));

    int32_t const noRectangle = 1;
    update_camera_metadata_entry(flat.get(), 3, &noRectangle, 1, nullptr);
    ASSERT_TRUE(mConverter->convert(flat.get(), back));
    EXPECT_THAT(itemsOf<int>(back.entryFor(ANDROID_SCALER_CROP_REGION)), ElementsAre(1));
    EXPECT_FALSE(mConverter->convert(nullptr, back));
    auto const& tags = NSCam::IDefaultMetadataTagSet::singleton()->getTagSet();
    EXPECT_STREQ(tags.nameOf(kRegions), "android.control.aeRegions");
    EXPECT_EQ(tags.nameOf(1 << 30), nullptr);
    EXPECT_EQ(back.count(), 9u);

    // In no order, and a tag twice: the later one counts.
    Flat const mixed = flatten(back);
    for (size_t place : {6, 1, 1}) {
        delete_camera_metadata_entry(mixed.get(), place);
    }
    int32_t const regions[] = {1, 2};
    add_camera_metadata_entry(mixed.get(), kRegions, &regions[0], 1);
    add_camera_metadata_entry(mixed.get(), kRegions, &regions[1], 1);
    IMetadata sorted;
    ASSERT_TRUE(mConverter->convert(mixed.get(), sorted));
    EXPECT_THAT(itemsOf<int>(sorted.entryFor(kRegions)), ElementsAre(2));
    EXPECT_EQ(sorted.count(), get_camera_metadata_entry_count(mixed.get()) - 1);
}

TEST_F(Converter, AsksTheTagSetForTypesThatAndroidHasNot) {
    struct Types : NSCam::IMetadataTagSet {
        int typeOf(uint32_t tag) const override {
            return tag == kRegions ? IMetadata::TYPE_MPoint : IMetadata::TYPE_MSize;
        }
        char const* nameOf(uint32_t /*tag*/) const override { return nullptr; }
    } const types;
    Flat const flat(allocate_camera_metadata(2, 32), &free_camera_metadata);
    int32_t const pairs[] = {1, 2, 3, 4};
    add_camera_metadata_entry(flat.get(), kRegions, pairs, 4);
    add_camera_metadata_entry(flat.get(), ANDROID_SCALER_CROP_REGION, pairs, 4);
    IMetadata metadata;
    ASSERT_TRUE(IMetadataConverter::createInstance(types)->convert(flat.get(), metadata));
    EXPECT_EQ(metadata.entryFor(kRegions).itemAt(1, Type2Type<NSCam::MPoint>()).y, 4);
    EXPECT_EQ(metadata.entryFor(ANDROID_SCALER_CROP_REGION).itemAt(0, Type2Type<NSCam::MSize>()).h,
              2);
}

TEST_F(Converter, LeavesOutWhatTheFlatFormCannotHoldAndSaysSoOnce) {
    quentest::LogLines log;
    IMetadata metadata;
    IMetadata::IEntry cleared = entryOf<int32_t>(0, {1});
    cleared.clear();
    metadata.update(kFeatureHint, entryOf<int32_t>(0, {1}));
    metadata.update(kRegions, entryOf<IMetadata>(0, {IMetadata()}));
    metadata.update(kCurrentMode, entryOf<int32_t>(0, {1}));  // the tag is an int64
    metadata.update(0x80ff0001, entryOf<NSCam::MSize>(0, {{640, 480}}));
    metadata.update(0x80ff0002, cleared);
    metadata.update(0x80ff0003, IMetadata::IEntry());
    quen::host::setLogLevel(quen::host::LogLevel::Debug);
    for (int turn = 0; turn < 2; ++turn) {
        EXPECT_EQ(quen::host::metadataText(flatten(metadata).get()),
                  "0x80ff0001 ? int32[2] 640 480\n0x80ff0002 ? int32[0]\n");
    }
    std::string const told = "camera IMetadataConverter 0 D [IMetadataConverter] tag[0x";
    EXPECT_THAT(log.lines,
                ElementsAre(told + "10004] type[9] is left out: camera_metadata has no such type",
                            told + "10038] type[1] is left out: Android has no such tag",
                            told + "80FF0003] type[-1] is left out: its type is not known",
                            told + "C0030014] type[1] is left out: the tag has another type"));
}

}  // namespace
