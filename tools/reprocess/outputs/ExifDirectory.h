#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace quen::reprocess {

/** What the first directory of a block of EXIF holds. */
struct ExifDirectory {
    std::map<uint16_t, std::string> texts;  ///< by tag
    uint32_t exifOffset = 0;                ///< of the EXIF directory in the block; 0 for none
    uint32_t gpsOffset = 0;                 ///< of the GPS directory
};

/** Reads a block of EXIF, a little-endian TIFF structure; empty when it is none or damaged. */
ExifDirectory readExifDirectory(std::vector<uint8_t> const& exif);

}  // namespace quen::reprocess
