#pragma once

/** Sections of the tags: the upper 16 bits of an id. */
typedef enum camera_metadata_section {
    ANDROID_COLOR_CORRECTION,
    ANDROID_CONTROL,
    ANDROID_DEMOSAIC,
    ANDROID_EDGE,
    ANDROID_FLASH,
    ANDROID_FLASH_INFO,
    ANDROID_HOT_PIXEL,
    ANDROID_JPEG,
    ANDROID_LENS,
    ANDROID_LENS_INFO,
    ANDROID_NOISE_REDUCTION,
    ANDROID_QUIRKS,
    ANDROID_REQUEST,
    ANDROID_SCALER,
    ANDROID_SENSOR,
    ANDROID_SENSOR_INFO,
    ANDROID_SHADING,
    ANDROID_STATISTICS,
    ANDROID_STATISTICS_INFO,
    ANDROID_TONEMAP,
    ANDROID_LED,
    ANDROID_INFO,
    ANDROID_BLACK_LEVEL,
    ANDROID_SYNC,
    ANDROID_REPROCESS,
    ANDROID_DEPTH,
    ANDROID_LOGICAL_MULTI_CAMERA,
    ANDROID_DISTORTION_CORRECTION,
    ANDROID_HEIC,
    ANDROID_HEIC_INFO,
    ANDROID_SECTION_COUNT,

    VENDOR_SECTION = 0x8000
} camera_metadata_section_t;

