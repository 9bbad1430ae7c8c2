#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "host/isp/buffers/SensorCalibration.h"

namespace quen::reprocess {

using host::isp::BayerOrder;
using host::isp::SensorCalibration;

/** The channels of a mosaic, as indices of the arrays of SensorCalibration. */
enum BayerChannel { kRed, kGreenOfRedRows, kGreenOfBlueRows, kBlue };

/** The channel of each pixel of the 2 x 2 block, in reading order, by BayerOrder. */
constexpr BayerChannel kBayerChannels[4][4] = {
        {kRed, kGreenOfRedRows, kGreenOfBlueRows, kBlue},
        {kGreenOfRedRows, kRed, kBlue, kGreenOfBlueRows},
        {kGreenOfBlueRows, kBlue, kRed, kGreenOfRedRows},
        {kBlue, kGreenOfBlueRows, kGreenOfRedRows, kRed},
};

/** A mosaic as samples of 16 bits, or as packed RAW10; one of the pointers is set. */
struct BayerImage {
    uint16_t const* samples = nullptr;
    uint8_t const* packed10 = nullptr;
    size_t stride = 0;  ///< from row to row, in samples or packed bytes
};

/** A full-range 4:2:0 picture: luma, then interleaved V and U, no padding. */
struct Nv21Image {
    uint8_t const* bytes = nullptr;
};

/**
 * One picture as read from its file, of whatever format.
 *
 * Width and height are even: chroma of half resolution has no sample for the last column or row of
 * an odd picture, so the readers leave it out (EvenSize.h).
 */
struct Capture {
    uint32_t width = 0;
    uint32_t height = 0;
    int orientation = 0;    ///< degrees to turn clockwise for viewing: 0, 90, 180, 270
    bool mirrored = false;  ///< to be mirrored left to right for viewing, after the turn
    std::variant<BayerImage, Nv21Image> image;
    SensorCalibration calibration;       ///< of a mosaic; levels at the depth of its samples
    std::vector<uint8_t> exif;           ///< what the file says of the capture, a block of EXIF
    std::vector<uint8_t> colourProfile;  ///< ICC, of the samples of a picture; sRGB when empty
    std::vector<std::string> notes;      ///< remarks on the file, for the user
    std::shared_ptr<void const> memory;  ///< keeps the memory of `image` alive
};

/** Bytes of an NV21 picture of an even size. */
constexpr size_t nv21Size(uint32_t width, uint32_t height) {
    return size_t{width} * height * 3 / 2;
}

}  // namespace quen::reprocess
