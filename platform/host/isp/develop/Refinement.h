#pragma once

#include <cstddef>
#include <cstdint>

#include "host/isp/buffers/SensorCalibration.h"

namespace quen::host::isp {

/** How a developed picture is cleaned of noise and sharpened. */
struct Refinement {
    int lumaThreshold = 0;    ///< differences up to it are noise, in 8-bit steps; 0: none is
    int chromaThreshold = 0;  ///< the same for chroma
    int sharpening = 0;       ///< 0 off .. 16 strong; acts on what is no noise

    bool isLumaLeftAlone() const { return lumaThreshold == 0 && sharpening == 0; }
    bool isNothing() const { return isLumaLeftAlone() && chromaThreshold == 0; }
};

/** What the noise and the gains of a capture ask for. */
Refinement refinementFor(SensorCalibration const& calibration);

/**
 * Refines one row of a plane: each sample moves to the mean of those neighbours that differ by no
 * more than the threshold, so edges stay; and away from the others, by the sharpening.
 *
 * @param above, row, below the row and its neighbours; outside the plane, repeat the row itself
 * @param target `width` samples; none of the rows that are read
 */
void refineRow(uint8_t const* above, uint8_t const* row, uint8_t const* below, int width,
               int threshold, int sharpening, uint8_t* target);

}  // namespace quen::host::isp
