#pragma once

#include <cstddef>
#include <cstdint>

namespace quen::host::isp {

/**
 * What travels in a tuning-data buffer beside an image: the calibration of the sensor that took it.
 *
 * The buffer is 0x1fa400 bytes, of which the beginning is used. Everything is little-endian.
 *
 * | Offset | Type       | Field                                                              |
 * |--------|------------|--------------------------------------------------------------------|
 * |      0 | int32      | requestNo                                                          |
 * |     12 | int32      | frameNumber                                                        |
 * |     32 | int32      | totalUsedBytes, counted from offset 0                              |
 * |     64 | uint32     | magic 0x4e555451 ("QTUN")                                         |
 * |     68 | uint32     | layout version, 1                                                  |
 * |     72 | int32      | Bayer order: 0 rggb, 1 grbg, 2 gbrg, 3 bggr                        |
 * |     76 | int32      | levelBits: the sample depth that the levels are given at, 8..16    |
 * |     80 | float x 4  | black level of R, Gr, Gb, B                                        |
 * |     96 | float      | white level                                                        |
 * |    100 | float x 4  | white-balance gain of R, Gr, Gb, B                                 |
 * |    116 | float x 9  | matrix, row by row: white-balanced camera RGB to linear sRGB       |
 * |    152 | float      | exposure gain, on top of the white balance                         |
 * |    156 | float      | noise, shot: variance of a sample x in 0..1 is shot * x + read     |
 * |    160 | float      | noise, read                                                        |
 * |    164 | float      | denoise strength: 0 off, 1 as the noise asks for                   |
 * |    168 | float      | sharpening: 0 off, 1 strong                                        |
 * |    172 |            | end                                                                |
 *
 * All other bytes are 0. A buffer without the magic carries no calibration, whatever its header
 * says.
 */
constexpr size_t kCalibrationBufferBytes = 0x1fa400;
constexpr size_t kCalibrationUsedBytes = 172;

/** The three fields at the start of every tuning buffer. */
struct CalibrationHeader {
    int32_t requestNo = 0;
    int32_t frameNumber = 0;
    int32_t totalUsedBytes = 0;
};

/** Colours of the first two samples of rows 0 and 1 of a capture. */
enum class BayerOrder : int32_t { RGGB = 0, GRBG = 1, GBRG = 2, BGGR = 3 };

/** How a sensor took a capture. The values below are those the ISP uses when it is given none. */
struct SensorCalibration {
    BayerOrder bayerOrder = BayerOrder::RGGB;

    /** Depth that the levels are given at; the ISP rescales them to the samples' own depth. */
    int32_t levelBits = 10;
    float blackLevel[4] = {0, 0, 0, 0};  ///< R, Gr, Gb, B
    float whiteLevel = 1023;

    float wbGains[4] = {1, 1, 1, 1};  ///< R, Gr, Gb, B

    /** White-balanced camera RGB to linear sRGB, row by row. */
    float colorMatrix[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    float exposureGain = 1;

    /** Noise of a raw sample x in 0..1 (black to white): variance = noiseShot * x + noiseRead. */
    float noiseShot = 1e-4f;
    float noiseRead = 1e-6f;
    float denoiseStrength = 1;
    float sharpening = 0;
};

/** Whether a tuning buffer holds a calibration behind its header. */
enum class CalibrationState { Absent, Present, Malformed };

/**
 * Writes header and calibration to the start of a tuning buffer; `header.totalUsedBytes` is
 * ignored, the number of bytes written takes its place.
 *
 * @param size bytes at `buffer`, kCalibrationUsedBytes or more
 * @return the bytes used; 0, and nothing written, when `size` is too small
 */
size_t encodeCalibration(CalibrationHeader const& header, SensorCalibration const& calibration,
                         void* buffer, size_t size);

/** Reads the header; zeros when `size` is too small for one. */
CalibrationHeader decodeCalibrationHeader(void const* buffer, size_t size);

/**
 * Reads the calibration.
 *
 * @param calibration set when Present, left alone otherwise
 * @return Absent without the magic; Malformed for another version or an invalid value: not finite,
 * an unknown order, white not above black, a gain not above 0, ...
 */
CalibrationState decodeCalibration(void const* buffer, size_t size, SensorCalibration& calibration);

}  // namespace quen::host::isp
