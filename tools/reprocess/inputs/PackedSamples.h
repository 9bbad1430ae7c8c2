#pragma once

#include <cstddef>
#include <cstdint>

#include "inputs/InputOptions.h"

namespace quen::reprocess {

/** How the samples of a layout are packed. */
struct PackedGroup {
    uint32_t pixels;  ///< that share their bytes
    uint32_t bytes;
    int bits;  ///< of a sample; 0 for words, which hold any depth
};

PackedGroup packedGroup(SampleLayout layout);

/**
 * Unpacks a row of samples to words of this machine.
 *
 * @param row whole groups, as many as the width needs
 * @param out room for `width` samples
 */
void unpackSamples(SampleLayout layout, uint8_t const* row, uint32_t width, uint16_t* out);

}  // namespace quen::reprocess