/** The tags that a capture, its result and its reprocessing use. */
typedef enum camera_metadata_tag {
    ANDROID_COLOR_CORRECTION_MODE = 0x00000,             // byte
    ANDROID_COLOR_CORRECTION_TRANSFORM = 0x00001,        // rational x 9
    ANDROID_COLOR_CORRECTION_GAINS = 0x00002,            // float x 4
    ANDROID_COLOR_CORRECTION_ABERRATION_MODE = 0x00003,  // byte

    ANDROID_CONTROL_AE_ANTIBANDING_MODE = 0x10000,         // byte
    ANDROID_CONTROL_AE_EXPOSURE_COMPENSATION = 0x10001,    // int32
    ANDROID_CONTROL_AE_LOCK = 0x10002,                     // byte
    ANDROID_CONTROL_AE_MODE = 0x10003,                     // byte
    ANDROID_CONTROL_AE_REGIONS = 0x10004,                  // int32, 5 a region
    ANDROID_CONTROL_AE_TARGET_FPS_RANGE = 0x10005,         // int32 x 2
    ANDROID_CONTROL_AE_PRECAPTURE_TRIGGER = 0x10006,       // byte
    ANDROID_CONTROL_AF_MODE = 0x10007,                     // byte
    ANDROID_CONTROL_AF_REGIONS = 0x10008,                  // int32, 5 a region
    ANDROID_CONTROL_AF_TRIGGER = 0x10009,                  // byte
    ANDROID_CONTROL_AWB_LOCK = 0x1000a,                    // byte
    ANDROID_CONTROL_AWB_MODE = 0x1000b,                    // byte
    ANDROID_CONTROL_AWB_REGIONS = 0x1000c,                 // int32, 5 a region
    ANDROID_CONTROL_CAPTURE_INTENT = 0x1000d,              // byte
    ANDROID_CONTROL_EFFECT_MODE = 0x1000e,                 // byte
    ANDROID_CONTROL_MODE = 0x1000f,                        // byte
    ANDROID_CONTROL_SCENE_MODE = 0x10010,                  // byte
    ANDROID_CONTROL_VIDEO_STABILIZATION_MODE = 0x10011,    // byte
    ANDROID_CONTROL_AE_STATE = 0x1001f,                    // byte
    ANDROID_CONTROL_AF_STATE = 0x10020,                    // byte
    ANDROID_CONTROL_AWB_STATE = 0x10022,                   // byte
    ANDROID_CONTROL_POST_RAW_SENSITIVITY_BOOST = 0x10028,  // int32
    ANDROID_CONTROL_ENABLE_ZSL = 0x10029,                  // byte

    ANDROID_EDGE_MODE = 0x30000,       // byte
    ANDROID_FLASH_MODE = 0x40002,      // byte
    ANDROID_FLASH_STATE = 0x40005,     // byte
    ANDROID_HOT_PIXEL_MODE = 0x60000,  // byte

    ANDROID_JPEG_GPS_COORDINATES = 0x70000,        // double x 3
    ANDROID_JPEG_GPS_PROCESSING_METHOD = 0x70001,  // byte, text
    ANDROID_JPEG_GPS_TIMESTAMP = 0x70002,          // int64
    ANDROID_JPEG_ORIENTATION = 0x70003,            // int32
    ANDROID_JPEG_QUALITY = 0x70004,                // byte
    ANDROID_JPEG_THUMBNAIL_QUALITY = 0x70005,      // byte
    ANDROID_JPEG_THUMBNAIL_SIZE = 0x70006,         // int32 x 2

    ANDROID_LENS_APERTURE = 0x80000,                    // float
    ANDROID_LENS_FILTER_DENSITY = 0x80001,              // float
    ANDROID_LENS_FOCAL_LENGTH = 0x80002,                // float
    ANDROID_LENS_FOCUS_DISTANCE = 0x80003,              // float
    ANDROID_LENS_OPTICAL_STABILIZATION_MODE = 0x80004,  // byte
    ANDROID_LENS_FACING = 0x80005,                      // byte
    ANDROID_LENS_POSE_ROTATION = 0x80006,               // float x 4
    ANDROID_LENS_POSE_TRANSLATION = 0x80007,            // float x 3
    ANDROID_LENS_FOCUS_RANGE = 0x80008,                 // float x 2
    ANDROID_LENS_STATE = 0x80009,                       // byte
    ANDROID_LENS_INTRINSIC_CALIBRATION = 0x8000a,       // float x 5
    ANDROID_LENS_DISTORTION = 0x8000d,                  // float x 5

    ANDROID_NOISE_REDUCTION_MODE = 0xa0000,  // byte

    ANDROID_REQUEST_FRAME_COUNT = 0xc0000,     // int32
    ANDROID_REQUEST_ID = 0xc0001,              // int32
    ANDROID_REQUEST_PIPELINE_DEPTH = 0xc0009,  // byte

    ANDROID_SCALER_CROP_REGION = 0xd0000,  // int32 x 4

    ANDROID_SENSOR_EXPOSURE_TIME = 0xe0000,           // int64
    ANDROID_SENSOR_FRAME_DURATION = 0xe0001,          // int64
    ANDROID_SENSOR_SENSITIVITY = 0xe0002,             // int32
    ANDROID_SENSOR_REFERENCE_ILLUMINANT1 = 0xe0003,   // byte
    ANDROID_SENSOR_REFERENCE_ILLUMINANT2 = 0xe0004,   // byte
    ANDROID_SENSOR_CALIBRATION_TRANSFORM1 = 0xe0005,  // rational x 9
    ANDROID_SENSOR_CALIBRATION_TRANSFORM2 = 0xe0006,  // rational x 9
    ANDROID_SENSOR_COLOR_TRANSFORM1 = 0xe0007,        // rational x 9
    ANDROID_SENSOR_COLOR_TRANSFORM2 = 0xe0008,        // rational x 9
    ANDROID_SENSOR_FORWARD_MATRIX1 = 0xe0009,         // rational x 9
    ANDROID_SENSOR_FORWARD_MATRIX2 = 0xe000a,         // rational x 9
    ANDROID_SENSOR_BLACK_LEVEL_PATTERN = 0xe000c,     // int32 x 4
    ANDROID_SENSOR_ORIENTATION = 0xe000e,             // int32
    ANDROID_SENSOR_TIMESTAMP = 0xe0010,               // int64
    ANDROID_SENSOR_NEUTRAL_COLOR_POINT = 0xe0012,     // rational x 3
    ANDROID_SENSOR_NOISE_PROFILE = 0xe0013,           // double, 2 a channel
    ANDROID_SENSOR_GREEN_SPLIT = 0xe0016,             // float
    ANDROID_SENSOR_TEST_PATTERN_DATA = 0xe0017,       // int32 x 4
    ANDROID_SENSOR_TEST_PATTERN_MODE = 0xe0018,       // int32
    ANDROID_SENSOR_ROLLING_SHUTTER_SKEW = 0xe001a,    // int64
    ANDROID_SENSOR_DYNAMIC_BLACK_LEVEL = 0xe001c,     // float x 4
    ANDROID_SENSOR_DYNAMIC_WHITE_LEVEL = 0xe001d,     // int32

    ANDROID_SENSOR_INFO_ACTIVE_ARRAY_SIZE = 0xf0000,         // int32 x 4
    ANDROID_SENSOR_INFO_SENSITIVITY_RANGE = 0xf0001,         // int32 x 2
    ANDROID_SENSOR_INFO_COLOR_FILTER_ARRANGEMENT = 0xf0002,  // byte
    ANDROID_SENSOR_INFO_EXPOSURE_TIME_RANGE = 0xf0003,       // int64 x 2
    ANDROID_SENSOR_INFO_PHYSICAL_SIZE = 0xf0005,             // float x 2
    ANDROID_SENSOR_INFO_PIXEL_ARRAY_SIZE = 0xf0006,          // int32 x 2
    ANDROID_SENSOR_INFO_WHITE_LEVEL = 0xf0007,               // int32

    ANDROID_SHADING_MODE = 0x100000,  // byte

    ANDROID_STATISTICS_FACE_DETECT_MODE = 0x110000,           // byte
    ANDROID_STATISTICS_HOT_PIXEL_MAP_MODE = 0x110003,         // byte
    ANDROID_STATISTICS_FACE_IDS = 0x110004,                   // int32, any number
    ANDROID_STATISTICS_FACE_LANDMARKS = 0x110005,             // int32, any number
    ANDROID_STATISTICS_FACE_RECTANGLES = 0x110006,            // int32, any number
    ANDROID_STATISTICS_FACE_SCORES = 0x110007,                // byte, any number
    ANDROID_STATISTICS_LENS_SHADING_MAP = 0x11000b,           // float, any number
    ANDROID_STATISTICS_PREDICTED_COLOR_GAINS = 0x11000c,      // float x 4
    ANDROID_STATISTICS_PREDICTED_COLOR_TRANSFORM = 0x11000d,  // rational x 9
    ANDROID_STATISTICS_SCENE_FLICKER = 0x11000e,              // byte
    ANDROID_STATISTICS_HOT_PIXEL_MAP = 0x11000f,              // int32, any number
    ANDROID_STATISTICS_LENS_SHADING_MAP_MODE = 0x110010,      // byte

    ANDROID_TONEMAP_CURVE_BLUE = 0x130000,   // float, 2 a point
    ANDROID_TONEMAP_CURVE_GREEN = 0x130001,  // float, 2 a point
    ANDROID_TONEMAP_CURVE_RED = 0x130002,    // float, 2 a point
    ANDROID_TONEMAP_MODE = 0x130003,         // byte

    ANDROID_BLACK_LEVEL_LOCK = 0x160000,   // byte
    ANDROID_SYNC_FRAME_NUMBER = 0x170000,  // int64
} camera_metadata_tag_t;
