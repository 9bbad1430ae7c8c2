#define LOG_TAG "quenOfflineDevice"

#include <cstring>
#include <string>

#include <nscam/ATMsEventMgr.h>

#include "quenCommon/Log.h"
#include "quenOfflineDevice/MetadataTags.h"
#include "quenOfflineDevice/Stage.h"
#include "quenOfflineDevice/TuningMode.h"
#include "quenOfflineDevice/quenOfflineDevice.h"

using NSCam::IMetadata;
using NSCam::MPoint;
using NSCam::MRect;
using NSCam::MSize;
using NSCam::Type2Type;

namespace {

constexpr int32_t kRawBits = 14;
constexpr int32_t kRawBitsOtherwise = 10;
constexpr int32_t kBypassEngineerModes = 0x87;
constexpr int32_t kTuningModeBypassFusion = 6001;
constexpr int kMsnrModeBit = 24;

/** What the request tells of its capture; absent tags have their defaults. */
struct RequestFacts {
    CaptureFacts capture;
    int32_t engineerMode = -1;
    bool fusionEnabled = false;
    int32_t dualSlave = -1;
    int32_t forDepth = 0;
    int32_t fastDisplay = -1;
    bool dualCamBypass = false;
};

/** Reads item 0 of a tag; leaves `value` alone when the tag is absent or empty. */
template <typename T>
bool readItem(IMetadata const& metadata, uint32_t tag, T& value) {
    IMetadata::IEntry const entry = metadata.entryFor(tag);
    if (entry.isEmpty()) {
        return false;
    }
    value = entry.itemAt(0, Type2Type<T>());
    return true;
}

void writeInt32(IMetadata& metadata, uint32_t tag, int32_t value) {
    IMetadata::IEntry entry(tag);
    entry.push_back(value, Type2Type<int32_t>());
    metadata.update(tag, entry);
}

/** For "%lld" lines that print an int32 without its sign: a negative one prints large. */
long long zeroExtended(int32_t value) {
    return static_cast<long long>(static_cast<uint32_t>(value));
}

void readModes(IMetadata const& metadata, RequestFacts& facts) {
    CaptureFacts& capture = facts.capture;
    capture.feedbackTuning =
            metadata.entryFor(tag::kFeedbackTuningMode).itemAt(0, Type2Type<int32_t>());
    QLOGD("QUEN_FEEDBACK_TUNNINGMODE %d", capture.feedbackTuning);

    capture.currentMode = -1;
    if (readItem(metadata, tag::kCurrentMode, capture.currentMode)) {
        QLOGI("reprocess currentMode %lld", static_cast<long long>(capture.currentMode));
    } else {
        QLOGE("get currentMode from resultMetadata failed");
    }
    capture.currentUiMode = -1;
    if (readItem(metadata, tag::kCurrentUiMode, capture.currentUiMode)) {
        QLOGI("reprocess currentUiMode %lld", zeroExtended(capture.currentUiMode));
    } else {
        QLOGE("get currentUiMode from resultMetadata failed");
    }
    if (readItem(metadata, tag::kEngineerMode, facts.engineerMode)) {
        QLOGI("reprocess Engineermode %lld", zeroExtended(facts.engineerMode));
    } else {
        QLOGE("get Engineermode from resultMetadata failed");
    }
    int32_t fusion = 0;
    if (readItem(metadata, tag::kFusion, fusion)) {
        facts.fusionEnabled = fusion != 0;
        QLOGI("reprocess isFusionEnabled %d", facts.fusionEnabled);
    } else {
        QLOGE("get fusion from resultMetadata failed");
    }
}

void readCircumstances(IMetadata const& metadata, RequestFacts& facts) {
    facts.capture.sceneMode = -1;
    if (readItem(metadata, tag::kSceneMode, facts.capture.sceneMode)) {
        QLOGI("reprocess sceneMode %d", facts.capture.sceneMode);
    } else {
        QLOGE("get sceneMode from resultMetadata failed");
    }
    readItem(metadata, tag::kIsDualSlave, facts.dualSlave);
    QLOGI("QUEN_CONTROL_ISDUALSLAVE %d", facts.dualSlave);
    readItem(metadata, tag::kForDepth, facts.forDepth);
    QLOGI("for depth value is %d", facts.forDepth);

    bool const engineer =
            facts.engineerMode != -1 && (facts.engineerMode & kBypassEngineerModes) != 0;
    facts.dualCamBypass = facts.dualSlave >= 0 || engineer;
    if (facts.dualCamBypass) {
        QLOGI("setDualCamBypass set true");
    }
    bool const present = readItem(metadata, tag::kIsFastDisplayRequest, facts.fastDisplay);
    QLOGI("QUEN_CONTROL_ISFASTDISPLAYREQUEST %d read tag isSuccess %d", facts.fastDisplay, present);
}

/** Writes the raw depth in the tag's own entry, whatever it held. */
void writeRawBitDepth(IMetadata& metadata, bool raw14bit) {
    IMetadata::IEntry entry = metadata.entryFor(tag::kRawBitDepth);
    entry.clear();
    entry.push_back(raw14bit ? kRawBits : kRawBitsOtherwise, Type2Type<int32_t>());
    metadata.update(tag::kRawBitDepth, entry);
}

/** Hands the crop of a SAT case to the ISP; otherwise the application's stands. */
void writeSatCrop(IMetadata& metadata) {
    IMetadata::IEntry const sat = metadata.entryFor(tag::kCropRegionSat);
    if (sat.count() == 0) {
        QLOGI("QUEN_PARAMETER_CROP_REGION_SAT not set, not sat case, app have set "
              "MTK_SCALER_CROP_APP_REGION");
        return;
    }
    (void)sat.itemAt(0, Type2Type<MRect>());  // fetched as a rectangle too, and dropped
    IMetadata::IEntry crop(tag::kCropAppRegion);
    int32_t region[4];
    for (size_t i = 0; i < 4; ++i) {
        region[i] = sat.itemAt(i, Type2Type<int32_t>());
        crop.push_back(region[i], Type2Type<int32_t>());
    }
    metadata.update(tag::kCropAppRegion, crop);
    QLOGD("update MTK_SCALER_CROP_APP_REGION as [%d %d %d %d]", region[0], region[1], region[2],
          region[3]);
}

void prepareRawToYuv(IMetadata& metadata, RequestFacts const& facts, char const* stage) {
    QLOGI("reprocessStage raw2yuv");
    IMetadata::IEntry featureHint(tag::kIspFeatureHint);
    bool const forDepth = facts.forDepth != 0;
    bool const fastDisplay = facts.fastDisplay == 1;

    int32_t tuningMode = 0;
    if (forDepth || facts.dualCamBypass) {
        tuningMode = facts.fusionEnabled ? kTuningModeBypassFusion : 0;
    } else {
        TuningChoice const choice = chooseTuningMode(facts.capture);
        if (choice.feature != kNoFeature) {
            featureHint.push_back(choice.feature, Type2Type<int32_t>());
        }
        tuningMode = fastDisplay ? 0 : choice.tuningMode;
    }

    std::string appName;
    NSCam::ATMsEventMgr::getInstance()->getString("APP_NAME", appName);
    if (!forDepth && !fastDisplay) {
        int32_t const feature = chooseFeature(facts.capture, appName);
        if (feature != kNoFeature) {
            featureHint.push_back(feature, Type2Type<int32_t>());
        }
    }
    metadata.update(tag::kIspFeatureHint, featureHint);

    QLOGI("update tuningMode %d", tuningMode);
    writeInt32(metadata, tag::kTuningMode, tuningMode);

    // The raw depth decides nothing here: MSNR is on either way.
    int32_t const needMsnr = facts.capture.raw14bit ? facts.capture.raw14bit : 1;
    QLOGI("reprocessStage %s needMsnr %d", stage, needMsnr);
    writeInt32(metadata, tag::kNeedMsnr, needMsnr);
    writeInt32(metadata, tag::kRawInputStage, 1);
    writeSatCrop(metadata);
}

void prepareYuvToJpeg(IMetadata& metadata, RequestFacts const& facts, char const* stage, int width,
                      int height) {
    IMetadata::IEntry crop(tag::kCropAppRegion);
    crop.push_back(MRect(MPoint{0, 0}, MSize{width, height}), Type2Type<MRect>());
    metadata.update(tag::kCropAppRegion, crop);

    int32_t const needMsnr =
            static_cast<int32_t>(static_cast<uint64_t>(facts.capture.currentMode) >> kMsnrModeBit) &
            1;
    QLOGI("reprocessStage %s cropRegion width %d, height %d needMsnr %d", stage, width, height,
          needMsnr);
    writeInt32(metadata, tag::kNeedMsnr, needMsnr);
    writeInt32(metadata, tag::kRawInputStage, 0);
}

}  // namespace

/**
 * Decides from the capture's facts what the ISP is told, and writes it into the request's metadata:
 * raw depth in every stage; tuning mode, feature hint, crop and switches as the stage wants them.
 *
 * @param meta changed in place; null is logged
 * @param width of the whole picture, which a JPEG is cropped to; unused in the other stage
 * @param height as `width`
 */
void quenOfflineDevice::updateMetaData(IMetadata* meta, int width, int height) {
    if (meta == nullptr) {
        QLOGE("metadata is nullptr, update metadata failed");
        return;
    }
    RequestFacts facts;
    facts.capture.raw14bit = IsNeedRaw14bit;
    readModes(*meta, facts);
    writeRawBitDepth(*meta, IsNeedRaw14bit);
    meta->remove(tag::kRawTuningData);
    meta->remove(tag::kYuvTuningData);
    readCircumstances(*meta, facts);
    if (strcmp(mStage, kStageRawToYuv) == 0) {
        prepareRawToYuv(*meta, facts, mStage);
    }
    if (strcmp(mStage, kStageYuvToJpeg) == 0) {
        prepareYuvToJpeg(*meta, facts, mStage, width, height);
    }
}
