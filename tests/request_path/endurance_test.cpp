#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <fstream>
#include <iterator>

#include "host/isp/device/SoftwareIspModule.h"
#include "support/ClientSession.h"
#include "support/Formats.h"
#include "support/MetadataBuilder.h"
#include "support/RecordingCallback.h"

namespace {

using namespace quentest;

constexpr int kWidth = 64;
constexpr int kHeight = 48;
constexpr int kRequests = 1600;
constexpr int kWarmUp = 400;  // fills the pools of 3A buffers and of the heap, starts every thread

// The heap and the sanitizers map memory of their own; a leak shows by hundreds.
constexpr long kMappingsOfOthers = 40;

// The least that malloc gives out is 24 bytes: a leak of one in two requests is well above.
constexpr size_t kBytesOfOthers = 8 * kRequests;

long mappings() {
    std::ifstream maps("/proc/self/maps");
    return std::count(std::istreambuf_iterator<char>(maps), {}, '\n');
}

/** Bytes of the heap in use; 0 with a sanitizer, which counts leaks itself. */
size_t heapBytes() {
    return mallinfo2().uordblks;
}

TEST(EnduranceTest, ThousandsOfRequestsLeaveNothingBehind) {
    hidl_handle const raw = allocateGraphic(kWidth, kHeight, kRaw10);
    hidl_handle const developed = allocateGraphic(kWidth, kHeight, kYuv);
    MemoryBuffer const packed(kWidth * kHeight * 3 / 2);
    MemoryBuffer const encoded(16384);
    ImageBuffer const rawInput = imageOf(1, kRaw10, kWidth, kHeight, raw);
    ImageBuffer const yuvOutput = imageOf(2, kYuv, kWidth, kHeight, developed);
    ImageBuffer const yuvInput = packed.image(3, kYuv, kWidth, kHeight);
    ImageBuffer const jpegOutput = encoded.image(4, kBlob, kWidth, kHeight);

    ASSERT_EQ(quen::host::isp::registerSoftwareIsp(), 0);
    setJpegTimeout("1");
    ClientSession session;
    session.create(rawInput, {yuvOutput});
    auto const run = [&](int first, int count) {
        for (int i = first; i < first + count && !testing::Test::HasFailure(); i += 2) {
            // Every other pair has its tuning data in 3A buffers, the rest in graphic buffers.
            MetadataBuilder settings;
            if (i % 4 == 0) {
                settings.i32(tags::kBufferIndex, 1);
            }
            android::sp<RecordingCallback> const client = new RecordingCallback;
            EXPECT_EQ(session.process(i, rawInput, {yuvOutput}, settings.get(), client), 0);
            EXPECT_TRUE(client->waitFor(2));
            session.waitUntilDrained();
            EXPECT_EQ(client->calls().back().status, 0u);
            EXPECT_GT(session.process(i + 1, yuvInput, {jpegOutput}, settings.get(), nullptr), 0);
            session.waitUntilDrained();
            Graphics::fresh();  // forgets the calls that it remembers
        }
    };
    run(0, kWarmUp);
    int const descriptors = openDescriptors();
    long const maps = mappings();
    size_t const heap = heapBytes();
    run(kWarmUp, kRequests);
    EXPECT_EQ(openDescriptors(), descriptors);
    EXPECT_LT(heapBytes(), heap + kBytesOfOthers);
    EXPECT_LE(mappings(), maps + kMappingsOfOthers);
    session.device.destroy();
}

}  // namespace
