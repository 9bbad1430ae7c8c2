#include "client/BayerRows.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace quen::reprocess {
namespace {

// Four samples are five bytes: the upper eight bits of each, then the lower two of all.
void packRow(uint16_t const* in, uint32_t width, uint8_t* out) {
    for (uint32_t x = 0; x < width; x += 4, in += 4, out += 5) {
        out[0] = static_cast<uint8_t>(in[0] >> 2);
        out[1] = static_cast<uint8_t>(in[1] >> 2);
        out[2] = static_cast<uint8_t>(in[2] >> 2);
        out[3] = static_cast<uint8_t>(in[3] >> 2);
        out[4] = static_cast<uint8_t>((in[0] & 3) | (in[1] & 3) << 2 | (in[2] & 3) << 4 |
                                      (in[3] & 3) << 6);
    }
}

void unpackRow(uint8_t const* in, uint32_t width, uint16_t* out) {
    for (uint32_t x = 0; x < width; ++x) {
        uint8_t const* const group = in + x / 4 * 5;
        unsigned const low = (group[4] >> (x % 4 * 2)) & 3u;
        out[x] = static_cast<uint16_t>(group[x % 4] << 2 | low);
    }
}

void scaleRow(uint16_t const* in, uint32_t width, int fromBits, int toBits, uint16_t* out) {
    if (fromBits <= toBits) {
        int const up = toBits - fromBits;
        for (uint32_t x = 0; x < width; ++x) {
            out[x] = static_cast<uint16_t>(in[x] << up);
        }
        return;
    }
    int const down = fromBits - toBits;
    unsigned const half = 1u << (down - 1);
    unsigned const largest = (1u << toBits) - 1;
    for (uint32_t x = 0; x < width; ++x) {
        out[x] = static_cast<uint16_t>(std::min((in[x] + half) >> down, largest));
    }
}

}  // namespace

void writeBayerRows(BayerImage const& image, int bits, uint32_t width, uint32_t height,
                    RawTarget target, uint8_t* out, size_t outStride) {
    bool const samePacked = image.packed10 && !target.raw16;
    bool const scale = bits != target.bits;
    std::vector<uint16_t> unpacked(image.packed10 && !samePacked ? width : 0);
    std::vector<uint16_t> scaled(scale && !target.raw16 ? width : 0);
    for (uint32_t y = 0; y < height; ++y, out += outStride) {
        if (samePacked) {
            std::memcpy(out, image.packed10 + y * image.stride, width / 4 * 5);
            continue;
        }
        uint16_t const* row = image.samples + y * image.stride;
        if (image.packed10) {
            unpackRow(image.packed10 + y * image.stride, width, unpacked.data());
            row = unpacked.data();
        }
        if (target.raw16) {
            scaleRow(row, width, bits, target.bits, reinterpret_cast<uint16_t*>(out));
            continue;
        }
        if (scale) {
            scaleRow(row, width, bits, target.bits, scaled.data());
            row = scaled.data();
        }
        packRow(row, width, out);
    }
}

}  // namespace quen::reprocess
