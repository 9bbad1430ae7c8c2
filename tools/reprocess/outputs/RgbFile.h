#pragma once

#include "buffers/Product.h"

namespace quen::reprocess {

/**
 * Makes the file of a picture in RGB.
 *
 * @param planes a product whose bytes are planes
 * @param bits of a sample: 8 or 16
 * @throws Failure when it cannot be made
 */
Product makeRgbFile(Product const& planes, OutputKind kind, int bits);

}  // namespace quen::reprocess
