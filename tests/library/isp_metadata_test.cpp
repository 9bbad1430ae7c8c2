#include <dlfcn.h>

#include <mtkcam/isp_metadata.h>
#include <quenOfflineDevice/metadata/IspMetadata.h>

#include "support/DeviceTest.h"
#include "support/MetadataBuilder.h"
#include "support/Transcript.h"

using namespace quentest;
using namespace testing;
using NSCam::IMetadata;
using NSCam::MRect;

namespace {

bool gWriterFails = false;
unsigned int gRecordsAnnounced = 0;
bool gItemsGivenAsNull = false;

}  // namespace

// Stands before the platform's, so that a test can make it fail.
int initial_isp_metadata_vector(std::vector<unsigned char>& vec, unsigned int entryCount) {
    static auto* const platforms = reinterpret_cast<decltype(&initial_isp_metadata_vector)>(
            dlsym(RTLD_NEXT, "_Z27initial_isp_metadata_vectorRSt6vectorIhSaIhEEj"));
    gRecordsAnnounced = entryCount;
    return gWriterFails ? -12 : platforms(vec, entryCount);
}

int add_isp_metadata_entry(std::vector<unsigned char>& vec, unsigned int tag, unsigned int type,
                           void* data, unsigned int byteSize, unsigned int* usedBytes) {
    static auto* const platforms = reinterpret_cast<decltype(&add_isp_metadata_entry)>(
            dlsym(RTLD_NEXT, "_Z22add_isp_metadata_entryRSt6vectorIhSaIhEEjjPvjPj"));
    gItemsGivenAsNull = gItemsGivenAsNull || data == nullptr;
    return platforms(vec, tag, type, data, byteSize, usedBytes);
}

namespace {

using Bytes = std::vector<uint8_t>;

class IspMetadataEncodingTest : public testing::Test {
  protected:
    Bytes encode() {
        Bytes out{1, 2, 3};  // gone afterwards
        quen::convertToISPMetadata(&mMetadata, out);
        return out;
    }

    IMetadata mMetadata;
};
using IspMetadataEncodingDeathTest = IspMetadataEncodingTest;

TEST_F(IspMetadataEncodingTest, TypesAreMappedAndTheOrderIsTheMetadatas) {
    setItems<MRect>(mMetadata, 0x60, {MRect({1, 2}, {3, 4}), MRect({-5, 6}, {7, 8})});
    setItems<int64_t>(mMetadata, 0x40, {-1, int64_t{1} << 40, 2, 3, 4});
    setItems<float>(mMetadata, 0x30, {1.5f, -0.25f});
    setItems<int32_t>(mMetadata, 0x20, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
    setItems<uint8_t>(mMetadata, 0x10, Bytes(40, 0xab));
    Transcript log;
    EXPECT_EQ(encode(), ispBuffer({ispRecord<uint8_t>(0x10, 0, Bytes(40, 0xab)),
                                   ispRecord<int32_t>(0x20, 1, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}),
                                   ispRecord<float>(0x30, 3, {1.5f, -0.25f}),
                                   ispRecord<int64_t>(0x40, 2, {-1, int64_t{1} << 40, 2, 3, 4}),
                                   ispRecord<int32_t>(0x60, 1, {1, 2, 3, 4, -5, 6, 7, 8})}));
    EXPECT_TRUE(
            log.has("D IMetadata entry tag: 0x60, type: 8, count: 2, byte_count: 16, "
                    "count*byte_count: 32"));
}

TEST_F(IspMetadataEncodingTest, WhatTheIspCannotTakeIsLeftOut) {
    setItems<double>(mMetadata, 0x11, {1.0});
    setItems<NSCam::MRational>(mMetadata, 0x12, {{1, 2}});
    setItems<IMetadata>(mMetadata, 0x15, {IMetadata()});
    mMetadata.update(0x16, IMetadata::IEntry(0x16));  // of no type at all
    setItems<uint8_t>(mMetadata, 0x20, Bytes(41));
    setItems<int32_t>(mMetadata, 0x21, std::vector<int32_t>(11));
    setItems<float>(mMetadata, 0x22, std::vector<float>(11));
    setItems<int64_t>(mMetadata, 0x23, std::vector<int64_t>(6));
    setItems<MRect>(mMetadata, 0x5A, std::vector<MRect>(3));
    setItems<int32_t>(mMetadata, 0x60, {5});
    NSCam::IMetadata::IEntry noRectangles(0x61);
    noRectangles.push_back(static_cast<MRect const*>(nullptr), 0, NSCam::Type2Type<MRect>());
    mMetadata.update(0x61, noRectangles);
    auto const tooLarge = [](std::string const& tag) {
        return MatchesRegex("W tag\\[0x" + tag +
                            "\\] is not support with err\\[-?[1-9][0-9]*\\], maybe data size is "
                            "too large");
    };
    Transcript log;
    EXPECT_EQ(encode(),
              ispBuffer({ispRecord<int32_t>(0x60, 1, {5}), ispRecord<int32_t>(0x61, 1, {})}));
    EXPECT_EQ(gRecordsAnnounced, 11u);
    EXPECT_FALSE(gItemsGivenAsNull) << "no rectangles, too, are an array";
    EXPECT_THAT(log.lines(),
                ElementsAre("I convertToISPMetadata E", "D IMetadata entry count : 11",
                            "W tag[0x11] has not support type[4]",
                            "W tag[0x12] has not support type[5]",
                            "W tag[0x15] has not support type[9]",
                            "W tag[0x16] has not support type[-1]", tooLarge("20"), tooLarge("21"),
                            tooLarge("22"), tooLarge("23"),
                            "D IMetadata entry tag: 0x5A, type: 8, count: 3, byte_count: 16, "
                            "count*byte_count: 48",
                            tooLarge("5A"),
                            "D IMetadata entry tag: 0x61, type: 8, count: 0, byte_count: 16, "
                            "count*byte_count: 0",
                            "I convertToISPMetadata X"));
}

TEST_F(IspMetadataEncodingDeathTest, TheWriterFails) {
    gWriterFails = true;
    EXPECT_FATAL(encode(), "initial_isp_metadata_vector fail");
    gWriterFails = false;
}

class IspMetadataDecodingTest : public testing::Test {
  protected:
    bool decode(void const* data) { return quen::convertToIMetadata(data, mOut); }

