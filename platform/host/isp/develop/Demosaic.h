#pragma once

#include <cstdint>

#include "host/isp/develop/RawUnpack.h"

namespace quen::host::isp {

/**
 * One row of a Bayer image, its even and odd columns in an array each. Column 0 has red samples
 * whatever the Bayer order: rows with red hold R, G, R, G ..., rows with blue hold G, B, G, B ...
 */
struct BayerRow {
    int16_t const* even = nullptr;
    int16_t const* odd = nullptr;
};

/**
 * Interpolates the two missing colours of every sample of a row: linear, corrected by the curvature
 * of the sampled colour. Results may overshoot the range of the samples.
 *
 * The fast methods of the imaging libraries interpolate each colour on its own, which leaves
 * coloured fringes along edges. This one is as fast and leaves hardly any.
 *
 * @param rows the middle row, two above it, two below it; one cell is read beyond both ends
 * @param hasRed whether the middle row has red samples
 * @param first, last cells (column pairs) to interpolate, `last` excluded
 * @param even, odd receive the colours, from index 0
 */
void demosaicRow(BayerRow const rows[5], bool hasRed, int first, int last, RgbHalfRows const& even,
                 RgbHalfRows const& odd);

}  // namespace quen::host::isp
