#pragma once

#include <cstddef>
#include <cstdint>

namespace quen::reprocess {

/** Bytes in memory that somebody else owns. */
struct Bytes {
    uint8_t const* data;
    size_t size;
};

}  // namespace quen::reprocess
