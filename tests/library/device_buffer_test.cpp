#include <gmock/gmock.h>

#include <iterator>
#include <numeric>

#include "support/Lines.h"
#include "support/Peers.h"
#include "support/PlaneLayouts.h"

namespace {

using namespace quentest;
using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;

constexpr int kNv21 = 0x11;
constexpr int kBlob = 0x21;

class DeviceBufferTest : public testing::Test {
  protected:
    hidl_handle allocate(void const* source, int width, int height, int format) {
        hidl_handle handle;
        quenOfflineDevicePeer(mDevice).allocGraphicBuffer(handle, source, width, height, format,
                                                          0x20033, mStride);
        return handle;
    }

    HookedMapper& mMapper = *Graphics::fresh().mapper;
    quenOfflineDevice mDevice;
    unsigned int mStride = 0;
};

TEST_F(DeviceBufferTest, PictureIsCopiedRowByRow) {
    struct {
        int width, height;
        char const *layouts, *line, *expected;  // 238: not written
    } const cases[] = {
            // The source counts up from 1, luma first.
            // Cr first
            {4, 2, "Y0 0 8 8  V0U8 16 16 8", "D Load YUV stride(8, 8)",
             "1 2 3 4 0 0 0 0 5 6 7 8 0 0 0 0 9 10 11 12 0 0 0 0 238"},
            // Cb first
            {4, 2, "Y0 0 8 8  U0V8 16 16 8", "D Load YUV stride(8, 8)",
             "1 2 3 4 0 0 0 0 5 6 7 8 0 0 0 0 10 9 12 11 0 0 0 0 238"},
            // planar: Cb is read first all the same
            {4, 2, "Y0 0 8 8  V0 16 8 6  U0 22 8 6", "D Load YUV stride(8, 6)",
             "1 2 3 4 0 0 0 0 5 6 7 8 0 0 0 0 11 12 0 0 238 238 9 10 0 0 238"},
            // chroma rows longer than luma rows
            {2, 4, "Y0 0 8 4  V0U8 16 16 6", "D Load YUV stride(4, 6)",
             "1 2 0 0 3 4 0 0 5 6 0 0 7 8 0 0 9 10 0 0 238 238 11 12 0 0 238"},
            // odd sizes: halves are rounded down
            {5, 3, "Y0 0 8 6  V0U8 18 16 6", "D Load YUV stride(6, 6)",
             "1 2 3 4 5 0 6 7 8 9 10 0 11 12 13 14 15 0 16 17 18 19 0 0 238"},
            {5, 3, "Y0 0 8 6  U0 18 8 3  V0 21 8 3", "D Load YUV stride(6, 3)",
             "1 2 3 4 5 0 6 7 8 9 10 0 11 12 13 14 15 0 16 17 0 18 19 0 238"},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.layouts);
        std::vector<uint8_t> source(c.width * c.height + 2 * (c.width / 2) * (c.height / 2));
        std::iota(source.begin(), source.end(), uint8_t{1});
        std::istringstream in(c.expected);
        std::vector<int> const expected{std::istream_iterator<int>(in), {}};
        std::vector<uint8_t> target(expected.size(), 238);
        mMapper.calls.clear();
        mMapper.onGet = giving(Error::NONE, layoutsOf(c.layouts));
        mMapper.onLock = giving(Error::NONE, static_cast<void*>(target.data()));
        Transcript transcript;
        allocate(source.data(), c.width, c.height, kNv21);
        EXPECT_THAT(target, ElementsAreArray(expected));
        EXPECT_TRUE(transcript.has(c.line));
        EXPECT_THAT(mMapper.calls, ElementsAre("import", "lock", "unlock", "free"));
        EXPECT_EQ(mMapper.lockUsage, 0x30u);
        IMapper::Rect const& region = mMapper.lockRegion;
        EXPECT_THAT((std::vector{region.left, region.top, region.width, region.height}),
                    ElementsAre(0, 0, c.width, c.height));
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
}

}  // namespace
