#include "inputs/PackedSamples.h"

namespace quen::reprocess {
namespace {

// By SampleLayout.
constexpr PackedGroup kGroups[] = {{1, 2, 0}, {1, 2, 0}, {4, 5, 10}, {2, 3, 12}, {4, 7, 14}};

/**
 * The sample of an index in a packed group: its upper eight bits in a byte of its own; the lower
 * ones of all follow, from the lowest bit of the first byte on.
 */
uint16_t packedSample(PackedGroup const& group, uint8_t const* bytes, uint32_t index) {
    uint32_t const lowBits = static_cast<uint32_t>(group.bits) - 8;
    uint32_t low = 0;
    for (uint32_t i = group.bytes; i-- > group.pixels;) {
        low = low << 8 | bytes[i];
    }
    uint32_t const mask = (1u << lowBits) - 1;
    return static_cast<uint16_t>(bytes[index] << lowBits | (low >> (index * lowBits) & mask));
}

}  // namespace

PackedGroup packedGroup(SampleLayout layout) {
    return kGroups[static_cast<size_t>(layout)];
}

void unpackSamples(SampleLayout layout, uint8_t const* row, uint32_t width, uint16_t* out) {
    PackedGroup const group = packedGroup(layout);
    if (group.bits != 0) {
        for (uint32_t x = 0; x < width; ++x) {
            out[x] = packedSample(group, row + size_t{x / group.pixels} * group.bytes,
                                  x % group.pixels);
        }
        return;
    }
    uint32_t const low = layout == SampleLayout::BigEndianWords ? 1 : 0;
    for (uint32_t x = 0; x < width; ++x) {
        out[x] = static_cast<uint16_t>(row[2 * x + 1 - low] << 8 | row[2 * x + low]);
    }
}

}  // namespace quen::reprocess
