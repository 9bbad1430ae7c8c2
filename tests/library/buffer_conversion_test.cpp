#include <dlfcn.h>
#include <gmock/gmock.h>

#include <numeric>
#include <optional>

#include <quenOfflineDevice/request/BufferConversion.h>

#include "support/Buffers.h"
#include "support/Formats.h"
#include "support/Lines.h"
#include "support/MetadataBuilder.h"
#include "support/ScriptedThreeA.h"

namespace {

bool gSettingsAreFixed = false;

}  // namespace

// Stands before the platform's, so that a test can make it fail.
int update_camera_metadata_entry(camera_metadata_t* dst, size_t index, void const* data,
                                 size_t count, camera_metadata_entry_t* updated) {
    static auto* const platforms = reinterpret_cast<decltype(&update_camera_metadata_entry)>(
            dlsym(RTLD_NEXT, "update_camera_metadata_entry"));
    return gSettingsAreFixed ? -1 : platforms(dst, index, data, count, updated);
}

namespace {

using namespace quentest;
using quen::Direction;
using testing::Each;
using testing::ElementsAre;

class BufferConversionTest : public testing::Test {
  protected:
    BufferConversionTest() {
        std::iota(mClient.data(), mClient.data() + mClient.size(), uint8_t{1});
    }

    ImageBuffer client(int format) const { return mClient.image(3, format, 4, 2); }

    /** Converts a buffer and expects these lines, those that frame them, and tuning data or none.
     */
    void convert(ImageBuffer const& image, camera_metadata const* settings, Direction direction,
                 bool tuned, std::string const& lines) {
        uint32_t const size = image.format == kBlob ? 0 : kTuningBytes;
        Transcript transcript;
        quen::convertToISPBuffer(&image, {"RAW2YUV", settings, mTuningHandles}, &mResult, &mUsed,
                                 mTuning, direction);
        EXPECT_EQ(deviceLines(transcript),
                  linesOf("I reprocess stage RAW2YUV convertToISPBuffer E\n" + lines +
                          "\nI tuningData is nullptr " + (tuned ? "0" : "1") +
                          ", tuningData size = " + std::to_string(size) +
                          "\nI reprocess stage RAW2YUV convertToISPBuffer X"));
        EXPECT_EQ(mResult.tuningData.getNativeHandle() != nullptr, tuned);
        EXPECT_EQ(mResult.tuningDataSize, size);
    }
    void expectAllocated(uint32_t width, int format) {
        IMapper::BufferDescriptorInfo const& info = mGraphics.mapper->described;
        EXPECT_THAT(
                (std::vector<uint64_t>{info.width, info.height, uint64_t(info.format), info.usage}),
                ElementsAre(width, format == kNv21 ? 2 : 1, format, 0x20033));
    }
    /** A handle around a 3A descriptor: the descriptor stands in the first integer slot. */
    void expectDescriptorForm(hidl_handle const& handle, int fd) {
        ASSERT_NE(handle.getNativeHandle(), nullptr);
        EXPECT_THAT(
                (std::vector{handle->numFds, handle->numInts, handle->data[1], handle->data[2]}),
                ElementsAre(1, 2, fd, 0));
    }