    IMetadata mOut;
};

TEST_F(IspMetadataDecodingTest, NullIsTheOnlyFailureAndTheLaterOfTwoRecordsStands) {
    setItems<int32_t>(mOut, 0x20, {77, 78});
    setItems<int32_t>(mOut, 0x30, {79});
    EXPECT_FALSE(decode(nullptr));
    EXPECT_TRUE(decode(ispBuffer({}).data()));
    ASSERT_TRUE(decode(
            ispBuffer({ispRecord<int32_t>(0x20, 1, {1, 2, 3}), ispRecord<float>(0x20, 3, {2.5f})})
                    .data()));
    EXPECT_EQ(mOut.count(), 2u);
    EXPECT_THAT(itemsOf<float>(mOut, 0x20, IMetadata::TYPE_MFLOAT), ElementsAre(2.5f));
    EXPECT_THAT(int32sOf(mOut, 0x30), ElementsAre(79));
}

TEST_F(IspMetadataDecodingTest, EachTypeWhereverTheRecordsBegin) {
    int64_t const large = int64_t{-3} * 1000000000000;
    for (uint32_t const firstRecord : {20u, 24u, 57u, 300u}) {
        Bytes const buffer = ispBuffer(
                {ispRecord<int32_t>(tags::kTuningMode, 1, {6003}),
                 ispRecord<int64_t>(0x40, 2, {large, 9}),
                 ispRecord<uint8_t>(0x10, 0, Bytes(40, 0xfe)), ispRecord<float>(0x30, 3, {0.5f}),
                 ispRecord<int32_t>(0x20, 1, {1, -2, 3, 4, 5, 6, 7, 8, 9, 10})},
                firstRecord);
        mOut.clear();
        Transcript log;
        ASSERT_TRUE(decode(buffer.data()));
        EXPECT_THAT(log.lines(),
                    ElementsAre("D ISPMeta entry count : 5", "D tag : 0x800B000E", "D tag : 0x40",
                                "D tag : 0x10", "D tag : 0x30", "D tag : 0x20"));
        EXPECT_EQ(mOut.count(), 5u);
        EXPECT_THAT(int32sOf(mOut, tags::kTuningMode), ElementsAre(6003));
        EXPECT_THAT(itemsOf<int64_t>(mOut, 0x40, IMetadata::TYPE_MINT64), ElementsAre(large, 9));
        EXPECT_EQ(itemsOf<uint8_t>(mOut, 0x10, IMetadata::TYPE_MUINT8), Bytes(40, 0xfe));
        EXPECT_THAT(itemsOf<float>(mOut, 0x30, IMetadata::TYPE_MFLOAT), ElementsAre(0.5f));
        EXPECT_THAT(int32sOf(mOut, 0x20), ElementsAre(1, -2, 3, 4, 5, 6, 7, 8, 9, 10));
    }
}

TEST_F(IspMetadataDecodingTest, TheDataSizeAloneEndsTheItems) {
    struct {
        uint32_t type, dataSize;
        size_t items;
    } const cases[] = {{1, 6, 2}, {1, 1, 1}, {1, 4, 1}, {1, 44, 11}, {2, 9, 2},      {2, 8, 1},
                       {3, 5, 2}, {0, 3, 3}, {3, 0, 0}, {7, 0, 0},   {0, 0x104, 260}};
    for (auto const& c : cases) {
        SCOPED_TRACE(Message() << c.type << " " << c.dataSize);
        IspRecordBytes const record{0x20, c.type, c.dataSize,
                                    packed<int32_t>({1, 2, 3, 4, 5, 6, 7, 8, 9, 10})};
        mOut.clear();
        Bytes buffer = ispBuffer({record, ispRecord<int32_t>(0x21, 1, {5})});
        buffer.resize(400);
        ASSERT_TRUE(decode(buffer.data()));
        EXPECT_TRUE(hasTag(mOut, 0x20));
        EXPECT_EQ(mOut.entryFor(0x20).count(), c.items);
        if (c.type == 1) {
            std::vector<int32_t> const all{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 0x21};  // the next's tag
            EXPECT_EQ(int32sOf(mOut, 0x20), std::vector(all.begin(), all.begin() + c.items));
        }
        EXPECT_THAT(int32sOf(mOut, 0x21), ElementsAre(5));
    }
}

TEST(IspMetadataDecodingDeathTest, DataOfAnUnknownTypeHasNoEnd) {
    IMetadata out;
    for (uint32_t const type : {4u, 0x101u}) {
        Bytes const buffer = ispBuffer({{0x20, type, 4, {1, 2, 3, 4}}});
        EXPECT_EXIT(ualarm(200000, 0);
                    quen::convertToIMetadata(buffer.data(), out), KilledBySignal(SIGALRM), "");
    }
}

}  // namespace
