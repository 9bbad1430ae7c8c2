#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Lines.h"
#include "support/Peers.h"
#include "support/PlaneLayouts.h"

namespace {

using namespace quentest;
using testing::ElementsAre;

constexpr int kSize = 64;

class JpegSizeTest : public testing::Test {
  protected:
    int probe(int size = kSize) { return quenOfflineDevicePeer(mDevice).getJpegSize(mBlob, size); }

    hidl_handle const mBlob = allocateGraphic(kSize, 1, 0x21);
    Mapping const mMemory{mBlob->data[0]};
    HookedMapper& mMapper = *Graphics::fresh().mapper;
    quenOfflineDevice mDevice;
};

TEST_F(JpegSizeTest, TrailerIsReadAndToldWhateverItsId) {
    struct Case {
        std::vector<uint8_t> trailer;
        std::string size, told;
    };
    std::vector<Case> const cases = {
            {{0xFF, 0, 0xAB, 0xCD, 0x34, 0x12, 0, 0}, "4660", "JPEG, .blobSize = 4660"},
            {{0x01, 0, 0, 0, 0, 0, 1, 0}, "65536", "0x1, .blobSize = 65536"},
            {{0xFF, 0xBE, 0, 0, 8, 0, 0, 0}, "8", "0xbeff, .blobSize = 8"},
            {{0xFF, 0, 0, 0, 0xFE, 0xFF, 0xFF, 0xFF}, "-2", "JPEG, .blobSize = 4294967294"}};
    for (Case const& c : cases) {
        memcpy(mMemory.data() + kSize - 8, c.trailer.data(), 8);
        Transcript transcript;
        EXPECT_EQ(std::to_string(probe()), c.size);
        EXPECT_EQ(deviceLines(transcript),
                  (Lines{"I get JPEG size from output buffer E",
                         "I get data from output buffer address ADDRESS",
                         "D {.blobId = " + c.told + "}",
                         "I get JPEG size is " + c.size + " from output buffer X"}));
    }
    EXPECT_EQ(mMapper.lockUsage, 0x33u);
    EXPECT_EQ(mMapper.lockRegion.width, kSize);
    EXPECT_EQ(mMapper.lockRegion.height, 1);
}

TEST_F(JpegSizeTest, TrailerEndsTheGivenSize) {
    mMemory.data()[kSize - 4] = 1;
    mMemory.data()[48 - 4] = 2;
    EXPECT_EQ(probe(), 1);
    EXPECT_EQ(probe(48), 2);
}

TEST_F(JpegSizeTest, BufferIsGivenBackReadableOrNot) {
    Fence const fence;
    fenceUnlocks(mMapper, fence);
    int const descriptors = openDescriptors();
    mMemory.data()[kSize - 4] = 1;
    EXPECT_EQ(probe(), 1);
    mMapper.onLock = giving(Error::NO_RESOURCES, static_cast<void*>(nullptr));
    EXPECT_EQ(probe(), 0);
    EXPECT_THAT(mMapper.calls, ElementsAre("import", "lock", "unlock", "free", "import", "lock",
                                           "unlock", "free"));
    EXPECT_EQ(openDescriptors(), descriptors);
}

}  // namespace
