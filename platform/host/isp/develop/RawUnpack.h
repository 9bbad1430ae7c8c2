#pragma once

#include <array>
#include <cstdint>

#include "host/isp/buffers/Picture.h"

namespace quen::host::isp {

/** Red, green and blue samples of every other column of a row. */
using RgbHalfRows = std::array<int16_t*, 3>;

/**
 * Unpacks one row of a Bayer image and looks every sample up in the table of its colour.
 *
 * The width of a packed image is a multiple of four.
 *
 * @param row 0 <= row < picture.height
 * @param evenTable, oddTable tables of the samples in even and odd columns, 2^bits entries each
 * @param even, odd receive the looked-up samples of even and odd columns: (width + 1) / 2 and
 *        width / 2 of them
 */
void unpackBayerRow(RawPicture const& picture, int row, int16_t const* evenTable,
                    int16_t const* oddTable, int16_t* even, int16_t* odd);

/** As above for an RGB image: one table per channel, three half rows per column parity. */
void unpackRgbRow(RawPicture const& picture, int row, int16_t const* const tables[3],
                  RgbHalfRows const& even, RgbHalfRows const& odd);

}  // namespace quen::host::isp
