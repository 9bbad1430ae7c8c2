#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "host/isp/Companding.h"
#include "host/isp/RawUnpack.h"

namespace quen::host::isp {

/** Camera colours to display colours: matrix, tone curve, 8 bits. */
class Rendering {
  public:
    explicit Rendering(CaptureFacts const& facts);

    /**
     * Renders one row.
     *
     * @param even, odd companded samples of every other column; overwritten when there is a matrix
     * @param count column pairs
     * @param rgb receives 2 * count pixels of three bytes: R, G, B
     */
    void renderRow(RgbHalfRows const& even, RgbHalfRows const& odd, int count, uint8_t* rgb) const;

  private:
    bool mHasMatrix;
    std::array<float, 9> mMatrix;
    std::vector<uint8_t> mTone;  ///< by companded sample, or by linear light when there is a matrix
};

}  // namespace quen::host::isp
