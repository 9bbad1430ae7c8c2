#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "host/isp/develop/Companding.h"
#include "host/isp/develop/RawUnpack.h"

namespace quen::host::isp {

/** Converts camera colours to display colours: matrix, tone curve, 8 bits. */
class Rendering {
  public:
    explicit Rendering(SensorCalibration const& calibration);

    /**
     * Renders one row.
     *
     * @param even, odd companded samples of every other column; overwritten when there is a matrix
     * @param count column pairs
     * @param pixels receives 2 * count pixels: R << 16 | G << 8 | B
     */
    void renderRow(RgbHalfRows const& even, RgbHalfRows const& odd, int count,
                   uint32_t* pixels) const;

  private:
    bool mHasMatrix;
    std::array<float, 9> mMatrix;
    std::vector<uint8_t> mTone;  ///< by companded sample, or by linear light when there is a matrix
};

}  // namespace quen::host::isp
