#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <camera_metadata_hidden.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <quen/QuenParameterUpdater.h>
#include <system/camera_metadata.h>

#include "host/LogLines.h"
#include "host/log/LogControl.h"
#include "host/metadata/CameraMetadataLayout.h"
#include "host/metadata/VendorTags.h"
#include "support/Golden.h"

using testing::ElementsAre;

namespace {

constexpr uint32_t kCurrentMode = 0xc0030014;              // int64
constexpr uint32_t kRegions = ANDROID_CONTROL_AE_REGIONS;  // int32 list
constexpr uint32_t kYuvTuningData = 0x800b0017;            // bytes

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
    int32_t const regions[] = {28, 7};
    ASSERT_EQ(add_camera_metadata_entry(metadata.get(), ANDROID_JPEG_QUALITY, "_", 1), 0);
    ASSERT_EQ(add_camera_metadata_entry(metadata.get(), kCurrentMode, &mode, 1), 0);
    ASSERT_EQ(add_camera_metadata_entry(metadata.get(), kRegions, regions, 2), 0);
    ASSERT_EQ(sort_camera_metadata(metadata.get()), 0);

    ASSERT_EQ(get_camera_metadata_size(metadata.get()), 120u);  // 48 + 3 * 16, then 20, aligned
    using Words = std::vector<uint32_t>;
    auto const* const words = reinterpret_cast<uint32_t const*>(metadata.get());
    EXPECT_EQ(Words(words, words + 12),
              (Words{120, 1, 1, 3, 3, 48, 16, 20, 96, 0, UINT32_MAX, UINT32_MAX}));
    Words const entries = {kRegions,     2, 8, TYPE_INT32, ANDROID_JPEG_QUALITY, 1, 95, TYPE_BYTE,
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
    EXPECT_NE(update_camera_metadata_entry(metadata.get(), 0, nullptr, 1, nullptr), 0);
    EXPECT_NE(add_camera_metadata_entry(metadata.get(), kRegions, nullptr, 1), 0);
    EXPECT_NE(delete_camera_metadata_entry(metadata.get(), 1), 0);
    EXPECT_EQ(find_camera_metadata_entry(metadata.get(), kRegions, &entry), -ENOENT);
    EXPECT_NE(get_camera_metadata_entry(metadata.get(), 1, &entry), 0);
    EXPECT_NE(append_camera_metadata(metadata.get(), nullptr), 0);
    EXPECT_EQ(bytesOf(metadata), before);
    EXPECT_EQ(clone_camera_metadata(nullptr), nullptr);
    EXPECT_EQ(get_camera_metadata_size(nullptr), get_camera_metadata_compact_size(nullptr));
    EXPECT_NE(get_camera_metadata_size(nullptr), 0u) << "an error";
    EXPECT_EQ(allocate_camera_metadata(UINT32_MAX, 0), nullptr);
    EXPECT_EQ(allocate_camera_metadata(0, UINT32_MAX), nullptr);
    alignas(8) char memory[120];
    EXPECT_EQ(place_camera_metadata(memory, 119, 3, 20), nullptr);
    EXPECT_NE(place_camera_metadata(memory, 120, 3, 20), nullptr);
    EXPECT_EQ(copy_camera_metadata(memory, 71, metadata.get()), nullptr);
    EXPECT_NE(copy_camera_metadata(memory, 72, metadata.get()), nullptr);
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
    camera_metadata_entry_t shorter;
    ASSERT_EQ(update_camera_metadata_entry(metadata.get(), 1, "tunin", 5, &shorter), 0);
    EXPECT_EQ(shorter.data.u8[5], 0) << "what is left of the longer items";
}

// Entries grow, shrink, come and go at random; a plain map says what must be found.
TEST(CameraMetadata, HoldsWhatAMapHoldsThroughAnyChanges) {
    constexpr size_t kRoom = 500;
    std::vector<uint32_t> tags;
    for (size_t i = 1; i < quen::host::vendorTags().size(); ++i) {
        tags.push_back(quen::host::vendorTags()[i].tag);
    }
    for (size_t i = 0; i < quen::host::androidTags().size(); i += 3) {
        tags.push_back(quen::host::androidTags()[i].tag);
    }
    Metadata const metadata = owned(allocate_camera_metadata(tags.size(), kRoom));
    std::map<uint32_t, std::vector<uint8_t>> model;
    std::mt19937 random(7);
    for (int step = 0; step < 20000; ++step) {
        uint32_t const tag = tags[random() % tags.size()];
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
                                                 &entry);
            ASSERT_TRUE(error != 0 || entry.count == count);
            ASSERT_TRUE(error != 0 || std::equal(items.begin(), items.end(), entry.data.u8));
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
    Metadata const spare = owned(allocate_camera_metadata(9, 99));
    EXPECT_EQ(get_camera_metadata_compact_size(spare.get()), 48u);
    EXPECT_EQ(get_camera_metadata_size(clone.get()), 48u + 2 * 16 + 16);
    EXPECT_NE(append_camera_metadata(owned(allocate_camera_metadata(2, 15)).get(), clone.get()), 0);
    Metadata const narrow = owned(allocate_camera_metadata(9, 24));
    EXPECT_EQ(append_camera_metadata(narrow.get(), clone.get()), 0);
    EXPECT_NE(append_camera_metadata(narrow.get(), clone.get()), 0);
    ASSERT_EQ(append_camera_metadata(metadata.get(), clone.get()), 0);
    EXPECT_EQ(get_camera_metadata_data_count(metadata.get()), 32u);
    EXPECT_EQ(append_camera_metadata(clone.get(), owned(allocate_camera_metadata(1, 8)).get()), 0);
    camera_metadata_entry_t appended;
    ASSERT_EQ(get_camera_metadata_entry(metadata.get(), 3, &appended), 0);
    appended.data.u8[0] = 6;
    EXPECT_EQ(itemsOf(metadata, kYuvTuningData)[0], 1) << "an append has data of its own";
    EXPECT_EQ(memcmp(appended.data.u8 + 1, tuning + 1, 4), 0);

    Metadata const ours = owned(allocate_camera_metadata(3, 0));
    Metadata const theirs = owned(allocate_camera_metadata(1, 0));
    auto const isSorted = [](Metadata const& which) {
        return reinterpret_cast<uint32_t const*>(which.get())[2] == 1;
    };
    add_camera_metadata_entry(theirs.get(), ANDROID_JPEG_QUALITY, "x", 1);
    sort_camera_metadata(theirs.get());
    set_camera_metadata_vendor_id(theirs.get(), 7);
    EXPECT_TRUE(isSorted(owned(clone_camera_metadata(theirs.get()))));
    EXPECT_EQ(append_camera_metadata(ours.get(), theirs.get()), 0);
    EXPECT_TRUE(isSorted(ours)) << "nothing was there before";
    EXPECT_EQ(append_camera_metadata(ours.get(), theirs.get()), 0);
    EXPECT_FALSE(isSorted(ours)) << "a look-up by halves would miss what comes behind";
    EXPECT_EQ(get_camera_metadata_vendor_id(owned(clone_camera_metadata(ours.get())).get()), 7u);
    set_camera_metadata_vendor_id(theirs.get(), 8);
    EXPECT_NE(append_camera_metadata(ours.get(), theirs.get()), 0);
    EXPECT_EQ(get_camera_metadata_entry_count(ours.get()), 2u);

    // Bytes of any alignment: told apart by the check, and copied into a sound buffer.
    std::vector<uint8_t> shifted = bytesOf(clone);
    size_t const size = shifted.size();
    shifted.insert(shifted.begin(), 4, 0);
    auto const* const address = reinterpret_cast<camera_metadata*>(shifted.data() + 4);
    EXPECT_EQ(validate_camera_metadata_structure(address, &size),
              CAMERA_METADATA_VALIDATION_SHIFTED);
    EXPECT_EQ(bytesOf(owned(allocate_copy_camera_metadata_checked(address, size))), bytesOf(clone));
    for (size_t const cut : {size_t{0}, size_t{47}, size - 1}) {
        EXPECT_EQ(allocate_copy_camera_metadata_checked(address, cut), nullptr);
    }
}

TEST(CameraMetadata, ValidationFindsEveryBrokenFigure) {
    Metadata const metadata = owned(allocate_camera_metadata(2, 16));
    int64_t const mode = 3;
    add_camera_metadata_entry(metadata.get(), kCurrentMode, &mode, 1);
    add_camera_metadata_entry(metadata.get(), ANDROID_JPEG_QUALITY, "x", 1);
    size_t const size = get_camera_metadata_size(metadata.get());
    // Words of the header, then of the first entry, and the second's type.
    std::pair<size_t, uint32_t> const faults[] = {
            {0, 200}, {0, 80},         {3, 3},           {4, 0x10000002}, {5, 52},
            {5, 0},   {6, 17},         {6, 0},           {7, UINT32_MAX}, {8, 84},
            {8, 64},  {13, 3},         {13, UINT32_MAX}, {17, 0},         {14, 4},
            {14, 16}, {15, NUM_TYPES}, {19, TYPE_INT32}};
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

TEST(CameraMetadata, KnowsAndroidsTags) {
    unsigned int count = 0;
    for (auto const& [first, end] : camera_metadata_section_bounds) {
        EXPECT_EQ(get_camera_metadata_tag_type(end), -1);
        EXPECT_EQ(get_camera_metadata_tag_name(end), nullptr);
        EXPECT_NE(get_camera_metadata_section_name(end), nullptr);
        count += end - first;
    }
    EXPECT_EQ(count, 256u);
    EXPECT_EQ(get_camera_metadata_section_name(ANDROID_SECTION_COUNT << 16), nullptr);
    // The whole table: ids, names and types were compared with Android's own tables, the counts
    // looked through.
    std::vector<std::string> lines;
    for (quen::host::TagRange const& range :
         {quen::host::androidTags(), quen::host::vendorTags()}) {
        for (quen::host::TagInfo const& info : range) {
            ASSERT_EQ(get_camera_metadata_tag_type(info.tag) == -1, info.tag == 0x00010038);
            ASSERT_EQ(quen::host::findTag(info.tag), &info);
            ASSERT_EQ(quen::host::findTag(info.name), &info) << "two tags of one name";
            bool const isAndroids = &range[0] == &quen::host::androidTags()[0];
            char id[12];
            snprintf(id, sizeof(id), "%08x", info.tag);
            lines.push_back(id + std::string(" ") +
                            (isAndroids ? get_camera_metadata_section_name(info.tag) +
                                                  std::string(".") +
                                                  get_camera_metadata_tag_name(info.tag)
                                        : info.name) +
                            ' ' + camera_metadata_type_names[info.type] + ' ' +
                            std::to_string(info.metadataType) + ' ' + std::to_string(info.count));
        }
    }
    quentest::expectGolden("tags", lines);
    EXPECT_EQ(quen::host::findTag("3abufferindex"), quen::host::findTag(0xc00c0018));
    EXPECT_EQ(quen::host::findTag("3ABufferInde"), nullptr);
}

TEST(CameraMetadata, KnowsVendorsTagsByTheirOperations) {
    constexpr uint32_t kTheirs = 0x80120034;
    EXPECT_STREQ(get_camera_metadata_section_name(kCurrentMode), "vendor");
    EXPECT_EQ(get_camera_metadata_tag_type(kTheirs), -1);

    vendor_tag_cache_ops vendors{};
    vendors.get_section_name = [](uint32_t, metadata_vendor_id_t id) {
        return id == 7 ? "com.seven" : nullptr;
    };
    vendors.get_tag_name = [](uint32_t tag, metadata_vendor_id_t id) {
        return id == 7 && tag == kTheirs ? "width" : nullptr;
    };
    vendors.get_tag_type = [](uint32_t, metadata_vendor_id_t id) { return id == 7 ? 2 : -1; };
    set_camera_metadata_vendor_cache_ops(&vendors);
    Metadata const metadata = owned(allocate_camera_metadata(1, 8));
    float const item = 1;
    EXPECT_NE(add_camera_metadata_entry(metadata.get(), kTheirs, &item, 1), 0);
    set_camera_metadata_vendor_id(metadata.get(), 7);
    EXPECT_EQ(add_camera_metadata_entry(metadata.get(), kTheirs, &item, 1), 0);
    EXPECT_STREQ(get_local_camera_metadata_section_name(kTheirs, metadata.get()), "com.seven");
    EXPECT_STREQ(get_local_camera_metadata_tag_name(kTheirs, metadata.get()), "width");
    EXPECT_STREQ(get_camera_metadata_tag_name(kCurrentMode), "currentMode") << "without an id";
    set_camera_metadata_vendor_id(metadata.get(), 8);
    EXPECT_EQ(get_local_camera_metadata_tag_type(kTheirs, metadata.get()), -1);
    set_camera_metadata_vendor_cache_ops(nullptr);

    // Last: the platform's own operations do not come back.
    vendor_tag_ops_t ops{};
    ops.get_section_name = [](vendor_tag_ops_t const*, uint32_t) { return "com.maker"; };
    ops.get_tag_name = [](vendor_tag_ops_t const*, uint32_t) { return "depth"; };
    ops.get_tag_type = [](vendor_tag_ops_t const*, uint32_t) { return int{TYPE_INT64}; };
    set_camera_metadata_vendor_ops(&ops);
    EXPECT_STREQ(get_camera_metadata_section_name(kTheirs), "com.maker");
    EXPECT_STREQ(get_camera_metadata_tag_name(kTheirs), "depth");
    EXPECT_EQ(get_camera_metadata_tag_type(kTheirs), TYPE_INT64);
    set_camera_metadata_vendor_ops(nullptr);
    EXPECT_EQ(get_camera_metadata_tag_type(kCurrentMode), -1);
}

// golden/dump.txt was looked through, beside what Android's own dump prints.
TEST(CameraMetadata, IsDumpedAsText) {
    Metadata const metadata = owned(allocate_camera_metadata(9, 400));
    std::vector<int32_t> const regions(17, -3);
    std::string const unknown(18, '\xff');
    camera_metadata_rational_t const color[] = {{1, 2}, {-3, 4}, {5, 6}};
    float const gains[] = {0.5F, 1, 2, 3, 4, 5, 6, 7, 8};
    double const noise[] = {0.123456789, 1, 2, 3, 4};
    int64_t const times[] = {-7, 8, 1LL << 40};
    auto const add = [&](uint32_t tag, uint8_t type, void const* items, size_t count) {
        EXPECT_EQ(quen::host::addEntryOfType(metadata.get(), tag, type, items, count), 0);
    };
    add(kRegions, TYPE_INT32, regions.data(), regions.size());
    add(ANDROID_SENSOR_NEUTRAL_COLOR_POINT, TYPE_RATIONAL, color, 3);
    add(ANDROID_COLOR_CORRECTION_GAINS, TYPE_FLOAT, gains, 9);
    add(ANDROID_SENSOR_NOISE_PROFILE, TYPE_DOUBLE, noise, 5);
    add(0x80ff0001, TYPE_BYTE, unknown.data(), 18);
    add(0x80ff0002, TYPE_INT64, times, 3);
    add(ANDROID_SENSOR_TIMESTAMP, TYPE_INT64, times, 1);
    add(ANDROID_JPEG_QUALITY, TYPE_BYTE, "_", 1);
    std::unique_ptr<FILE, int (*)(FILE*)> const file(tmpfile(), fclose);
    for (int const verbosity : {0, 1, 2}) {
        dump_indented_camera_metadata(metadata.get(), fileno(file.get()), verbosity, verbosity);
    }
    sort_camera_metadata(metadata.get());
    auto* const entries = quen::host::entriesOf(metadata.get());
    entries[0].data.offset = static_cast<uint32_t>(get_camera_metadata_data_count(metadata.get()));
    entries[1].type = NUM_TYPES;  // what is broken is not followed
    dump_camera_metadata(metadata.get(), fileno(file.get()), 2);
    dump_indented_camera_metadata(nullptr, fileno(file.get()), 2, 1);
    dump_indented_camera_metadata(nullptr, fileno(file.get()), 2, -1);
    std::string text(10000, ' ');
    text.resize(static_cast<size_t>(pread(fileno(file.get()), text.data(), text.size(), 0)));
    std::istringstream in(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    quentest::expectGolden("dump", lines);
}

TEST(CameraMetadata, OfARequestIsLoggedLineByLine) {
    quentest::LogLines log;
    Metadata const metadata = owned(allocate_camera_metadata(1, 0));
    add_camera_metadata_entry(metadata.get(), ANDROID_JPEG_QUALITY, "_", 1);
    QuenParameterUpdater::dumpMetadata(metadata.get(), "unwanted", 6);
    quen::host::setLogLevel(quen::host::LogLevel::Debug);
    QuenParameterUpdater::dumpMetadata(metadata.get(), "RAW2YUV", 7);
    QuenParameterUpdater::dumpMetadata(nullptr, nullptr, 8);
    std::string const head = "camera QuenParameterUpdater 0 D [QuenParameterUpdater] ";
    EXPECT_THAT(log.lines, ElementsAre(head + "frame 7 stage RAW2YUV: 1 tags",
                                       head + "0x00070004 android.jpeg.quality byte[1] 95",
                                       head + "frame 8 stage : no metadata"));
}

}  // namespace
