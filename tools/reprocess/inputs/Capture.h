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

/** A mosaic's channels, and the index of each in the four-entry lists of SensorCalibration. */
enum BayerChannel { kRed, kGreenOfRedRows, kGreenOfBlueRows, kBlue };

/** The channel of each pixel of the 2 x 2 block, in reading order, by BayerOrder. */
constexpr BayerChannel kBayerChannels[4][4] = {
        {kRed, kGreenOfRedRows, kGreenOfBlueRows, kBlue},
        {kGreenOfRedRows, kRed, kBlue, kGreenOfBlueRows},
        {kGreenOfBlueRows, kBlue, kRed, kGreenOfRedRows},
        {kBlue, kGreenOfBlueRows, kGreenOfRedRows, kRed},
};

/** A mosaic as samples of 16 bits, or as packed RAW10; exactly one of the pointers is set. */
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
 * One picture as it came out of its file, whatever the file was: what there is to reprocess.
 *
 * Width and height are even: chroma at half resolution has no place for the last column or row of
 * an odd picture, so readers leave it out.
 */
struct Capture {
    uint32_t width = 0;
    uint32_t height = 0;
    int orientation = 0;  ///< degrees to turn clockwise for viewing: 0, 90, 180, 270
    std::variant<BayerImage, Nv21Image> image;
    SensorCalibration calibration;       ///< of a mosaic; levels at the depth of its samples
    std::vector<std::string> notes;      ///< what the user should know about the reading
    std::shared_ptr<void const> memory;  ///< keeps what `image` points at
};

/** Bytes of an NV21 picture of an even size. */
constexpr size_t nv21Size(uint32_t width, uint32_t height) {
    return size_t{width} * height * 3 / 2;
}

}  // namespace quen::reprocess
