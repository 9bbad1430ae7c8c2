#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace quen::reprocess {

/** Bytes to be written one after the other. */
struct Bytes {
    uint8_t const* data;
    size_t size;
};

/**
 * Writes a file whole or not at all: under another name in the same folder first, then renamed over
 * what was there. A link is followed; a device or a pipe is written to as it is.
 *
 * @throws Failure, without the file's name; what was there is then as before
 */
void writeOutputFile(std::string const& path, Bytes bytes);

}  // namespace quen::reprocess
