#include "host/metadata/VendorTags.h"

#include <strings.h>

#include <algorithm>
#include <iterator>

#include <nscam/IMetadata.h>
#include <system/camera_metadata.h>

using NSCam::IMetadata;

namespace quen::host {

namespace {

/** The kinds of values that tags have: type in either form of metadata, number of items. */
constexpr TagInfo bytes(uint32_t tag, char const* name, uint32_t count) {
    return {tag, name, TYPE_BYTE, IMetadata::TYPE_MUINT8, count};
}

constexpr TagInfo ints(uint32_t tag, char const* name, uint32_t count) {
    return {tag, name, TYPE_INT32, IMetadata::TYPE_MINT32, count};
}

constexpr TagInfo longs(uint32_t tag, char const* name, uint32_t count) {
    return {tag, name, TYPE_INT64, IMetadata::TYPE_MINT64, count};
}

constexpr TagInfo floats(uint32_t tag, char const* name, uint32_t count) {
    return {tag, name, TYPE_FLOAT, IMetadata::TYPE_MFLOAT, count};
}

constexpr TagInfo doubles(uint32_t tag, char const* name, uint32_t count) {
    return {tag, name, TYPE_DOUBLE, IMetadata::TYPE_MDOUBLE, count};
}

constexpr TagInfo rationals(uint32_t tag, char const* name, uint32_t count) {
    return {tag, name, TYPE_RATIONAL, IMetadata::TYPE_MRational, count};
}

constexpr TagInfo rectangle(uint32_t tag, char const* name) {
    return {tag, name, TYPE_INT32, IMetadata::TYPE_MRect, 4};
}

constexpr uint32_t kAnyNumber = 0;

constexpr TagInfo kTags[] = {
        bytes(ANDROID_COLOR_CORRECTION_MODE, "android.colorCorrection.mode", 1),
        rationals(ANDROID_COLOR_CORRECTION_TRANSFORM, "android.colorCorrection.transform", 9),
        floats(ANDROID_COLOR_CORRECTION_GAINS, "android.colorCorrection.gains", 4),
        bytes(ANDROID_COLOR_CORRECTION_ABERRATION_MODE, "android.colorCorrection.aberrationMode",
              1),
        bytes(ANDROID_CONTROL_AE_ANTIBANDING_MODE, "android.control.aeAntibandingMode", 1),
        ints(ANDROID_CONTROL_AE_EXPOSURE_COMPENSATION, "android.control.aeExposureCompensation", 1),
        bytes(ANDROID_CONTROL_AE_LOCK, "android.control.aeLock", 1),
        bytes(ANDROID_CONTROL_AE_MODE, "android.control.aeMode", 1),
        ints(ANDROID_CONTROL_AE_REGIONS, "android.control.aeRegions", kAnyNumber),
        ints(ANDROID_CONTROL_AE_TARGET_FPS_RANGE, "android.control.aeTargetFpsRange", 2),
        bytes(ANDROID_CONTROL_AE_PRECAPTURE_TRIGGER, "android.control.aePrecaptureTrigger", 1),
        bytes(ANDROID_CONTROL_AF_MODE, "android.control.afMode", 1),
        ints(ANDROID_CONTROL_AF_REGIONS, "android.control.afRegions", kAnyNumber),
        bytes(ANDROID_CONTROL_AF_TRIGGER, "android.control.afTrigger", 1),
        bytes(ANDROID_CONTROL_AWB_LOCK, "android.control.awbLock", 1),
        bytes(ANDROID_CONTROL_AWB_MODE, "android.control.awbMode", 1),
        ints(ANDROID_CONTROL_AWB_REGIONS, "android.control.awbRegions", kAnyNumber),
        bytes(ANDROID_CONTROL_CAPTURE_INTENT, "android.control.captureIntent", 1),
        bytes(ANDROID_CONTROL_EFFECT_MODE, "android.control.effectMode", 1),
        bytes(ANDROID_CONTROL_MODE, "android.control.mode", 1),
        bytes(ANDROID_CONTROL_SCENE_MODE, "android.control.sceneMode", 1),
        bytes(ANDROID_CONTROL_VIDEO_STABILIZATION_MODE, "android.control.videoStabilizationMode",
              1),
        bytes(ANDROID_CONTROL_AE_STATE, "android.control.aeState", 1),
        bytes(ANDROID_CONTROL_AF_STATE, "android.control.afState", 1),
        bytes(ANDROID_CONTROL_AWB_STATE, "android.control.awbState", 1),
        ints(ANDROID_CONTROL_POST_RAW_SENSITIVITY_BOOST, "android.control.postRawSensitivityBoost",
             1),
        bytes(ANDROID_CONTROL_ENABLE_ZSL, "android.control.enableZsl", 1),
        ints(0x00010038, "ispFeatureHint", kAnyNumber),  // the ISP's, though in Android's section
        bytes(ANDROID_EDGE_MODE, "android.edge.mode", 1),
        bytes(ANDROID_FLASH_MODE, "android.flash.mode", 1),
        bytes(ANDROID_FLASH_STATE, "android.flash.state", 1),
        bytes(ANDROID_HOT_PIXEL_MODE, "android.hotPixel.mode", 1),
        doubles(ANDROID_JPEG_GPS_COORDINATES, "android.jpeg.gpsCoordinates", 3),
        bytes(ANDROID_JPEG_GPS_PROCESSING_METHOD, "android.jpeg.gpsProcessingMethod", kAnyNumber),
        longs(ANDROID_JPEG_GPS_TIMESTAMP, "android.jpeg.gpsTimestamp", 1),
        ints(ANDROID_JPEG_ORIENTATION, "android.jpeg.orientation", 1),
        bytes(ANDROID_JPEG_QUALITY, "android.jpeg.quality", 1),
        bytes(ANDROID_JPEG_THUMBNAIL_QUALITY, "android.jpeg.thumbnailQuality", 1),
        ints(ANDROID_JPEG_THUMBNAIL_SIZE, "android.jpeg.thumbnailSize", 2),
        floats(ANDROID_LENS_APERTURE, "android.lens.aperture", 1),
        floats(ANDROID_LENS_FILTER_DENSITY, "android.lens.filterDensity", 1),
        floats(ANDROID_LENS_FOCAL_LENGTH, "android.lens.focalLength", 1),
        floats(ANDROID_LENS_FOCUS_DISTANCE, "android.lens.focusDistance", 1),
        bytes(ANDROID_LENS_OPTICAL_STABILIZATION_MODE, "android.lens.opticalStabilizationMode", 1),
        bytes(ANDROID_LENS_FACING, "android.lens.facing", 1),
        floats(ANDROID_LENS_POSE_ROTATION, "android.lens.poseRotation", 4),
        floats(ANDROID_LENS_POSE_TRANSLATION, "android.lens.poseTranslation", 3),
        floats(ANDROID_LENS_FOCUS_RANGE, "android.lens.focusRange", 2),
        bytes(ANDROID_LENS_STATE, "android.lens.state", 1),
        floats(ANDROID_LENS_INTRINSIC_CALIBRATION, "android.lens.intrinsicCalibration", 5),
        floats(ANDROID_LENS_DISTORTION, "android.lens.distortion", 5),
        bytes(ANDROID_NOISE_REDUCTION_MODE, "android.noiseReduction.mode", 1),
        ints(ANDROID_REQUEST_FRAME_COUNT, "android.request.frameCount", 1),
        ints(ANDROID_REQUEST_ID, "android.request.id", 1),
        bytes(ANDROID_REQUEST_PIPELINE_DEPTH, "android.request.pipelineDepth", 1),
        rectangle(ANDROID_SCALER_CROP_REGION, "MTK_SCALER_CROP_APP_REGION"),
        longs(ANDROID_SENSOR_EXPOSURE_TIME, "android.sensor.exposureTime", 1),
        longs(ANDROID_SENSOR_FRAME_DURATION, "android.sensor.frameDuration", 1),
        ints(ANDROID_SENSOR_SENSITIVITY, "android.sensor.sensitivity", 1),
        bytes(ANDROID_SENSOR_REFERENCE_ILLUMINANT1, "android.sensor.referenceIlluminant1", 1),
        bytes(ANDROID_SENSOR_REFERENCE_ILLUMINANT2, "android.sensor.referenceIlluminant2", 1),
        rationals(ANDROID_SENSOR_CALIBRATION_TRANSFORM1, "android.sensor.calibrationTransform1", 9),
        rationals(ANDROID_SENSOR_CALIBRATION_TRANSFORM2, "android.sensor.calibrationTransform2", 9),
        rationals(ANDROID_SENSOR_COLOR_TRANSFORM1, "android.sensor.colorTransform1", 9),
        rationals(ANDROID_SENSOR_COLOR_TRANSFORM2, "android.sensor.colorTransform2", 9),
        rationals(ANDROID_SENSOR_FORWARD_MATRIX1, "android.sensor.forwardMatrix1", 9),
        rationals(ANDROID_SENSOR_FORWARD_MATRIX2, "android.sensor.forwardMatrix2", 9),
        ints(ANDROID_SENSOR_BLACK_LEVEL_PATTERN, "android.sensor.blackLevelPattern", 4),
        ints(ANDROID_SENSOR_ORIENTATION, "android.sensor.orientation", 1),
        longs(ANDROID_SENSOR_TIMESTAMP, "android.sensor.timestamp", 1),
        rationals(ANDROID_SENSOR_NEUTRAL_COLOR_POINT, "android.sensor.neutralColorPoint", 3),
        doubles(ANDROID_SENSOR_NOISE_PROFILE, "android.sensor.noiseProfile", kAnyNumber),
        floats(ANDROID_SENSOR_GREEN_SPLIT, "android.sensor.greenSplit", 1),
        ints(ANDROID_SENSOR_TEST_PATTERN_DATA, "android.sensor.testPatternData", 4),
        ints(ANDROID_SENSOR_TEST_PATTERN_MODE, "android.sensor.testPatternMode", 1),
        longs(ANDROID_SENSOR_ROLLING_SHUTTER_SKEW, "android.sensor.rollingShutterSkew", 1),
        floats(ANDROID_SENSOR_DYNAMIC_BLACK_LEVEL, "android.sensor.dynamicBlackLevel", 4),
        ints(ANDROID_SENSOR_DYNAMIC_WHITE_LEVEL, "android.sensor.dynamicWhiteLevel", 1),
        ints(ANDROID_SENSOR_INFO_ACTIVE_ARRAY_SIZE, "android.sensor.info.activeArraySize", 4),
        ints(ANDROID_SENSOR_INFO_SENSITIVITY_RANGE, "android.sensor.info.sensitivityRange", 2),
        bytes(ANDROID_SENSOR_INFO_COLOR_FILTER_ARRANGEMENT,
              "android.sensor.info.colorFilterArrangement", 1),
        longs(ANDROID_SENSOR_INFO_EXPOSURE_TIME_RANGE, "android.sensor.info.exposureTimeRange", 2),
        floats(ANDROID_SENSOR_INFO_PHYSICAL_SIZE, "android.sensor.info.physicalSize", 2),
        ints(ANDROID_SENSOR_INFO_PIXEL_ARRAY_SIZE, "android.sensor.info.pixelArraySize", 2),
        ints(ANDROID_SENSOR_INFO_WHITE_LEVEL, "android.sensor.info.whiteLevel", 1),
        bytes(ANDROID_SHADING_MODE, "android.shading.mode", 1),
        bytes(ANDROID_STATISTICS_FACE_DETECT_MODE, "android.statistics.faceDetectMode", 1),
        bytes(ANDROID_STATISTICS_HOT_PIXEL_MAP_MODE, "android.statistics.hotPixelMapMode", 1),
        ints(ANDROID_STATISTICS_FACE_IDS, "android.statistics.faceIds", kAnyNumber),
        ints(ANDROID_STATISTICS_FACE_LANDMARKS, "android.statistics.faceLandmarks", kAnyNumber),
        ints(ANDROID_STATISTICS_FACE_RECTANGLES, "android.statistics.faceRectangles", kAnyNumber),
        bytes(ANDROID_STATISTICS_FACE_SCORES, "android.statistics.faceScores", kAnyNumber),
        floats(ANDROID_STATISTICS_LENS_SHADING_MAP, "android.statistics.lensShadingMap",
               kAnyNumber),
        floats(ANDROID_STATISTICS_PREDICTED_COLOR_GAINS, "android.statistics.predictedColorGains",
               4),
        rationals(ANDROID_STATISTICS_PREDICTED_COLOR_TRANSFORM,
                  "android.statistics.predictedColorTransform", 9),
        bytes(ANDROID_STATISTICS_SCENE_FLICKER, "android.statistics.sceneFlicker", 1),
        ints(ANDROID_STATISTICS_HOT_PIXEL_MAP, "android.statistics.hotPixelMap", kAnyNumber),
        bytes(ANDROID_STATISTICS_LENS_SHADING_MAP_MODE, "android.statistics.lensShadingMapMode", 1),
        floats(ANDROID_TONEMAP_CURVE_BLUE, "android.tonemap.curveBlue", kAnyNumber),
        floats(ANDROID_TONEMAP_CURVE_GREEN, "android.tonemap.curveGreen", kAnyNumber),
        floats(ANDROID_TONEMAP_CURVE_RED, "android.tonemap.curveRed", kAnyNumber),
        bytes(ANDROID_TONEMAP_MODE, "android.tonemap.mode", 1),
        bytes(ANDROID_BLACK_LEVEL_LOCK, "android.blackLevel.lock", 1),
        longs(ANDROID_SYNC_FRAME_NUMBER, "android.sync.frameNumber", 1),

        // The chip maker's and the phone maker's own.
        ints(0x800b000b, "needMsnr", 1),
        ints(0x800b000c, "rawInputStage", 1),
        ints(0x800b000e, "tuningMode", 1),
        bytes(0x800b0016, "rawTuningData", kAnyNumber),
        bytes(0x800b0017, "yuvTuningData", kAnyNumber),
        ints(0x800b001b, "rawBitDepth", 1),
        ints(0xc0000005, "ispCameraId", 1),
        longs(0xc0030014, "currentMode", 1),
        ints(0xc0030022, "Engineermode", 1),
        ints(0xc0030092, "fusion", 1),
        ints(0xc0030099, "cameraId", 1),
        ints(0xc00300a0, "QUEN_CONTROL_ISDUALSLAVE", 1),
        ints(0xc00300a2, "QUEN_CONTROL_REQUESTNO", 1),
        ints(0xc00300a4, "QUEN_CONTROL_ISFASTDISPLAYREQUEST", 1),
        ints(0xc0080001, "currentUiMode", 1),
        ints(0xc0090002, "sceneMode", 1),
        ints(0xc00c000a, "forDepth", 1),
        ints(0xc00c0012, "QUEN_PARAMETER_CROP_REGION_SAT", 4),
        ints(0xc00c0018, "3ABufferIndex", 1),
        ints(0xc00e0032, "QUEN_FEEDBACK_TUNNINGMODE", 1),
};

constexpr bool isAscending() {
    for (size_t i = 1; i < std::size(kTags); ++i) {
        if (kTags[i - 1].tag >= kTags[i].tag) {
            return false;
        }
    }
    return true;
}

static_assert(isAscending(), "tags are looked up by halving");

bool isSameName(std::string_view left, std::string_view right) {
    return left.size() == right.size() && strncasecmp(left.data(), right.data(), left.size()) == 0;
}

}  // namespace

TagRange allTags() {
    return {std::begin(kTags), std::end(kTags)};
}

TagInfo const* findTag(uint32_t tag) {
    auto const* const found = std::lower_bound(
            std::begin(kTags), std::end(kTags), tag,
            [](TagInfo const& info, uint32_t wanted) { return info.tag < wanted; });
    return found != std::end(kTags) && found->tag == tag ? found : nullptr;
}

TagInfo const* findTag(std::string_view name) {
    auto const* const found =
            std::find_if(std::begin(kTags), std::end(kTags),
                         [name](TagInfo const& info) { return isSameName(info.name, name); });
    return found != std::end(kTags) ? found : nullptr;
}

}  // namespace quen::host
