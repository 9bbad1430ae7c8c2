#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "inputs/Capture.h"

namespace quen::reprocess {

/** The format of a headerless file, and corrections to a camera's raw file. */
struct InputOptions {
    std::optional<std::array<uint32_t, 2>> size;  ///< width, height
    std::optional<BayerOrder> bayer;
    int bits = 10;
    std::optional<std::array<float, 3>> wb;     ///< red, green, blue
    std::optional<std::array<float, 4>> black;  ///< red, green of red rows, of blue rows, blue
};

}  // namespace quen::reprocess
