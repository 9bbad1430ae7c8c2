#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "inputs/Capture.h"

namespace quen::reprocess {

/** How the samples of a headerless mosaic lie in its file. */
enum class SampleLayout { Words, BigEndianWords, Raw10, Raw12, Raw14 };

/** How the chroma of a headerless 4:2:0 picture lies behind its luma. */
enum class YuvLayout {
    Nv21,  ///< interleaved, V first
    Nv12,  ///< interleaved, U first
    I420,  ///< the U plane, the V plane
    Yv12   ///< the V plane, the U plane
};

/** The format of a headerless file, and corrections to what a file says. */
struct InputOptions {
    std::optional<std::array<uint32_t, 2>> size;  ///< width, height
    std::optional<BayerOrder> bayer;
    std::optional<YuvLayout> yuv;               ///< by the file's name unless given
    std::optional<int> bits;                    ///< 10 for words unless given
    std::optional<SampleLayout> layout;         ///< by the file's size unless given
    std::optional<size_t> stride;               ///< bytes from row to row
    std::optional<size_t> offset;               ///< bytes before the first row
    std::optional<std::array<float, 3>> wb;     ///< red, green, blue
    std::optional<std::array<float, 4>> black;  ///< red, green of red rows, of blue rows, blue
    std::optional<float> white;
    std::optional<std::array<float, 9>> matrix;  ///< white-balanced camera RGB to linear sRGB
    std::optional<int> rotate;                   ///< degrees to turn clockwise for viewing
};

}  // namespace quen::reprocess
