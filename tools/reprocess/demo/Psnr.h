#pragma once

#include <opencv2/core/mat.hpp>

#include "support/Bytes.h"

namespace quen::reprocess {

/** How close a picture comes to what it should be, over all pixels and channels. */
struct Psnr {
    double decibels;
    double channel[3];  ///< red, green, blue on their own
};

/**
 * Decodes a JPEG and compares it with a scene.
 *
 * @param scene 8-bit sRGB, channels in the order red, green, blue
 * @throws Failure when the JPEG cannot be decoded or has another size
 */
Psnr comparePicture(Bytes jpeg, cv::Mat const& scene);

}  // namespace quen::reprocess
