#pragma once

#include <cstdint>

#include "host/gralloc/BufferHandle.h"

namespace quen::host {

/**
 * Settings of a buffer that clients change. Stored in the buffer's memory behind the picture, so
 * that every process that has the buffer shares them; the bytes reserved for clients follow. Memory
 * without reserved bytes ends with the picture until the first setting is written.
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

/** Offset of the reserved bytes in the memory. */
uint64_t reservedOffset(BufferFacts const& facts);

/** Size of the memory in bytes, settings and reserved bytes included. */
uint64_t wholeSize(BufferFacts const& facts);

/** Reads the settings from a buffer's memory; all zero when none was set. */
BufferSettings readSettings(int memory, BufferFacts const& facts);

/** @return false when the memory cannot be enlarged */
bool writeSettings(int memory, BufferFacts const& facts, BufferSettings const& settings);

}  // namespace quen::host
