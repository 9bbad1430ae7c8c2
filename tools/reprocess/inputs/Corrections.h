#pragma once

#include "inputs/Capture.h"
#include "inputs/InputOptions.h"

namespace quen::reprocess {

/**
 * Puts what the command line says of a capture's levels and gains in place of what the calibration
 * has.
 *
 * @throws Failure when black is then not below white
 */
void applyCorrections(InputOptions const& options, SensorCalibration& calibration);

}  // namespace quen::reprocess
