#pragma once

#include <cstddef>
#include <cstdint>

#include "inputs/Capture.h"

namespace quen::reprocess {

/** The format that the ISP gets a mosaic in. */
struct RawTarget {
    bool raw16;  ///< words of 16 bits, else packed RAW10
    int bits;    ///< depth of the samples: 10 when packed
};

/**
 * Writes a mosaic into an ISP buffer, at the buffer's depth. Samples of fewer bits are scaled up,
 * those of more are rounded.
 *
 * @param width, height the part to write, from the top left; the width a multiple of 4 for RAW10
 * @param out rows of `outStride` bytes
 */
void writeBayerRows(BayerImage const& image, int bits, uint32_t width, uint32_t height,
                    RawTarget target, uint8_t* out, size_t outStride);

}  // namespace quen::reprocess
