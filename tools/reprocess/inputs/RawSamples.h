#pragma once

#include <cstdint>
#include <memory>
#include <string>

class LibRaw;

namespace quen::reprocess {

/** The samples of a raw file, the dark margins of the sensor included. */
struct RawSamples {
    uint16_t const* first = nullptr;
    size_t stride = 0;                   ///< samples from row to row
    std::shared_ptr<void const> memory;  ///< keeps them alive
};

/**
 * Reads the samples of a file that LibRaw has opened: uncompressed 16-bit words from the mapped
 * file, any other format through LibRaw.
 *
 * Phones write DNGs of uncompressed 16-bit words. LibRaw reads those sample by sample, which takes
 * as long as developing them.
 *
 * @param raw opened; unpacked by this call unless the samples are plain words
 * @return null `first` when the file holds no mosaic
 * @throws Failure when the file is damaged or cannot be read
 */
RawSamples readRawSamples(std::shared_ptr<LibRaw> const& raw, std::string const& path);

}  // namespace quen::reprocess
