#pragma once

#include "inputs/Capture.h"
#include "inputs/InputOptions.h"

namespace quen::reprocess {

/**
 * Replaces levels, gains and matrix of a calibration by those of the command line.
 *
 * @throws Failure when black is not below white afterwards, or white is above the depth
 */
void applyCorrections(InputOptions const& options, SensorCalibration& calibration);

}  // namespace quen::reprocess
