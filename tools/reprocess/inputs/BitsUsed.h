#pragma once

#include <cstdint>

#include "inputs/Capture.h"

namespace quen::reprocess {

/**
 * All bits that are set in any sample of an unpacked mosaic: what tells its depth, and unlike its
 * largest sample is found many samples at a time on every processor.
 */
unsigned bitsUsed(BayerImage const& image, uint32_t width, uint32_t height);

}  // namespace quen::reprocess
