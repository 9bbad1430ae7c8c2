#pragma once

#include <cstddef>
#include <cstdint>

#include "host/isp/buffers/SensorCalibration.h"

namespace quen::host::isp {

/** Parameters of noise reduction and sharpening. */
struct Refinement {
    int lumaThreshold = 0;    ///< differences up to this are noise, in 8-bit steps; 0: off
    int chromaThreshold = 0;  ///< the same for chroma
    int sharpening = 0;       ///< 0 off .. 16 strong; acts on larger differences

    bool isLumaOff() const { return lumaThreshold == 0 && sharpening == 0; }
    bool isOff() const { return isLumaOff() && chromaThreshold == 0; }
};

/** The parameters for the noise and the gains of a capture. */
Refinement refinementFor(SensorCalibration const& calibration);

/**
 * Refines one row of a plane: each sample moves towards the mean of the neighbours that differ by
 * no more than the threshold, which keeps edges, and away from the others by the sharpening.
 *
 * @param above, row, below the row and its neighbours; outside the plane, repeat the row itself
 * @param target `width` samples; must not overlap the rows that are read
 */
void refineRow(uint8_t const* above, uint8_t const* row, uint8_t const* below, int width,
               int threshold, int sharpening, uint8_t* target);

}  // namespace quen::host::isp
