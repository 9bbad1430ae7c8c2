#pragma once

#include <cstddef>
#include <cstdint>

namespace quen {

/** Rows to be written: their first byte and how far apart they are. */
struct Rows {
    uint8_t* first;
    size_t stride;  ///< bytes
    size_t count;
};

/**
 * Copies packed rows of bytes, row after row, and sets what follows in each row to 0.
 *
 * @param rowBytes of a packed row
 * @param endBytes set to 0 after each row
 */
void copyRows(uint8_t const* source, size_t rowBytes, Rows const& target, size_t endBytes);

/** As copyRows, for rows of pairs: swaps the two bytes of each pair. */
void copySwappedRows(uint8_t const* source, size_t rowPairs, Rows const& target, size_t endBytes);

}  // namespace quen
