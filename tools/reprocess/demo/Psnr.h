#pragma once

#include <opencv2/core/mat.hpp>

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
 * @param scene 8-bit sRGB, channels in the order red, green, blue
 * @throws Failure when the JPEG cannot be decoded or has another size
 */
Psnr comparePicture(Bytes jpeg, cv::Mat const& scene);

}  // namespace quen::reprocess
