#include <gmock/gmock.h>

#include <iterator>
#include <numeric>

#include <quenOfflineDevice/request/DeviceBuffer.h>

#include "support/Formats.h"
#include "support/Lines.h"
#include "support/PlaneLayouts.h"

namespace {

using namespace quentest;
using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;

class DeviceBufferTest : public testing::Test {
  protected:
    hidl_handle allocate(void const* source, int width, int height, int format) {
        hidl_handle handle;
        quen::allocGraphicBuffer(handle, source, width, height, format, 0x20033, mStride);
        return handle;
    }

    HookedMapper& mMapper = *Graphics::fresh().mapper;
    uint32_t mStride = 0;
};

TEST_F(DeviceBufferTest, PictureIsCopiedRowByRow) {
    std::string const full = "1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 ";
    std::string const narrow = "1 2 0 0 3 4 0 0 5 6 0 0 7 8 0 0 ";
    struct {
        int firstWidth, secondWidth, height;
        char const *layouts, *strides;
        std::string expected;  // 238: not written
    } const cases[] = {
            // The source counts up from 1, luma first.
            // Cr first: rows as long as the buffer's and longer, then shorter ones
            {4, 6, 4, "Y0 0 8 4  V0U8 16 16 4", "4, 4", full + "17 18 19 20 21 22 23 24 238"},
            {2, 2, 4, "Y0 0 8 4  V0U8 16 16 6", "4, 6", narrow + "9 10 0 0 238 238 11 12 0 0 238"},
            // Cb first
            {4, 6, 4, "Y0 0 8 4  U0V8 16 16 4", "4, 4", full + "18 17 20 19 22 21 24 23 238"},
            {2, 2, 4, "Y0 0 8 4  U0V8 16 16 6", "4, 6", narrow + "10 9 0 0 238 238 12 11 0 0 238"},
            // pairs whose halves lie in planes of their own
            {4, 6, 4, "Y0 0 8 4  V0 16 16 4  U0 24 16 4", "4, 4",
             full + "17 238 19 238 21 238 23 238 18 238 20 238 22 238 24 238"},
            {2, 2, 4, "Y0 0 8 4  U0 16 16 5  V0 26 16 5", "4, 5",
             narrow + "10 238 0 238 238 12 238 0 238 238 9 238 0 238 238 11 238 0 238"},
            // planes that overlap: each pair's Cr and Cb are written in turn
            {4, 6, 4, "Y0 0 8 4  V0 16 16 4  U0 18 16 4", "4, 4",
             full + "17 238 19 238 21 238 23 238 24"},
            // planar: Cb is read first all the same
            {4, 6, 4, "Y0 0 8 4  V0 16 8 2  U0 20 8 2", "4, 2",
             full + "21 22 23 24 17 18 19 20 238"},
            {2, 2, 4, "Y0 0 8 4  V0 16 8 3  U0 22 8 3", "4, 3",
             narrow + "11 0 238 12 0 238 9 0 238 10 0 238"},
            // odd sizes: halves are rounded down
            {5, 5, 3, "Y0 0 8 6  V0U8 18 16 6", "6, 6",
             "1 2 3 4 5 0 6 7 8 9 10 0 11 12 13 14 15 0 16 17 18 19 0 0 238"},
            {5, 5, 3, "Y0 0 8 6  U0 18 8 3  V0 21 8 3", "6, 3",
             "1 2 3 4 5 0 6 7 8 9 10 0 11 12 13 14 15 0 16 17 0 18 19 0 238"},
    };
    auto const expectCopied = [&](auto const& c, int width) {
        SCOPED_TRACE(testing::Message() << width << " " << c.layouts);
        std::vector<uint8_t> source(width * c.height + 2 * (width / 2) * (c.height / 2));
        std::iota(source.begin(), source.end(), uint8_t{1});
        std::istringstream in(c.expected);
        std::vector<int> const expected{std::istream_iterator<int>(in), {}};
        std::vector<uint8_t> target(expected.size(), 238);
        Fence const fence;
        fenceUnlocks(mMapper, fence);
        int const descriptors = openDescriptors();
        mMapper.calls.clear();
        mMapper.onGet = giving(Error::NONE, layoutsOf(c.layouts));
        mMapper.onLock = giving(Error::NONE, static_cast<void*>(target.data()));
        Transcript transcript;
        allocate(source.data(), width, c.height, kNv21);
        EXPECT_EQ(openDescriptors(), descriptors);
        EXPECT_THAT(target, ElementsAreArray(expected));
        EXPECT_TRUE(transcript.has(std::string("D Load YUV stride(") + c.strides + ")"));
        EXPECT_THAT(mMapper.calls, ElementsAre("import", "lock", "unlock", "free"));
        EXPECT_EQ(mMapper.lockUsage, 0x30u);
        EXPECT_THAT(mMapper.lockedRegion(), ElementsAre(0, 0, width, c.height));
    };
    for (auto const& c : cases) {
        for (int const width : {c.firstWidth, c.secondWidth}) {
            expectCopied(c, width);
        }
    }
}

TEST_F(DeviceBufferTest, WhatIsNoPictureStaysAsItWasAllocated) {
    std::vector<uint8_t> const source(4096, 0x55);
    hidl_handle const blob = allocate(source.data(), 4096, 1, kBlob);
    EXPECT_THAT(mMapper.calls, ElementsAre("import", "unlock", "free"));
    EXPECT_THAT(Mapping(blob->data[0]).bytes(4096), Each(0));
    EXPECT_EQ(static_cast<int>(mMapper.described.format), kBlob);
    EXPECT_EQ(mMapper.described.usage, 0x20033u);

    mMapper.calls.clear();
    hidl_handle const picture = allocate(nullptr, 64, 4, kNv21);
    EXPECT_THAT(mMapper.calls, ElementsAre());
    EXPECT_GE(mStride, 64u);

    mMapper.onLock = giving(Error::NO_RESOURCES, static_cast<void*>(nullptr));
    hidl_handle const unreachable = allocate(source.data(), 64, 4, kNv21);
    EXPECT_THAT(Mapping(unreachable->data[0]).bytes(64 * 6), Each(0));
    EXPECT_THAT(mMapper.calls, ElementsAre("import", "lock", "unlock", "free"));

    std::vector<uint8_t> target(512, 238);
    mMapper.onGet = giving(Error::NONE, layoutsOf("Y0 0 8 64  V0U8 256 16 64"));
    mMapper.onLock = giving(Error::NONE, static_cast<void*>(target.data()));
    allocate(source.data(), 64, -4, kNv21);
    EXPECT_THAT(target, Each(238)) << "no rows";
}

}  // namespace