    Graphics& mGraphics = Graphics::fresh();
    std::shared_ptr<ScriptedThreeA> const mThreeA = std::make_shared<ScriptedThreeA>();
    ScriptedThreeA::Guard const mInstalled{mThreeA};
    MemoryBuffer const mClient{12};
    MemoryBuffer const m3A{kTuningBytes};
    quen::TuningHandles mTuningHandles;  // outlives what records carry
    vendor::mediatek::hardware::camera::isphal::V1_0::ISPBuffer mResult{};
    hidl_handle mTuning;
    bool mUsed = false;
};

TEST_F(BufferConversionTest, NullRecordsAreRefused) {
    ImageBuffer const image = client(kYuv);
    for (bool const withImage : {false, true}) {
        Transcript transcript;
        quen::convertToISPBuffer(withImage ? &image : nullptr, {"RAW2YUV", nullptr, mTuningHandles},
                                 withImage ? nullptr : &mResult, &mUsed, mTuning, Direction::Input);
        EXPECT_EQ(deviceLines(transcript), linesOf(R"(
                I reprocess stage RAW2YUV convertToISPBuffer E
                E imageBuffer is nullptr, convertToISPBuffer failed
                I reprocess stage RAW2YUV convertToISPBuffer X)"));
    }
}

TEST_F(BufferConversionTest, ImageIsCopiedMadeOrPassedThrough) {
    // A YUV input becomes an NV21 device buffer with the client's picture in it.
    convert(client(kYuv), nullptr, Direction::Input, false, R"(I alloc gralloc for input yuv buffer
            D Load YUV stride(64, 64))");
    expectAllocated(4, kNv21);
    EXPECT_THAT(Mapping(mResult.buffer->data[0]).bytes(5), ElementsAre(1, 2, 3, 4, 0));

    // One that cannot be accessed stays as it was allocated.
    BorrowedHandle const nothing({-1});
    ImageBuffer inaccessible = client(kYuv);
    inaccessible.buffer = nothing.get();
    convert(inaccessible, nullptr, Direction::Input, false,
            "I alloc gralloc for input yuv buffer\nD Load YUV stride(64, 64)");
    EXPECT_THAT(Mapping(mResult.buffer->data[0]).bytes(4), Each(0));

    // A BLOB output becomes a device buffer of the client's bytes by one, without tuning data.
    MetadataBuilder settings;
    settings.i32(tags::kBufferIndex, 4);
    mUsed = true;
    mTuning = mClient.handle();
    convert(client(kBlob), settings.get(), Direction::Output, false,
            R"(I alloc gralloc for output JPEG buffer)");
    expectAllocated(12, kBlob);
    ASSERT_NE(mResult.buffer.getNativeHandle(), nullptr);

    convert(client(kBlob), nullptr, Direction::Input, false, R"(I use QCF gralloc buffer)");
    EXPECT_EQ(mResult.buffer.getNativeHandle(), mClient.handle());

    // Everything else is the client's own; tuning data of an earlier conversion is passed on.
    for (auto const& [format, direction] : {std::pair(kRaw10, Direction::Input),
                                            {kNv21, Direction::Input},
                                            {kPrivate, Direction::Input},
                                            {kYuv, Direction::Output}}) {
        ImageBuffer image = client(format);
        image.streamId = -2;
        convert(image, nullptr, direction, true, R"(I use QCF gralloc buffer)");
        EXPECT_EQ(mResult.streamId, 0xFFFFFFFEu);  // widened without its sign
        EXPECT_EQ(mResult.buffer.getNativeHandle(), mClient.handle());
        EXPECT_NE(mResult.tuningData.getNativeHandle(), mTuning.getNativeHandle());
        EXPECT_EQ(Mapping(mResult.tuningData->data[0]).size(), mClient.size());
        EXPECT_EQ(mResult.reserved.getNativeHandle(), nullptr);
        EXPECT_EQ(mResult.reservedSize, 0u);
    }
    EXPECT_TRUE(mUsed);
}

TEST_F(BufferConversionTest, OutputGetsA3ABufferAndTellsItsIndex) {
    // 1 is the least descriptor that is accepted. Only the first of several indexes changes hands.
    for (auto const& [fd, index] :
         {std::pair(m3A.fd(), std::vector{4}), {1, std::vector{4, 5, 6}}}) {
        mThreeA->next = {fd, kTuningBytes, 7};
        MetadataBuilder settings;
        add_camera_metadata_entry(settings.get(), tags::kBufferIndex, index.data(), index.size());
        mUsed = false;
        convert(client(kYuv), settings.get(), Direction::Output, true, R"(I use QCF gralloc buffer
                I get outputTuningData buffer from quencameraserver success, bufferIndex 7, bufferFd FD
                I update outputTuningData bufferIndex 7 success
                I get 3ADebugInfo result is 1 used3ADebugInfo 1)");
        EXPECT_TRUE(mUsed);
        std::vector<int32_t> told(index.size());
        told[0] = 7;
        camera_metadata_ro_entry_t entry;
        find_camera_metadata_ro_entry(settings.get(), tags::kBufferIndex, &entry);
        EXPECT_EQ(std::vector(entry.data.i32, entry.data.i32 + entry.count), told);
        expectDescriptorForm(mTuning, fd);
        EXPECT_EQ(mTuning->data[0], 0);
        expectDescriptorForm(mResult.tuningData, fd);
    }
    EXPECT_THAT(mThreeA->sizesAsked, Each(kTuningBytes));
}

TEST_F(BufferConversionTest, TuningHandlesCloseNothing) {
    int const descriptors = openDescriptors();
    EXPECT_NE(std::make_unique<quen::TuningHandles>()->wrap(m3A.fd()), nullptr);
    EXPECT_EQ(openDescriptors(), descriptors);
}

TEST_F(BufferConversionTest, OutputWithoutA3ABufferGetsADeviceBuffer) {
    std::string const refused = "E get outputTuningData buffer from quencameraserver failed";
    std::string const given =
            "I get outputTuningData buffer from quencameraserver success, bufferIndex 7, "
            "bufferFd FD\n";
    QIF3ABufferInfo const enough{m3A.fd(), kTuningBytes, 7, {}};
    struct Case {
        std::optional<QIF3ABufferInfo> info;
        bool hasIndex, isFixed;
        std::string reason;
    };
    for (Case const& c :
         {Case{{}, true, false, refused},
          {{{0, kTuningBytes, 7, {}}}, true, false, refused},
          {{{m3A.fd(), kTuningBytes - 1, 7, {}}}, true, false, refused},
          {enough, false, false, given + "E get tuningData bufferIndex from metadata faild"},
          {enough, true, true, given + "E update ouputTuningData bufferIndex failed"}}) {
        mThreeA->next = c.info;
        MetadataBuilder settings;
        settings.i32(c.hasIndex ? tags::kBufferIndex : tags::kFusion, 4);
        mUsed = true;
        gSettingsAreFixed = c.isFixed;
        convert(client(kYuv), settings.get(), Direction::Output, true,
                "I use QCF gralloc buffer\n" + c.reason + R"(
                I get 3ADebugInfo result is 0 used3ADebugInfo 0
                I no used3ADebugInfo, get inputTuningData from input metadata and alloc gralloc for outputTuningData
                I alloc gralloc for outputTuningData success)");
        gSettingsAreFixed = false;
        EXPECT_FALSE(mUsed);
        EXPECT_EQ(int32In(settings.get(), tags::kBufferIndex), c.hasIndex ? 4 : -1);
        expectAllocated(kTuningBytes, kBlob);
        EXPECT_GE(Mapping(mResult.tuningData->data[0]).size(), kTuningBytes);
    }
}

TEST_F(BufferConversionTest, InputFallsBackToTheTuningDataInTheMetadata) {
    struct Case {
        int format;
        bool hasIndex;
        uint32_t carried;  // the tag that carries tuning bytes
        bool found;
    };
    for (Case const& c : {Case{kRaw10, false, tags::kRawTuning, true},
                          {kYuv, true, tags::kYuvTuning, true},
                          {kRaw16, true, tags::kYuvTuning, false},
                          {kYuv, false, tags::kRawTuning, false}}) {
        bool const isYuv = c.format == kYuv;
        MetadataBuilder settings;
        settings.u8(c.carried, std::vector<uint8_t>{0x39, 0x05, 0, 0, 1, 2, 3, 4});
        settings.i32(c.hasIndex ? tags::kBufferIndex : tags::kFusion, 4);
        mTuning = nullptr;
        mUsed = true;
        mGraphics.mapper->calls.clear();
        std::string const lines =
                std::string(isYuv ? "I alloc gralloc for input yuv buffer\n"
                                    "D Load YUV stride(64, 64)\n"
                                  : "I use QCF gralloc buffer\n") +
                "E get QUEN_CONTROL_REQUESTNO from metadata failed\n" +
                (c.hasIndex ? "I use tuningData bufferIndex 4\nE get inputTuningData faild"
                            : "E get 3AbufferIndex from metadata failed") +
                R"(
                I get 3ADebugInfo result is 0 used3ADebugInfo 0
                I no used3ADebugInfo, get inputTuningData from input metadata and alloc gralloc for outputTuningData
                I tuningData type is )" +
                (isYuv ? "0\n" : "1\n") +
                (c.found ? R"(
                I alloc gralloc for inputTuningData success, tuningData requestNo 1337, stride 2073600)"
                         : R"(
                E get inputTuningData from input metadata failed)");
        convert(client(c.format), settings.get(), Direction::Input, c.found, lines);
        EXPECT_FALSE(mUsed);
        if (c.found) {  // allocated, and left as it was allocated
            expectAllocated(kTuningBytes, kBlob);
            EXPECT_THAT(Mapping(mResult.tuningData->data[0]).bytes(16), Each(0));
            EXPECT_EQ(mGraphics.mapper->calls,
                      linesOf(std::string(isYuv ? "import\nlock\nunlock\nfree\n" : "") +
                              "import\nunlock\nfree"));
        }
    }
}

}  // namespace
