#pragma once

#include <cstdint>
#include <memory>
#include <string>

class LibRaw;

namespace quen::reprocess {

/** The samples of a raw file's sensor, its dark margins included. */
struct RawSamples {
    uint16_t const* first = nullptr;
    size_t stride = 0;                   ///< samples from row to row
    std::shared_ptr<void const> memory;  ///< keeps them
};

/**
 * Reads the samples of a file that LibRaw has opened: in the file itself where they lie there as
 * they are, else as LibRaw unpacks them.
 *
 * A phone's DNG holds its samples in words of 16 bits, uncompressed. LibRaw takes such a file in
 * sample by sample, which lasts as long as developing it.
 *
 * @param raw opened; unpacked when its samples are no plain words
 * @return null `first` when the file holds no mosaic
 * @throws Failure when the file is damaged or cannot be read
 */
RawSamples readRawSamples(std::shared_ptr<LibRaw> const& raw, std::string const& path);

}  // namespace quen::reprocess
