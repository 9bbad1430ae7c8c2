#pragma once

#include "demo/RgbPicture.h"
#include "support/Bytes.h"

namespace quen::reprocess {

/** Peak signal-to-noise ratio of a picture over all pixels and channels. */
struct Psnr {
    double decibels;
    double channel[3];  ///< of red, green and blue alone
};

/**
 * Decodes a JPEG and compares it with a scene.
 *
 * @throws Failure when the JPEG cannot be decoded or has another size
 */
Psnr comparePicture(Bytes jpeg, RgbPicture const& scene);

}  // namespace quen::reprocess
