#pragma once

#include <cstdint>

#include "host/isp/develop/RawUnpack.h"

namespace quen::host::isp {

/**
 * One row of a Bayer image, its samples in two arrays by column. Columns are counted from a column
 * of red samples, so that every Bayer order looks like the one whose cell begins with red: rows
 * with red hold R, G, R, G ..., rows with blue hold G, B, G, B ...
 */
struct BayerRow {
    int16_t const* even = nullptr;
    int16_t const* odd = nullptr;
};

/**
 * Interpolates the two missing colours of every sample of a row, linearly, each corrected by the
 * curvature of the colour that is there. Results may leave the samples' range by overshoot.
 *
 * Of the libraries' methods the fast ones interpolate each colour by itself, which leaves coloured
 * fringes along edges; this one has none to speak of and is as fast.
 *
 * @param rows the row in the middle, two above it, two below it; one cell is read beyond both ends
 * @param hasRed whether the row in the middle is one with red
 * @param first, last cells (column pairs) to do, `last` excluded
 * @param even, odd receive the colours, from index 0
 */
void demosaicRow(BayerRow const rows[5], bool hasRed, int first, int last, RgbHalfRows const& even,
                 RgbHalfRows const& odd);

}  // namespace quen::host::isp
