#include <quenOfflineDevice/metadata/RequestMetadata.h>

#include "support/DeviceTest.h"
#include "support/Lines.h"
#include "support/MetadataBuilder.h"

using namespace quentest;
using namespace testing;
using NSCam::IMetadata;

namespace {

constexpr uint32_t kTuningBlobs[] = {tags::kRawTuning, tags::kYuvTuning};

using List = std::vector<int32_t>;

class RequestMetadataTest : public DeviceTest {
  protected:
    void prepare(char const* stage, int width = 0, int height = 0, bool isNeedRaw14bit = false) {
        quen::updateMetaData(&mMetadata, width, height, stage, isNeedRaw14bit);
    }

    List int32s(uint32_t tag) { return int32sOf(mMetadata, tag); }

    /** The crop as a rectangle: x, y, width, height. */
    List cropRect() {
        auto const rects = itemsOf<NSCam::MRect>(mMetadata, tags::kCrop, IMetadata::TYPE_MRect);
        auto const* const first = reinterpret_cast<int32_t const*>(rects.data());
        return {first, first + 4 * rects.size()};
    }

    Transcript mLog;
    IMetadata mMetadata;
};

TEST_F(RequestMetadataTest, ARawRequestWithEveryTag) {
    std::pair<uint32_t, List> const others[] = {
            {tags::kFeedback, {17}},
            {tags::kUiMode, {-1}},
            {tags::kEngineerMode, {-2147483640}},  // bit 31 and 0x08
            {tags::kFusion, {9}},
            {tags::kSceneMode, {0x400000}},
            {tags::kDualSlave, {-1}},
            {tags::kForDepth, {0}},
            {tags::kFastDisplay, {0}},
            {tags::kSatCrop, {10, -20, 3000, 2000}},
            // What the device writes replaces the client's.
            {tags::kFeatureHint, {1}},
            {tags::kTuningMode, {1}},
            {tags::kNeedMsnr, {5}},
    };
    setItems<NSCam::MRect>(mMetadata, tags::kCrop, {NSCam::MRect({1, 2}, {3, 4})});
    for (auto const& [tag, items] : others) {
        setItems<int32_t>(mMetadata, tag, items);
    }
    setItems<int64_t>(mMetadata, tags::kCurrentMode, {INT64_MIN | int64_t{1} << 51});
    prepare("RAW2YUV", 0, 0, true);
    EXPECT_THAT(mLog.take(),
                ElementsAre("D QUEN_FEEDBACK_TUNNINGMODE 17",
                            "I reprocess currentMode -9221120237041090560",
                            "I reprocess currentUiMode 4294967295",
                            "I reprocess Engineermode 2147483656", "I reprocess isFusionEnabled 1",
                            "I reprocess sceneMode 4194304", "I QUEN_CONTROL_ISDUALSLAVE -1",
                            "I for depth value is 0",
                            "I QUEN_CONTROL_ISFASTDISPLAYREQUEST 0 read tag isSuccess 1",
                            "I reprocessStage raw2yuv", "I update tuningMode 6014",
                            "I reprocessStage RAW2YUV needMsnr 1",
                            "D update MTK_SCALER_CROP_APP_REGION as [10 -20 3000 2000]"));
    EXPECT_EQ(int32s(tags::kTuningMode), List{6014});
    EXPECT_EQ(int32s(tags::kFeatureHint), List{26});
    EXPECT_EQ(int32s(tags::kNeedMsnr), List{1});
    EXPECT_EQ(int32s(tags::kRawInputStage), List{1});
    EXPECT_EQ(int32s(tags::kCrop), (List{10, -20, 3000, 2000}));
    setItems<int32_t>(mMetadata, tags::kSatCrop, {10});
    prepare("RAW2YUV");
    EXPECT_EQ(int32s(tags::kCrop), (List{10, 0, 0, 0}));
}

TEST_F(RequestMetadataTest, ARawRequestWithoutAnyTag) {
    for (uint32_t const empty : {tags::kSatCrop, tags::kForDepth}) {  // as good as none
        mMetadata.clear();
        setItems<NSCam::MRect>(mMetadata, tags::kCrop, {NSCam::MRect({1, 2}, {3, 4})});
        setItems<int32_t>(mMetadata, empty, {});
        prepare("RAW2YUV", 640, 480);
        Lines const lines = mLog.take();
        EXPECT_THAT(lines, Contains("I for depth value is 0"));
        EXPECT_EQ(lines.back(),
                  "I QUEN_PARAMETER_CROP_REGION_SAT not set, not sat case, app have set "
                  "MTK_SCALER_CROP_APP_REGION");
        EXPECT_THAT(cropRect(), ElementsAre(1, 2, 3, 4));
    }
    quen::updateMetaData(nullptr, 0, 0, "RAW2YUV", false);
    EXPECT_THAT(mLog.lines(), ElementsAre("E metadata is nullptr, update metadata failed"));
}

TEST_F(RequestMetadataTest, ABypassIsSaidBetweenDepthAndFastDisplay) {
    setItems<int32_t>(mMetadata, tags::kDualSlave, {0});
    setItems<int32_t>(mMetadata, tags::kForDepth, {2});
    setItems<int32_t>(mMetadata, tags::kFastDisplay, {1});
    prepare("neither");
    auto const lines = mLog.lines();
    EXPECT_THAT(std::vector(lines.end() - 4, lines.end()),
                ElementsAre("I QUEN_CONTROL_ISDUALSLAVE 0", "I for depth value is 2",
                            "I setDualCamBypass set true",
                            "I QUEN_CONTROL_ISFASTDISPLAYREQUEST 1 read tag isSuccess 1"));
}

TEST_F(RequestMetadataTest, AJpegRequestCropsToItsPicture) {
    for (auto const& [mode, needMsnr] :
         {std::pair<int64_t, int32_t>(0, 0), {1 << 24, 1}, {~(1 << 24), 0}, {-1, 1}}) {
        mMetadata.clear();
        setItems<int32_t>(mMetadata, tags::kSatCrop, {1, 2, 3, 4});
        setItems<int32_t>(mMetadata, tags::kCrop, {5, 6, 7, 8});
        if (mode != -1) {  // as good as none
            setItems<int64_t>(mMetadata, tags::kCurrentMode, {mode});
        }
        prepare("YUV2JPEG", 4000, 3000);
        EXPECT_EQ(mLog.lines().back(),
                  "I reprocessStage YUV2JPEG cropRegion width 4000, height 3000 needMsnr " +
                          std::to_string(needMsnr));
        EXPECT_THAT(cropRect(), ElementsAre(0, 0, 4000, 3000));
        EXPECT_EQ(int32s(tags::kNeedMsnr), List{needMsnr});
        EXPECT_EQ(int32s(tags::kRawInputStage), List{0});
        EXPECT_FALSE(hasTag(mMetadata, tags::kTuningMode));
        EXPECT_FALSE(hasTag(mMetadata, tags::kFeatureHint));
    }
}

TEST_F(RequestMetadataTest, EveryStageSetsTheDepthAndRemovesTheTuningBlobs) {
    for (std::string const stage :
         {"RAW2YUV", "YUV2JPEG", "raw2yuv", "RAW2", "YUV2JPE", "YUV2JPEGx", ""}) {
        for (bool const raw14bit : {false, true}) {
            SCOPED_TRACE(stage);
            mMetadata.clear();
            setItems<int32_t>(mMetadata, tags::kRawBitDepth, {1, 2, 3});
            setItems<uint8_t>(mMetadata, kTuningBlobs[0], {1, 2});
            setItems<uint8_t>(mMetadata, kTuningBlobs[1], {3});
            prepare(stage.c_str(), 0, 0, raw14bit);
            EXPECT_EQ(int32s(tags::kRawBitDepth), List{raw14bit ? 14 : 10});
            EXPECT_FALSE(hasTag(mMetadata, kTuningBlobs[0]) || hasTag(mMetadata, kTuningBlobs[1]));
            EXPECT_EQ(mMetadata.count() > 1, stage == "RAW2YUV" || stage == "YUV2JPEG");
        }
    }
}

}  // namespace
