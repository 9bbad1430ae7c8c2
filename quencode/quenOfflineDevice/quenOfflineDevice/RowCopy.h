#pragma once

#include <cstddef>
#include <cstdint>

/**
 * Copies of packed rows into rows a stride apart. What lies behind a row's bytes is left alone.
 *
 * Planes larger than what the caches hold are written past them: somebody else reads them next.
 */

/** Copies rows as they are. */
void copyRows(uint8_t const* source, size_t rowBytes, uint8_t* target, size_t stride, size_t rows);

/** Copies rows of pairs, the two bytes of each in the other order. */
void copySwappedRows(uint8_t const* source, size_t rowPairs, uint8_t* target, size_t stride,
                     size_t rows);
