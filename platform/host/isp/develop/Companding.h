#pragma once

#include <cstdint>
#include <vector>

#include "host/isp/buffers/SensorCalibration.h"

namespace quen::host::isp {

/**
 * Samples between raw and picture are kept as the square root of linear light, 0 (black) to
 * kCodeWhite. Interpolation in that scale treats dark and bright sides of an edge alike, which
 * keeps colour fringes away, and shot noise is equally strong everywhere. The white's value leaves
 * the room that sums of the demosaic need in 16 bits.
 */
constexpr int kCodeWhite = 2728;

/** Number of colours of a Bayer cell: R, Gr, Gb, B. */
constexpr int kBayerColours = 4;

/** What the samples of a capture mean, ready for look-up. */
class Companding {
  public:
    /**
     * Black level, white balance, exposure and the scale's square root in one table a colour. The
     * levels are rescaled from `calibration.levelBits` to `bits`. White-balance gains are used in
     * proportion to the smallest, so that what is white in the capture stays white in all colours.
     *
     * @param bits depth of the samples; the tables have 2^bits entries
     */
    Companding(SensorCalibration const& calibration, int bits);

    /** @param colour 0 R, 1 Gr, 2 Gb, 3 B */
    int16_t const* table(int colour) const { return mTables[colour].data(); }

  private:
    std::vector<int16_t> mTables[kBayerColours];
};

}  // namespace quen::host::isp
