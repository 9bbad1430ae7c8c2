#include "quenOfflineDevice/request/RowCopy.h"

#include <byteswap.h>

#include <cstring>

namespace quen {
namespace {

void copyInOrder(uint8_t const* source, uint8_t* target, size_t bytes) {
    memcpy(target, source, bytes);
}

void copySwapped(uint8_t const* source, uint8_t* target, size_t bytes) {
    for (size_t i = 0; i + 1 < bytes; i += sizeof(uint16_t)) {
        uint16_t pair = 0;
        memcpy(&pair, source + i, sizeof(pair));
        pair = bswap_16(pair);
        memcpy(target + i, &pair, sizeof(pair));
    }
}

/** Copies rows with `copy`, in order: a row's end may lie in the next row. */
template <typename Copy>
void copyAll(Copy const& copy, uint8_t const* source, size_t rowBytes, Rows const& target,
             size_t endBytes) {
    if (rowBytes == target.stride && endBytes == 0) {
        copy(source, target.first, rowBytes * target.count);
        return;
    }
    for (size_t row = 0; row < target.count; ++row) {
        uint8_t* const begin = target.first + row * target.stride;
        copy(source + row * rowBytes, begin, rowBytes);
        memset(begin + rowBytes, 0, endBytes);
    }
}

}  // namespace

void copyRows(uint8_t const* source, size_t rowBytes, Rows const& target, size_t endBytes) {
    copyAll(copyInOrder, source, rowBytes, target, endBytes);
}

void copySwappedRows(uint8_t const* source, size_t rowPairs, Rows const& target, size_t endBytes) {
    copyAll(copySwapped, source, 2 * rowPairs, target, endBytes);
}

}  // namespace quen
