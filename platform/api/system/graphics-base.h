#pragma once

/** Pixel formats of the Android HALs, as much as cameras use of them. */
typedef enum {
    HAL_PIXEL_FORMAT_RGBA_8888 = 0x1,
    HAL_PIXEL_FORMAT_YCRCB_420_SP = 0x11,  ///< NV21
    HAL_PIXEL_FORMAT_RAW16 = 0x20,
    HAL_PIXEL_FORMAT_BLOB = 0x21,
    HAL_PIXEL_FORMAT_IMPLEMENTATION_DEFINED = 0x22,
    HAL_PIXEL_FORMAT_YCBCR_420_888 = 0x23,
    HAL_PIXEL_FORMAT_RAW10 = 0x25,
    HAL_PIXEL_FORMAT_RAW12 = 0x26,
    HAL_PIXEL_FORMAT_YV12 = 0x32315659,
} android_pixel_format_t;

/** How sample values are to be read as colours. */
typedef enum {
    HAL_DATASPACE_UNKNOWN = 0,
    HAL_DATASPACE_V0_JFIF = 0x08C20000,  ///< full-range BT.601, as in a JPEG file
} android_dataspace_t;
