#pragma once

#include <cstdint>
#include <vector>

#include "host/isp/buffers/SensorCalibration.h"

namespace quen::host::isp {

/**
 * Between unpacking and rendering, samples are the square root of linear light, 0 (black) to
 * kCodeWhite. On that scale interpolation weighs both sides of an edge alike, which avoids colour
 * fringes, and shot noise is equally strong at every level. kCodeWhite leaves headroom for the sums
 * of the demosaic in 16 bits.
 */
constexpr int kCodeWhite = 2728;

/** Number of colours of a Bayer cell: R, Gr, Gb, B. */
constexpr int kBayerColours = 4;

/** Look-up tables from raw samples to companded ones, one per Bayer colour. */
class Companding {
  public:
    /**
     * Combines black level, white balance, exposure and square root in one table per colour. Levels
     * are rescaled from `calibration.levelBits` to `bits`. White-balance gains are divided by the
     * smallest, so that saturated samples stay white.
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
