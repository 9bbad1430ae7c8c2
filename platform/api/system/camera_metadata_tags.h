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

/** A section's first id. */
typedef enum camera_metadata_section_start {
    ANDROID_COLOR_CORRECTION_START = ANDROID_COLOR_CORRECTION << 16,
    ANDROID_CONTROL_START = ANDROID_CONTROL << 16,
    ANDROID_DEMOSAIC_START = ANDROID_DEMOSAIC << 16,
    ANDROID_EDGE_START = ANDROID_EDGE << 16,
    ANDROID_FLASH_START = ANDROID_FLASH << 16,
    ANDROID_FLASH_INFO_START = ANDROID_FLASH_INFO << 16,
    ANDROID_HOT_PIXEL_START = ANDROID_HOT_PIXEL << 16,
    ANDROID_JPEG_START = ANDROID_JPEG << 16,
    ANDROID_LENS_START = ANDROID_LENS << 16,
    ANDROID_LENS_INFO_START = ANDROID_LENS_INFO << 16,
    ANDROID_NOISE_REDUCTION_START = ANDROID_NOISE_REDUCTION << 16,
    ANDROID_QUIRKS_START = ANDROID_QUIRKS << 16,
    ANDROID_REQUEST_START = ANDROID_REQUEST << 16,
    ANDROID_SCALER_START = ANDROID_SCALER << 16,
    ANDROID_SENSOR_START = ANDROID_SENSOR << 16,
    ANDROID_SENSOR_INFO_START = ANDROID_SENSOR_INFO << 16,
    ANDROID_SHADING_START = ANDROID_SHADING << 16,
    ANDROID_STATISTICS_START = ANDROID_STATISTICS << 16,
    ANDROID_STATISTICS_INFO_START = ANDROID_STATISTICS_INFO << 16,
    ANDROID_TONEMAP_START = ANDROID_TONEMAP << 16,
    ANDROID_LED_START = ANDROID_LED << 16,
    ANDROID_INFO_START = ANDROID_INFO << 16,
    ANDROID_BLACK_LEVEL_START = ANDROID_BLACK_LEVEL << 16,
    ANDROID_SYNC_START = ANDROID_SYNC << 16,
    ANDROID_REPROCESS_START = ANDROID_REPROCESS << 16,
    ANDROID_DEPTH_START = ANDROID_DEPTH << 16,
    ANDROID_LOGICAL_MULTI_CAMERA_START = ANDROID_LOGICAL_MULTI_CAMERA << 16,
    ANDROID_DISTORTION_CORRECTION_START = ANDROID_DISTORTION_CORRECTION << 16,
    ANDROID_HEIC_START = ANDROID_HEIC << 16,
    ANDROID_HEIC_INFO_START = ANDROID_HEIC_INFO << 16,
    VENDOR_SECTION_START = VENDOR_SECTION << 16
} camera_metadata_section_start_t;

/**
 * Android 11's tags. The ids of a section are contiguous; its _END is one past the last. The
 * comments have type and number of items.
 */
