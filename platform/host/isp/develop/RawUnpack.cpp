#include "host/isp/develop/RawUnpack.h"

#include <algorithm>
#include <cstring>

namespace quen::host::isp {

namespace {

constexpr int kPixelsPerGroup = 4;
constexpr int kBytesPerGroup = 5;

/** One sample of a group of four in five bytes. */
inline unsigned packedSample(uint8_t const* group, int index) {
    return static_cast<unsigned>(group[index] << 2 | ((group[4] >> (2 * index)) & 3));
}

/** The little-endian word of an index. */
inline unsigned wordAt(uint8_t const* source, int index) {
    uint16_t word;
    memcpy(&word, source + sizeof(word) * static_cast<size_t>(index), sizeof(word));
    return word;
}

/** Unpacks a row of packed 10-bit samples. */
void unpackPacked10(uint8_t const* source, int width, int16_t const* evenTable,
                    int16_t const* oddTable, int16_t* even, int16_t* odd) {
    for (int group = 0; group < width / kPixelsPerGroup; ++group) {
        even[0] = evenTable[packedSample(source, 0)];
        odd[0] = oddTable[packedSample(source, 1)];
        even[1] = evenTable[packedSample(source, 2)];
        odd[1] = oddTable[packedSample(source, 3)];
        even += 2;
        odd += 2;
        source += kBytesPerGroup;
    }
}

/** Unpacks a row of 16-bit words, clipped to `maximum`. */
void unpackWords16(uint8_t const* source, int width, unsigned maximum, int16_t const* evenTable,
                   int16_t const* oddTable, int16_t* even, int16_t* odd) {
    for (int pair = 0; pair < width / 2; ++pair) {
        even[pair] = evenTable[std::min(wordAt(source, 2 * pair), maximum)];
        odd[pair] = oddTable[std::min(wordAt(source, 2 * pair + 1), maximum)];
    }
    if (width % 2 != 0) {
        even[width / 2] = evenTable[std::min(wordAt(source, width - 1), maximum)];
    }
}

}  // namespace

void unpackBayerRow(RawPicture const& picture, int row, int16_t const* evenTable,
                    int16_t const* oddTable, int16_t* even, int16_t* odd) {
    uint8_t const* const source = picture.data + static_cast<size_t>(row) * picture.stride;
    if (picture.layout == RawLayout::Packed10) {
        unpackPacked10(source, picture.width, evenTable, oddTable, even, odd);
        return;
    }
    unpackWords16(source, picture.width, (1u << picture.bits) - 1, evenTable, oddTable, even, odd);
}

void unpackRgbRow(RawPicture const& picture, int row, int16_t const* const tables[3],
                  RgbHalfRows const& even, RgbHalfRows const& odd) {
    uint8_t const* const source = picture.data + static_cast<size_t>(row) * picture.stride;
    for (int channel = 0; channel < 3; ++channel) {
        int16_t const* const table = tables[channel];
        int16_t* const evenRow = even[channel];
        int16_t* const oddRow = odd[channel];
        for (int pair = 0; pair < picture.width / 2; ++pair) {
            evenRow[pair] = table[wordAt(source, 6 * pair + channel)];
            oddRow[pair] = table[wordAt(source, 6 * pair + 3 + channel)];
        }
        if (picture.width % 2 != 0) {
            evenRow[picture.width / 2] = table[wordAt(source, 3 * (picture.width - 1) + channel)];
        }
    }
}

}  // namespace quen::host::isp
