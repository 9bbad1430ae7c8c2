#pragma once

#include <cstddef>
#include <cstdint>

namespace quen::reprocess {

/** The rows of an RGB picture, for a writer of files that takes one after the other. */
class PixelRows {
  public:
    virtual ~PixelRows() = default;

    virtual uint32_t width() const = 0;
    virtual uint32_t height() const = 0;

    /** Of a sample: 8 or 16. */
    virtual int bits() const = 0;

    /** Bytes of a row. */
    size_t rowBytes() const { return size_t{3} * width() * static_cast<size_t>(bits() / 8); }

    /** Writes a row: red, green, blue; samples of 16 bits in the processor's byte order. */
    virtual void read(uint32_t row, uint8_t* out) = 0;
};

}  // namespace quen::reprocess
