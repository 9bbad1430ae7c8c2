#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "outputs/PixelRows.h"

namespace quen::reprocess {

/**
 * Writes PNG and TIFF, with libpng and libtiff, which lie behind a library of its own that is
 * loaded at the first use: libtiff brings ten others, and most runs need none of them. Thread-safe.
 */
class RgbFileModule {
  public:
    virtual ~RgbFileModule() = default;

    /**
     * @param exif what is known of the capture, a block of EXIF; may be empty
     * @param problem set when there is no file
     * @return the file; empty when it cannot be made
     */
    virtual std::vector<uint8_t> png(PixelRows& rows, std::vector<uint8_t> const& exif,
                                     std::string& problem) const = 0;

    /** As png. */
    virtual std::vector<uint8_t> tiff(PixelRows& rows, std::vector<uint8_t> const& exif,
                                      std::string& problem) const = 0;
};

/** The module, loaded by the first call; null when it cannot be. Thread-safe. */
RgbFileModule const* rgbFileModule();

}  // namespace quen::reprocess