typedef enum camera_metadata_tag {
    ANDROID_COLOR_CORRECTION_MODE = 0x00000,                        // byte
    ANDROID_COLOR_CORRECTION_TRANSFORM = 0x00001,                   // rational x 9
    ANDROID_COLOR_CORRECTION_GAINS = 0x00002,                       // float x 4
    ANDROID_COLOR_CORRECTION_ABERRATION_MODE = 0x00003,             // byte
    ANDROID_COLOR_CORRECTION_AVAILABLE_ABERRATION_MODES = 0x00004,  // byte, any number
    ANDROID_COLOR_CORRECTION_END = 0x00005,

    ANDROID_CONTROL_AE_ANTIBANDING_MODE = 0x10000,                              // byte
    ANDROID_CONTROL_AE_EXPOSURE_COMPENSATION = 0x10001,                         // int32
    ANDROID_CONTROL_AE_LOCK = 0x10002,                                          // byte
    ANDROID_CONTROL_AE_MODE = 0x10003,                                          // byte
    ANDROID_CONTROL_AE_REGIONS = 0x10004,                                       // int32, 5 a region
    ANDROID_CONTROL_AE_TARGET_FPS_RANGE = 0x10005,                              // int32 x 2
    ANDROID_CONTROL_AE_PRECAPTURE_TRIGGER = 0x10006,                            // byte
    ANDROID_CONTROL_AF_MODE = 0x10007,                                          // byte
    ANDROID_CONTROL_AF_REGIONS = 0x10008,                                       // int32, 5 a region
    ANDROID_CONTROL_AF_TRIGGER = 0x10009,                                       // byte
    ANDROID_CONTROL_AWB_LOCK = 0x1000a,                                         // byte
    ANDROID_CONTROL_AWB_MODE = 0x1000b,                                         // byte
    ANDROID_CONTROL_AWB_REGIONS = 0x1000c,                                      // int32, 5 a region
    ANDROID_CONTROL_CAPTURE_INTENT = 0x1000d,                                   // byte
    ANDROID_CONTROL_EFFECT_MODE = 0x1000e,                                      // byte
    ANDROID_CONTROL_MODE = 0x1000f,                                             // byte
    ANDROID_CONTROL_SCENE_MODE = 0x10010,                                       // byte
    ANDROID_CONTROL_VIDEO_STABILIZATION_MODE = 0x10011,                         // byte
    ANDROID_CONTROL_AE_AVAILABLE_ANTIBANDING_MODES = 0x10012,                   // byte, any number
    ANDROID_CONTROL_AE_AVAILABLE_MODES = 0x10013,                               // byte, any number
    ANDROID_CONTROL_AE_AVAILABLE_TARGET_FPS_RANGES = 0x10014,                   // int32, any number
    ANDROID_CONTROL_AE_COMPENSATION_RANGE = 0x10015,                            // int32 x 2
    ANDROID_CONTROL_AE_COMPENSATION_STEP = 0x10016,                             // rational
    ANDROID_CONTROL_AF_AVAILABLE_MODES = 0x10017,                               // byte, any number
    ANDROID_CONTROL_AVAILABLE_EFFECTS = 0x10018,                                // byte, any number
    ANDROID_CONTROL_AVAILABLE_SCENE_MODES = 0x10019,                            // byte, any number
    ANDROID_CONTROL_AVAILABLE_VIDEO_STABILIZATION_MODES = 0x1001a,              // byte, any number
    ANDROID_CONTROL_AWB_AVAILABLE_MODES = 0x1001b,                              // byte, any number
    ANDROID_CONTROL_MAX_REGIONS = 0x1001c,                                      // int32 x 3
    ANDROID_CONTROL_SCENE_MODE_OVERRIDES = 0x1001d,                             // byte, any number
    ANDROID_CONTROL_AE_PRECAPTURE_ID = 0x1001e,                                 // int32
    ANDROID_CONTROL_AE_STATE = 0x1001f,                                         // byte
    ANDROID_CONTROL_AF_STATE = 0x10020,                                         // byte
    ANDROID_CONTROL_AF_TRIGGER_ID = 0x10021,                                    // int32
    ANDROID_CONTROL_AWB_STATE = 0x10022,                                        // byte
    ANDROID_CONTROL_AVAILABLE_HIGH_SPEED_VIDEO_CONFIGURATIONS = 0x10023,        // int32, any number
    ANDROID_CONTROL_AE_LOCK_AVAILABLE = 0x10024,                                // byte
    ANDROID_CONTROL_AWB_LOCK_AVAILABLE = 0x10025,                               // byte
    ANDROID_CONTROL_AVAILABLE_MODES = 0x10026,                                  // byte, any number
    ANDROID_CONTROL_POST_RAW_SENSITIVITY_BOOST_RANGE = 0x10027,                 // int32 x 2
    ANDROID_CONTROL_POST_RAW_SENSITIVITY_BOOST = 0x10028,                       // int32
    ANDROID_CONTROL_ENABLE_ZSL = 0x10029,                                       // byte
    ANDROID_CONTROL_AF_SCENE_CHANGE = 0x1002a,                                  // byte
    ANDROID_CONTROL_AVAILABLE_EXTENDED_SCENE_MODE_MAX_SIZES = 0x1002b,          // int32, any number
    ANDROID_CONTROL_AVAILABLE_EXTENDED_SCENE_MODE_ZOOM_RATIO_RANGES = 0x1002c,  // float, any number
    ANDROID_CONTROL_EXTENDED_SCENE_MODE = 0x1002d,                              // byte
    ANDROID_CONTROL_ZOOM_RATIO_RANGE = 0x1002e,                                 // float x 2
    ANDROID_CONTROL_ZOOM_RATIO = 0x1002f,                                       // float
    ANDROID_CONTROL_END = 0x10030,

    ANDROID_DEMOSAIC_MODE = 0x20000,  // byte
    ANDROID_DEMOSAIC_END = 0x20001,

    ANDROID_EDGE_MODE = 0x30000,                  // byte
    ANDROID_EDGE_STRENGTH = 0x30001,              // byte
    ANDROID_EDGE_AVAILABLE_EDGE_MODES = 0x30002,  // byte, any number
    ANDROID_EDGE_END = 0x30003,

    ANDROID_FLASH_FIRING_POWER = 0x40000,       // byte
    ANDROID_FLASH_FIRING_TIME = 0x40001,        // int64
    ANDROID_FLASH_MODE = 0x40002,               // byte
    ANDROID_FLASH_COLOR_TEMPERATURE = 0x40003,  // byte
    ANDROID_FLASH_MAX_ENERGY = 0x40004,         // byte
    ANDROID_FLASH_STATE = 0x40005,              // byte
    ANDROID_FLASH_END = 0x40006,

    ANDROID_FLASH_INFO_AVAILABLE = 0x50000,        // byte
    ANDROID_FLASH_INFO_CHARGE_DURATION = 0x50001,  // int64
    ANDROID_FLASH_INFO_END = 0x50002,

    ANDROID_HOT_PIXEL_MODE = 0x60000,                       // byte
    ANDROID_HOT_PIXEL_AVAILABLE_HOT_PIXEL_MODES = 0x60001,  // byte, any number
    ANDROID_HOT_PIXEL_END = 0x60002,

    ANDROID_JPEG_GPS_COORDINATES = 0x70000,            // double x 3
    ANDROID_JPEG_GPS_PROCESSING_METHOD = 0x70001,      // byte, text
    ANDROID_JPEG_GPS_TIMESTAMP = 0x70002,              // int64
    ANDROID_JPEG_ORIENTATION = 0x70003,                // int32
    ANDROID_JPEG_QUALITY = 0x70004,                    // byte
    ANDROID_JPEG_THUMBNAIL_QUALITY = 0x70005,          // byte
    ANDROID_JPEG_THUMBNAIL_SIZE = 0x70006,             // int32 x 2
    ANDROID_JPEG_AVAILABLE_THUMBNAIL_SIZES = 0x70007,  // int32, any number
    ANDROID_JPEG_MAX_SIZE = 0x70008,                   // int32
    ANDROID_JPEG_SIZE = 0x70009,                       // int32
    ANDROID_JPEG_END = 0x7000a,

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
    ANDROID_LENS_RADIAL_DISTORTION = 0x8000b,           // float x 6
    ANDROID_LENS_POSE_REFERENCE = 0x8000c,              // byte
    ANDROID_LENS_DISTORTION = 0x8000d,                  // float x 5
    ANDROID_LENS_END = 0x8000e,

    ANDROID_LENS_INFO_AVAILABLE_APERTURES = 0x90000,              // float, any number
    ANDROID_LENS_INFO_AVAILABLE_FILTER_DENSITIES = 0x90001,       // float, any number
    ANDROID_LENS_INFO_AVAILABLE_FOCAL_LENGTHS = 0x90002,          // float, any number
    ANDROID_LENS_INFO_AVAILABLE_OPTICAL_STABILIZATION = 0x90003,  // byte, any number
    ANDROID_LENS_INFO_HYPERFOCAL_DISTANCE = 0x90004,              // float
    ANDROID_LENS_INFO_MINIMUM_FOCUS_DISTANCE = 0x90005,           // float
    ANDROID_LENS_INFO_SHADING_MAP_SIZE = 0x90006,                 // int32 x 2
    ANDROID_LENS_INFO_FOCUS_DISTANCE_CALIBRATION = 0x90007,       // byte
    ANDROID_LENS_INFO_END = 0x90008,

    ANDROID_NOISE_REDUCTION_MODE = 0xa0000,                             // byte
    ANDROID_NOISE_REDUCTION_STRENGTH = 0xa0001,                         // byte
    ANDROID_NOISE_REDUCTION_AVAILABLE_NOISE_REDUCTION_MODES = 0xa0002,  // byte, any number
    ANDROID_NOISE_REDUCTION_END = 0xa0003,

    ANDROID_QUIRKS_METERING_CROP_REGION = 0xb0000,  // byte
    ANDROID_QUIRKS_TRIGGER_AF_WITH_AUTO = 0xb0001,  // byte
    ANDROID_QUIRKS_USE_ZSL_FORMAT = 0xb0002,        // byte
    ANDROID_QUIRKS_USE_PARTIAL_RESULT = 0xb0003,    // byte
    ANDROID_QUIRKS_PARTIAL_RESULT = 0xb0004,        // byte
    ANDROID_QUIRKS_END = 0xb0005,

    ANDROID_REQUEST_FRAME_COUNT = 0xc0000,                             // int32
    ANDROID_REQUEST_ID = 0xc0001,                                      // int32
    ANDROID_REQUEST_INPUT_STREAMS = 0xc0002,                           // int32, any number
    ANDROID_REQUEST_METADATA_MODE = 0xc0003,                           // byte
    ANDROID_REQUEST_OUTPUT_STREAMS = 0xc0004,                          // int32, any number
    ANDROID_REQUEST_TYPE = 0xc0005,                                    // byte
    ANDROID_REQUEST_MAX_NUM_OUTPUT_STREAMS = 0xc0006,                  // int32 x 3
    ANDROID_REQUEST_MAX_NUM_REPROCESS_STREAMS = 0xc0007,               // int32
    ANDROID_REQUEST_MAX_NUM_INPUT_STREAMS = 0xc0008,                   // int32
    ANDROID_REQUEST_PIPELINE_DEPTH = 0xc0009,                          // byte
    ANDROID_REQUEST_PIPELINE_MAX_DEPTH = 0xc000a,                      // byte
    ANDROID_REQUEST_PARTIAL_RESULT_COUNT = 0xc000b,                    // int32
    ANDROID_REQUEST_AVAILABLE_CAPABILITIES = 0xc000c,                  // byte, any number
    ANDROID_REQUEST_AVAILABLE_REQUEST_KEYS = 0xc000d,                  // int32, any number
    ANDROID_REQUEST_AVAILABLE_RESULT_KEYS = 0xc000e,                   // int32, any number
    ANDROID_REQUEST_AVAILABLE_CHARACTERISTICS_KEYS = 0xc000f,          // int32, any number
    ANDROID_REQUEST_AVAILABLE_SESSION_KEYS = 0xc0010,                  // int32, any number
    ANDROID_REQUEST_AVAILABLE_PHYSICAL_CAMERA_REQUEST_KEYS = 0xc0011,  // int32, any number
    ANDROID_REQUEST_CHARACTERISTIC_KEYS_NEEDING_PERMISSION = 0xc0012,  // int32, any number
    ANDROID_REQUEST_END = 0xc0013,

    ANDROID_SCALER_CROP_REGION = 0xd0000,                                     // int32 x 4
    ANDROID_SCALER_AVAILABLE_FORMATS = 0xd0001,                               // int32, any number
    ANDROID_SCALER_AVAILABLE_JPEG_MIN_DURATIONS = 0xd0002,                    // int64, any number
    ANDROID_SCALER_AVAILABLE_JPEG_SIZES = 0xd0003,                            // int32, any number
    ANDROID_SCALER_AVAILABLE_MAX_DIGITAL_ZOOM = 0xd0004,                      // float
    ANDROID_SCALER_AVAILABLE_PROCESSED_MIN_DURATIONS = 0xd0005,               // int64, any number
    ANDROID_SCALER_AVAILABLE_PROCESSED_SIZES = 0xd0006,                       // int32, any number
    ANDROID_SCALER_AVAILABLE_RAW_MIN_DURATIONS = 0xd0007,                     // int64, any number
    ANDROID_SCALER_AVAILABLE_RAW_SIZES = 0xd0008,                             // int32, any number
    ANDROID_SCALER_AVAILABLE_INPUT_OUTPUT_FORMATS_MAP = 0xd0009,              // int32, any number
    ANDROID_SCALER_AVAILABLE_STREAM_CONFIGURATIONS = 0xd000a,                 // int32, any number
    ANDROID_SCALER_AVAILABLE_MIN_FRAME_DURATIONS = 0xd000b,                   // int64, any number
    ANDROID_SCALER_AVAILABLE_STALL_DURATIONS = 0xd000c,                       // int64, any number
    ANDROID_SCALER_CROPPING_TYPE = 0xd000d,                                   // byte
    ANDROID_SCALER_AVAILABLE_RECOMMENDED_STREAM_CONFIGURATIONS = 0xd000e,     // int32, any number
    ANDROID_SCALER_AVAILABLE_RECOMMENDED_INPUT_OUTPUT_FORMATS_MAP = 0xd000f,  // int32, any number
    ANDROID_SCALER_AVAILABLE_ROTATE_AND_CROP_MODES = 0xd0010,                 // byte, any number
    ANDROID_SCALER_ROTATE_AND_CROP = 0xd0011,                                 // byte
    ANDROID_SCALER_END = 0xd0012,

    ANDROID_SENSOR_EXPOSURE_TIME = 0xe0000,                   // int64
    ANDROID_SENSOR_FRAME_DURATION = 0xe0001,                  // int64
    ANDROID_SENSOR_SENSITIVITY = 0xe0002,                     // int32
    ANDROID_SENSOR_REFERENCE_ILLUMINANT1 = 0xe0003,           // byte
    ANDROID_SENSOR_REFERENCE_ILLUMINANT2 = 0xe0004,           // byte
    ANDROID_SENSOR_CALIBRATION_TRANSFORM1 = 0xe0005,          // rational x 9
    ANDROID_SENSOR_CALIBRATION_TRANSFORM2 = 0xe0006,          // rational x 9
    ANDROID_SENSOR_COLOR_TRANSFORM1 = 0xe0007,                // rational x 9
    ANDROID_SENSOR_COLOR_TRANSFORM2 = 0xe0008,                // rational x 9
    ANDROID_SENSOR_FORWARD_MATRIX1 = 0xe0009,                 // rational x 9
    ANDROID_SENSOR_FORWARD_MATRIX2 = 0xe000a,                 // rational x 9
    ANDROID_SENSOR_BASE_GAIN_FACTOR = 0xe000b,                // rational
    ANDROID_SENSOR_BLACK_LEVEL_PATTERN = 0xe000c,             // int32 x 4
    ANDROID_SENSOR_MAX_ANALOG_SENSITIVITY = 0xe000d,          // int32
    ANDROID_SENSOR_ORIENTATION = 0xe000e,                     // int32
    ANDROID_SENSOR_PROFILE_HUE_SAT_MAP_DIMENSIONS = 0xe000f,  // int32 x 3
    ANDROID_SENSOR_TIMESTAMP = 0xe0010,                       // int64
    ANDROID_SENSOR_TEMPERATURE = 0xe0011,                     // float
    ANDROID_SENSOR_NEUTRAL_COLOR_POINT = 0xe0012,             // rational x 3
    ANDROID_SENSOR_NOISE_PROFILE = 0xe0013,                   // double, 2 a channel
    ANDROID_SENSOR_PROFILE_HUE_SAT_MAP = 0xe0014,             // float, any number
    ANDROID_SENSOR_PROFILE_TONE_CURVE = 0xe0015,              // float, any number
    ANDROID_SENSOR_GREEN_SPLIT = 0xe0016,                     // float
    ANDROID_SENSOR_TEST_PATTERN_DATA = 0xe0017,               // int32 x 4
    ANDROID_SENSOR_TEST_PATTERN_MODE = 0xe0018,               // int32
    ANDROID_SENSOR_AVAILABLE_TEST_PATTERN_MODES = 0xe0019,    // int32, any number
    ANDROID_SENSOR_ROLLING_SHUTTER_SKEW = 0xe001a,            // int64
    ANDROID_SENSOR_OPTICAL_BLACK_REGIONS = 0xe001b,           // int32, any number
    ANDROID_SENSOR_DYNAMIC_BLACK_LEVEL = 0xe001c,             // float x 4
    ANDROID_SENSOR_DYNAMIC_WHITE_LEVEL = 0xe001d,             // int32
    ANDROID_SENSOR_OPAQUE_RAW_SIZE = 0xe001e,                 // int32, any number
    ANDROID_SENSOR_END = 0xe001f,

    ANDROID_SENSOR_INFO_ACTIVE_ARRAY_SIZE = 0xf0000,                 // int32 x 4
    ANDROID_SENSOR_INFO_SENSITIVITY_RANGE = 0xf0001,                 // int32 x 2
    ANDROID_SENSOR_INFO_COLOR_FILTER_ARRANGEMENT = 0xf0002,          // byte
    ANDROID_SENSOR_INFO_EXPOSURE_TIME_RANGE = 0xf0003,               // int64 x 2
    ANDROID_SENSOR_INFO_MAX_FRAME_DURATION = 0xf0004,                // int64
    ANDROID_SENSOR_INFO_PHYSICAL_SIZE = 0xf0005,                     // float x 2
    ANDROID_SENSOR_INFO_PIXEL_ARRAY_SIZE = 0xf0006,                  // int32 x 2
    ANDROID_SENSOR_INFO_WHITE_LEVEL = 0xf0007,                       // int32
    ANDROID_SENSOR_INFO_TIMESTAMP_SOURCE = 0xf0008,                  // byte
    ANDROID_SENSOR_INFO_LENS_SHADING_APPLIED = 0xf0009,              // byte
    ANDROID_SENSOR_INFO_PRE_CORRECTION_ACTIVE_ARRAY_SIZE = 0xf000a,  // int32 x 4
    ANDROID_SENSOR_INFO_END = 0xf000b,

    ANDROID_SHADING_MODE = 0x100000,             // byte
    ANDROID_SHADING_STRENGTH = 0x100001,         // byte
    ANDROID_SHADING_AVAILABLE_MODES = 0x100002,  // byte, any number
    ANDROID_SHADING_END = 0x100003,

    ANDROID_STATISTICS_FACE_DETECT_MODE = 0x110000,             // byte
    ANDROID_STATISTICS_HISTOGRAM_MODE = 0x110001,               // byte
    ANDROID_STATISTICS_SHARPNESS_MAP_MODE = 0x110002,           // byte
    ANDROID_STATISTICS_HOT_PIXEL_MAP_MODE = 0x110003,           // byte
    ANDROID_STATISTICS_FACE_IDS = 0x110004,                     // int32, any number
    ANDROID_STATISTICS_FACE_LANDMARKS = 0x110005,               // int32, any number
    ANDROID_STATISTICS_FACE_RECTANGLES = 0x110006,              // int32, any number
    ANDROID_STATISTICS_FACE_SCORES = 0x110007,                  // byte, any number
    ANDROID_STATISTICS_HISTOGRAM = 0x110008,                    // int32, any number
    ANDROID_STATISTICS_SHARPNESS_MAP = 0x110009,                // int32, any number
    ANDROID_STATISTICS_LENS_SHADING_CORRECTION_MAP = 0x11000a,  // byte, any number
    ANDROID_STATISTICS_LENS_SHADING_MAP = 0x11000b,             // float, any number
    ANDROID_STATISTICS_PREDICTED_COLOR_GAINS = 0x11000c,        // float x 4
    ANDROID_STATISTICS_PREDICTED_COLOR_TRANSFORM = 0x11000d,    // rational x 9
    ANDROID_STATISTICS_SCENE_FLICKER = 0x11000e,                // byte
    ANDROID_STATISTICS_HOT_PIXEL_MAP = 0x11000f,                // int32, any number
    ANDROID_STATISTICS_LENS_SHADING_MAP_MODE = 0x110010,        // byte
    ANDROID_STATISTICS_OIS_DATA_MODE = 0x110011,                // byte
    ANDROID_STATISTICS_OIS_TIMESTAMPS = 0x110012,               // int64, any number
    ANDROID_STATISTICS_OIS_X_SHIFTS = 0x110013,                 // float, any number
    ANDROID_STATISTICS_OIS_Y_SHIFTS = 0x110014,                 // float, any number
    ANDROID_STATISTICS_END = 0x110015,

    ANDROID_STATISTICS_INFO_AVAILABLE_FACE_DETECT_MODES = 0x120000,       // byte, any number
    ANDROID_STATISTICS_INFO_HISTOGRAM_BUCKET_COUNT = 0x120001,            // int32
    ANDROID_STATISTICS_INFO_MAX_FACE_COUNT = 0x120002,                    // int32
    ANDROID_STATISTICS_INFO_MAX_HISTOGRAM_COUNT = 0x120003,               // int32
    ANDROID_STATISTICS_INFO_MAX_SHARPNESS_MAP_VALUE = 0x120004,           // int32
    ANDROID_STATISTICS_INFO_SHARPNESS_MAP_SIZE = 0x120005,                // int32 x 2
    ANDROID_STATISTICS_INFO_AVAILABLE_HOT_PIXEL_MAP_MODES = 0x120006,     // byte, any number
    ANDROID_STATISTICS_INFO_AVAILABLE_LENS_SHADING_MAP_MODES = 0x120007,  // byte, any number
    ANDROID_STATISTICS_INFO_AVAILABLE_OIS_DATA_MODES = 0x120008,          // byte, any number
    ANDROID_STATISTICS_INFO_END = 0x120009,

    ANDROID_TONEMAP_CURVE_BLUE = 0x130000,                // float, 2 a point
    ANDROID_TONEMAP_CURVE_GREEN = 0x130001,               // float, 2 a point
    ANDROID_TONEMAP_CURVE_RED = 0x130002,                 // float, 2 a point
    ANDROID_TONEMAP_MODE = 0x130003,                      // byte
    ANDROID_TONEMAP_MAX_CURVE_POINTS = 0x130004,          // int32
    ANDROID_TONEMAP_AVAILABLE_TONE_MAP_MODES = 0x130005,  // byte, any number
    ANDROID_TONEMAP_GAMMA = 0x130006,                     // float
    ANDROID_TONEMAP_PRESET_CURVE = 0x130007,              // byte
    ANDROID_TONEMAP_END = 0x130008,

    ANDROID_LED_TRANSMIT = 0x140000,        // byte
    ANDROID_LED_AVAILABLE_LEDS = 0x140001,  // byte, any number
    ANDROID_LED_END = 0x140002,

    ANDROID_INFO_SUPPORTED_HARDWARE_LEVEL = 0x150000,             // byte
    ANDROID_INFO_VERSION = 0x150001,                              // byte, text
    ANDROID_INFO_SUPPORTED_BUFFER_MANAGEMENT_VERSION = 0x150002,  // byte
    ANDROID_INFO_END = 0x150003,

    ANDROID_BLACK_LEVEL_LOCK = 0x160000,  // byte
    ANDROID_BLACK_LEVEL_END = 0x160001,

    ANDROID_SYNC_FRAME_NUMBER = 0x170000,  // int64
    ANDROID_SYNC_MAX_LATENCY = 0x170001,   // int32
    ANDROID_SYNC_END = 0x170002,

    ANDROID_REPROCESS_EFFECTIVE_EXPOSURE_FACTOR = 0x180000,  // float
    ANDROID_REPROCESS_MAX_CAPTURE_STALL = 0x180001,          // int32
    ANDROID_REPROCESS_END = 0x180002,

    ANDROID_DEPTH_MAX_DEPTH_SAMPLES = 0x190000,                      // int32
    ANDROID_DEPTH_AVAILABLE_DEPTH_STREAM_CONFIGURATIONS = 0x190001,  // int32, any number
    ANDROID_DEPTH_AVAILABLE_DEPTH_MIN_FRAME_DURATIONS = 0x190002,    // int64, any number
    ANDROID_DEPTH_AVAILABLE_DEPTH_STALL_DURATIONS = 0x190003,        // int64, any number
    ANDROID_DEPTH_DEPTH_IS_EXCLUSIVE = 0x190004,                     // byte
    ANDROID_DEPTH_AVAILABLE_RECOMMENDED_DEPTH_STREAM_CONFIGURATIONS =
            0x190005,                                                        // int32, any number
    ANDROID_DEPTH_AVAILABLE_DYNAMIC_DEPTH_STREAM_CONFIGURATIONS = 0x190006,  // int32, any number
    ANDROID_DEPTH_AVAILABLE_DYNAMIC_DEPTH_MIN_FRAME_DURATIONS = 0x190007,    // int64, any number
    ANDROID_DEPTH_AVAILABLE_DYNAMIC_DEPTH_STALL_DURATIONS = 0x190008,        // int64, any number
    ANDROID_DEPTH_END = 0x190009,

    ANDROID_LOGICAL_MULTI_CAMERA_PHYSICAL_IDS = 0x1a0000,        // byte, texts
    ANDROID_LOGICAL_MULTI_CAMERA_SENSOR_SYNC_TYPE = 0x1a0001,    // byte
    ANDROID_LOGICAL_MULTI_CAMERA_ACTIVE_PHYSICAL_ID = 0x1a0002,  // byte, text
    ANDROID_LOGICAL_MULTI_CAMERA_END = 0x1a0003,

    ANDROID_DISTORTION_CORRECTION_MODE = 0x1b0000,             // byte
    ANDROID_DISTORTION_CORRECTION_AVAILABLE_MODES = 0x1b0001,  // byte, any number
    ANDROID_DISTORTION_CORRECTION_END = 0x1b0002,

    ANDROID_HEIC_AVAILABLE_HEIC_STREAM_CONFIGURATIONS = 0x1c0000,  // int32, any number
    ANDROID_HEIC_AVAILABLE_HEIC_MIN_FRAME_DURATIONS = 0x1c0001,    // int64, any number
    ANDROID_HEIC_AVAILABLE_HEIC_STALL_DURATIONS = 0x1c0002,        // int64, any number
    ANDROID_HEIC_END = 0x1c0003,

    ANDROID_HEIC_INFO_SUPPORTED = 0x1d0000,                    // byte
    ANDROID_HEIC_INFO_MAX_JPEG_APP_SEGMENTS_COUNT = 0x1d0001,  // byte
    ANDROID_HEIC_INFO_END = 0x1d0002,
} camera_metadata_tag_t;
