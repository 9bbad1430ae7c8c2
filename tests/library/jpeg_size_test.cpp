#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <quenCommon/Hardened.h>
#include <quenOfflineDevice/jpeg/JpegCopy.h>

#include "support/Formats.h"
#include "support/Lines.h"
#include "support/PlaneLayouts.h"

namespace {

using namespace quentest;
using testing::ElementsAre;

constexpr int kSize = 64;

class JpegSizeTest : public testing::Test {
  protected:
    int probe(int size = kSize) { return quen::getJpegSize(mBlob, size); }

    hidl_handle const mBlob = allocateGraphic(kSize, 1, kBlob);
    Mapping const mMemory{mBlob->data[0]};
    HookedMapper& mMapper = *Graphics::fresh().mapper;
};

TEST_F(JpegSizeTest, TrailerIsReadAndToldWhateverItsId) {
    struct Case {
        std::vector<uint8_t> trailer;
        int given;  // bytes of the buffer, which ends with the trailer
        std::string size, told;
        bool holdsJpeg = false;  // the hardened build tells the size of no others
    };
    std::vector<uint8_t> const any{0xFF, 0, 0xAB, 0xCD, 0x34, 0x12, 0, 0};
    std::vector<Case> const cases = {
            {any, kSize, "4660", "JPEG, .blobSize = 4660"},
            {{0x01, 0, 0, 0, 0, 0, 1, 0}, kSize, "65536", "0x1, .blobSize = 65536"},
            {{0xFF, 0xBE, 0, 0, 8, 0, 0, 0}, 48, "8", "0xbeff, .blobSize = 8"},
            {{0xFF, 0, 0, 0, 40, 0, 0, 0}, 48, "40", "JPEG, .blobSize = 40", true},
            {{0xFF, 0, 0, 0, 41, 0, 0, 0}, 48, "41", "JPEG, .blobSize = 41"},
            {{0xFF, 0, 0, 0, 0xFE, 0xFF, 0xFF, 0xFF}, 8, "-2", "JPEG, .blobSize = 4294967294"},
            // What does not lie in the buffer is not read.
            {any, 7, "4660", "0x0, .blobSize = 4660"},
            {any, 4, "4660", "0x0, .blobSize = 4660"},
            {any, 3, "0", "0x0, .blobSize = 0"},
            {any, 0, "0", "0x0, .blobSize = 0"}};
    for (Case const& c : cases) {
        memcpy(mMemory.data() + kSize - 8, c.trailer.data(), 8);
        void* const address = mMemory.data() + kSize - c.given;
        mMapper.onLock = giving(Error::NONE, address);
        std::string const size = quen::kHardened && !c.holdsJpeg ? "-1" : c.size;
        Transcript transcript;
        EXPECT_EQ(std::to_string(probe(c.given)), size);
        EXPECT_EQ(deviceLines(transcript),
                  (Lines{"I get JPEG size from output buffer E",
                         "I get data from output buffer address ADDRESS",
                         "D {.blobId = " + c.told + "}",
                         "I get JPEG size is " + size + " from output buffer X"}));
        EXPECT_TRUE(transcript.has("I get data from output buffer address " +
                                   testing::PrintToString(address)));
        EXPECT_EQ(mMapper.lockUsage, 0x33u);
        EXPECT_EQ(mMapper.lockedRegion(), (std::vector{0, 0, c.given, 1}));
    }
}

TEST_F(JpegSizeTest, BufferIsGivenBackReadableOrNot) {
    Fence const fence;
    fenceUnlocks(mMapper, fence);
    int const descriptors = openDescriptors();
    mMemory.data()[kSize - 8] = 0xFF;
    mMemory.data()[kSize - 4] = 1;
    EXPECT_EQ(probe(), 1);
    mMapper.onLock = giving(Error::NO_RESOURCES, static_cast<void*>(nullptr));
    EXPECT_EQ(probe(), quen::kHardened ? -1 : 0);
    EXPECT_THAT(mMapper.calls, ElementsAre("import", "lock", "unlock", "free", "import", "lock",
                                           "unlock", "free"));
    EXPECT_EQ(openDescriptors(), descriptors);
}

}  // namespace
