#pragma once

#include "demo/RgbPicture.h"
#include "inputs/Capture.h"

namespace quen::reprocess {

/**
 * Exposes a sensor to a scene: 10-bit RGGB samples over a black level, unbalanced and in the
 * sensor's own colours, with shot and read noise. The calibration undoes all but the noise,
 * which is the same in every run.
 *
 * @param scene of even width and height
 */
Capture exposeDemoSensor(RgbPicture const& scene);

}  // namespace quen::reprocess
