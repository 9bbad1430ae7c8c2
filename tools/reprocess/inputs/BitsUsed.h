#pragma once

#include <cstdint>

#include "inputs/Capture.h"

namespace quen::reprocess {

/**
 * All bits that are set in any sample of an unpacked mosaic. They give its depth, as its largest
 * sample would, but vectorise on every processor.
 */
unsigned bitsUsed(BayerImage const& image, uint32_t width, uint32_t height);

}  // namespace quen::reprocess
