#pragma once

#include <opencv2/core/mat.hpp>

#include "inputs/Capture.h"

namespace quen::reprocess {

/**
 * Exposes a sensor to a scene: 10-bit RGGB samples over a black level, unbalanced and in the
 * sensor's own colours, with shot and read noise. The calibration undoes all but the noise,
 * which is the same in every run.
 *
 * @param scene 8-bit sRGB in the order red, green, blue; even width and height
 */
Capture exposeDemoSensor(cv::Mat const& scene);

}  // namespace quen::reprocess
