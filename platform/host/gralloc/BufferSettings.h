#pragma once

#include <cstdint>

#include "host/gralloc/BufferHandle.h"

namespace quen::host {

/**
 * What clients set of a buffer. Lies in the buffer's memory behind the picture, for every process
 * that has the buffer; the bytes reserved for clients come after it. Memory without any reserved is
 * no larger than the picture until something is set.
 */
struct BufferSettings {
    int32_t dataspace;
    int32_t blendMode;
    uint32_t hasSmpte2086;
    uint32_t hasCta861_3;
    float smpte2086[10];  ///< red, green, blue, white as x and y; most and least luminance
    float cta861_3[2];    ///< of the content, of a frame's average
};

static_assert(sizeof(BufferSettings) == 64, "wrong size");

/** Where the reserved bytes begin in the memory. */
uint64_t reservedOffset(BufferFacts const& facts);

/** Bytes of the memory, settings and reserved bytes included. */
uint64_t wholeSize(BufferFacts const& facts);

/** The settings in a buffer's memory; all zero where nothing was set. */
BufferSettings readSettings(int memory, BufferFacts const& facts);

/** @return false when there is no memory for them */
bool writeSettings(int memory, BufferFacts const& facts, BufferSettings const& settings);

}  // namespace quen::host
