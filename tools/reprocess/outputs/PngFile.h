#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "outputs/PixelRows.h"

namespace quen::reprocess {

/** Writes a PNG in sRGB; see RgbFileModule::png. */
std::vector<uint8_t> writePng(PixelRows& rows, std::vector<uint8_t> const& exif,
                              std::string& problem);

}  // namespace quen::reprocess
