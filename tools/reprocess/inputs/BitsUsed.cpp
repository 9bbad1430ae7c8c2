#include "inputs/BitsUsed.h"

#include <algorithm>
#include <atomic>

#include "host/base/Parallel.h"

namespace quen::reprocess {
namespace {

constexpr uint32_t kRowsPerPiece = 64;

/** All bits set in any sample of a row. */
unsigned bitsUsedInRow(uint16_t const* samples, uint32_t count) {
    uint16_t used = 0;
    for (uint32_t i = 0; i < count; ++i) {
        used = static_cast<uint16_t>(used | samples[i]);
    }
    return used;
}

}  // namespace

unsigned bitsUsed(BayerImage const& image, uint32_t width, uint32_t height) {
    std::atomic<unsigned> used{0};
    auto const read = [&](int piece) {
        uint32_t const first = static_cast<uint32_t>(piece) * kRowsPerPiece;
        for (uint32_t y = first; y < std::min(first + kRowsPerPiece, height); ++y) {
            used |= bitsUsedInRow(image.samples + y * image.stride, width);
        }
    };
    int const pieces = static_cast<int>((height + kRowsPerPiece - 1) / kRowsPerPiece);
    host::inParallel(pieces, [&] { return read; });
    return used;
}

}  // namespace quen::reprocess
