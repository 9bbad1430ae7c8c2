#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <quenOfflineDevice/metadata/IspMetadata.h>

#include "support/Lines.h"
#include "support/MetadataBuilder.h"

namespace {

using namespace quentest;
using testing::ElementsAre;

TEST(HardenedDecodingTest, RecordsThatCannotBeReadAreLeftOutWithOneWarningEach) {
    std::vector<uint8_t> bytes = ispBuffer({
            ispRecord<int32_t>(0x1, 1, {7, 8}),
            ispRecord<int32_t>(0x2, 4, {7}),  // unknown type
            ispRecord<int32_t>(0x3, 1, {7}),  // as below: no whole number of items
            ispRecord<int32_t>(0x4, 1, {7}),  // as below: beyond its data area
            ispRecord<int64_t>(0x5, 2, {9}),
            ispRecord<int32_t>(0x6, 1, {7}),  // as below: cut off
            ispRecord<int32_t>(0x7, 1, {7}),
    });
    constexpr size_t kHeader = 20, kRecord = 56, kDataSize = 8;
    bytes[kHeader + 2 * kRecord + kDataSize] = 6;
    bytes[kHeader + 3 * kRecord + kDataSize] = 44;
    bytes.resize(kHeader + 6 * kRecord - 1);
    bytes.shrink_to_fit();

    NSCam::IMetadata out;
    Transcript transcript;
    EXPECT_TRUE(quen::convertCheckedToIMetadata(bytes.data(), bytes.size(), out));
    Lines warnings;
    for (std::string const& line : transcript.lines()) {
        if (line[0] == 'W') {
            warnings.push_back(line);
        }
    }
    EXPECT_THAT(
            warnings,
            ElementsAre("W ISPMeta tag[0x2] type[4] size[4] is left out: its type is unknown",
                        "W ISPMeta tag[0x3] type[1] size[6] is left out: its data is no whole "
                        "number of items",
                        "W ISPMeta tag[0x4] type[1] size[44] is left out: its data does not fit a "
                        "record",
                        "W ISPMeta entries from 5 on of 7 are left out: they do not fit the buffer "
                        "of 355 bytes"));
    EXPECT_EQ(out.count(), 2u);
    EXPECT_EQ(out.entryFor(0x1).itemAt(1, NSCam::Type2Type<int32_t>()), 8);
    EXPECT_EQ(out.entryFor(0x5).itemAt(0, NSCam::Type2Type<int64_t>()), 9);

    // A buffer without room for a header, a place beyond the end, more records than can be counted.
    for (size_t const size : {size_t{0}, size_t{19}, size_t{20}}) {
        std::vector<uint8_t> header(size);
        if (size == 20) {
            std::fill(header.begin() + 12, header.end(), uint8_t{0xFF});
        }
        NSCam::IMetadata none;
        EXPECT_EQ(quen::convertCheckedToIMetadata(header.data(), size, none),
                  header.data() != nullptr);
        EXPECT_EQ(none.count(), 0u);
    }
}

}  // namespace
