#pragma once

#include "inputs/Capture.h"
#include "inputs/InputOptions.h"

namespace quen::reprocess {

/**
 * Replaces levels and gains of a calibration by those of the command line.
 *
 * @throws Failure when black is not below white afterwards
 */
void applyCorrections(InputOptions const& options, SensorCalibration& calibration);

}  // namespace quen::reprocess
