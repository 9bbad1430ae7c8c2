#define LOG_TAG "quenOfflineDevice"

#include "quenOfflineDevice/metadata/RequestMetadata.h"

#include <string>

#include <nscam/ATMsEventMgr.h>

#include "quenCommon/Log.h"
#include "quenOfflineDevice/Stage.h"
#include "quenOfflineDevice/metadata/MetadataTags.h"
#include "quenOfflineDevice/metadata/TuningMode.h"

using NSCam::IMetadata;
using NSCam::MPoint;
using NSCam::MRect;
using NSCam::MSize;
using NSCam::Type2Type;

namespace quen {
namespace {

constexpr int32_t kRawBits = 14;
constexpr int32_t kRawBitsOtherwise = 10;
constexpr int32_t kBypassEngineerModes = 0x87;
constexpr int32_t kTuningModeBypassFusion = 6001;
constexpr int kMsnrModeBit = 24;

/** What the client's tags say about the capture; absent tags have their defaults. */
struct RequestParameters {
    CaptureParameters capture;
    int32_t engineerMode = -1;
    bool isFusionEnabled = false;
    int32_t isDualSlave = -1;
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

/** For "%lld" lines that print an int32 zero-extended: a negative value prints as a large one. */
long long zeroExtended(int32_t value) {
    return static_cast<long long>(static_cast<uint32_t>(value));
}

void readModes(IMetadata const& metadata, RequestParameters& parameters) {
    CaptureParameters& capture = parameters.capture;
    capture.feedbackTuning =
            metadata.entryFor(tag::feedbackTuningMode).itemAt(0, Type2Type<int32_t>());
    QLOGD("QUEN_FEEDBACK_TUNNINGMODE %d", capture.feedbackTuning);

    capture.currentMode = -1;
    if (readItem(metadata, tag::currentMode, capture.currentMode)) {
        QLOGI("reprocess currentMode %lld", static_cast<long long>(capture.currentMode));
    } else {
        QLOGE("get currentMode from resultMetadata failed");
    }
    capture.currentUiMode = -1;
    if (readItem(metadata, tag::currentUiMode, capture.currentUiMode)) {
        QLOGI("reprocess currentUiMode %lld", zeroExtended(capture.currentUiMode));
    } else {
        QLOGE("get currentUiMode from resultMetadata failed");
    }
    if (readItem(metadata, tag::engineerMode, parameters.engineerMode)) {
        QLOGI("reprocess Engineermode %lld", zeroExtended(parameters.engineerMode));
    } else {
        QLOGE("get Engineermode from resultMetadata failed");
    }
    int32_t fusion = 0;
    if (readItem(metadata, tag::fusion, fusion)) {
        parameters.isFusionEnabled = fusion != 0;
        QLOGI("reprocess isFusionEnabled %d", parameters.isFusionEnabled);
    } else {
        QLOGE("get fusion from resultMetadata failed");
    }
}

void readCircumstances(IMetadata const& metadata, RequestParameters& parameters) {
    parameters.capture.sceneMode = -1;
    if (readItem(metadata, tag::sceneMode, parameters.capture.sceneMode)) {
        QLOGI("reprocess sceneMode %d", parameters.capture.sceneMode);
    } else {
        QLOGE("get sceneMode from resultMetadata failed");
    }
    readItem(metadata, tag::isDualSlave, parameters.isDualSlave);
    QLOGI("QUEN_CONTROL_ISDUALSLAVE %d", parameters.isDualSlave);
    readItem(metadata, tag::forDepth, parameters.forDepth);
    QLOGI("for depth value is %d", parameters.forDepth);

    bool const engineer =
            parameters.engineerMode != -1 && (parameters.engineerMode & kBypassEngineerModes) != 0;
    parameters.dualCamBypass = parameters.isDualSlave >= 0 || engineer;
    if (parameters.dualCamBypass) {
        QLOGI("setDualCamBypass set true");
    }
    bool const present = readItem(metadata, tag::isFastDisplayRequest, parameters.fastDisplay);
    QLOGI("QUEN_CONTROL_ISFASTDISPLAYREQUEST %d read tag isSuccess %d", parameters.fastDisplay,
          present);
}

/** Writes the raw depth in the tag's own entry, whatever it held. */
void writeRawBitDepth(IMetadata& metadata, bool isNeedRaw14bit) {
    IMetadata::IEntry entry = metadata.entryFor(tag::rawBitDepth);
    entry.clear();
    entry.push_back(isNeedRaw14bit ? kRawBits : kRawBitsOtherwise, Type2Type<int32_t>());
    metadata.update(tag::rawBitDepth, entry);
}

/** Copies the SAT crop to the ISP's crop tag; without one the application's crop is kept. */
void writeSatCrop(IMetadata& metadata) {
    IMetadata::IEntry const sat = metadata.entryFor(tag::cropRegionSat);
    if (sat.count() == 0) {
        QLOGI("QUEN_PARAMETER_CROP_REGION_SAT not set, not sat case, app have set "
              "MTK_SCALER_CROP_APP_REGION");
        return;
    }
    (void)sat.itemAt(0, Type2Type<MRect>());  // also read as a rectangle, and discarded
    IMetadata::IEntry crop(tag::cropAppRegion);
    int32_t region[4];
    for (size_t i = 0; i < 4; ++i) {
        region[i] = sat.itemAt(i, Type2Type<int32_t>());
        crop.push_back(region[i], Type2Type<int32_t>());
    }
    metadata.update(tag::cropAppRegion, crop);
    QLOGD("update MTK_SCALER_CROP_APP_REGION as [%d %d %d %d]", region[0], region[1], region[2],
          region[3]);
}

void prepareRawToYuv(IMetadata& metadata, RequestParameters const& parameters, char const* stage) {
    QLOGI("reprocessStage raw2yuv");
    IMetadata::IEntry featureHint(tag::ispFeatureHint);
    bool const forDepth = parameters.forDepth != 0;
    bool const fastDisplay = parameters.fastDisplay == 1;

    int32_t tuningMode = 0;
    if (forDepth || parameters.dualCamBypass) {
        tuningMode = parameters.isFusionEnabled ? kTuningModeBypassFusion : 0;
    } else {
        TuningChoice const choice = chooseTuningMode(parameters.capture);
        if (choice.feature != kNoFeature) {
            featureHint.push_back(choice.feature, Type2Type<int32_t>());
        }
        tuningMode = fastDisplay ? 0 : choice.tuningMode;
    }

    std::string appName;
    NSCam::ATMsEventMgr::getInstance()->getString("APP_NAME", appName);
    if (!forDepth && !fastDisplay) {
        int32_t const feature = chooseFeature(parameters.capture, appName);
        if (feature != kNoFeature) {
            featureHint.push_back(feature, Type2Type<int32_t>());
        }
    }
    metadata.update(tag::ispFeatureHint, featureHint);

    QLOGI("update tuningMode %d", tuningMode);
    writeInt32(metadata, tag::tuningMode, tuningMode);

    // MSNR is on at either raw depth.
    int32_t const needMsnr =
            parameters.capture.isNeedRaw14bit ? parameters.capture.isNeedRaw14bit : 1;
    QLOGI("reprocessStage %s needMsnr %d", stage, needMsnr);
    writeInt32(metadata, tag::needMsnr, needMsnr);
    writeInt32(metadata, tag::rawInputStage, 1);
    writeSatCrop(metadata);
}

void prepareYuvToJpeg(IMetadata& metadata, RequestParameters const& parameters, char const* stage,
                      int width, int height) {
    IMetadata::IEntry crop(tag::cropAppRegion);
    crop.push_back(MRect(MPoint{0, 0}, MSize{width, height}), Type2Type<MRect>());
    metadata.update(tag::cropAppRegion, crop);

    int32_t const needMsnr =
            static_cast<int32_t>(static_cast<uint64_t>(parameters.capture.currentMode) >>
                                 kMsnrModeBit) &
            1;
    QLOGI("reprocessStage %s cropRegion width %d, height %d needMsnr %d", stage, width, height,
          needMsnr);
    writeInt32(metadata, tag::needMsnr, needMsnr);
    writeInt32(metadata, tag::rawInputStage, 0);
}

}  // namespace

void updateMetaData(IMetadata* meta, int width, int height, char const* stage,
                    bool isNeedRaw14bit) {
    if (meta == nullptr) {
        QLOGE("metadata is nullptr, update metadata failed");
        return;
    }
    RequestParameters parameters;
    parameters.capture.isNeedRaw14bit = isNeedRaw14bit;
    readModes(*meta, parameters);
    writeRawBitDepth(*meta, isNeedRaw14bit);
    meta->remove(tag::rawTuningData);
    meta->remove(tag::yuvTuningData);
    readCircumstances(*meta, parameters);
    if (isRawToYuv(stage)) {
        prepareRawToYuv(*meta, parameters, stage);
    }
    if (isYuvToJpeg(stage)) {
        prepareYuvToJpeg(*meta, parameters, stage, width, height);
    }
}

}  // namespace quen
