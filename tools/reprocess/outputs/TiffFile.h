#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "outputs/PixelRows.h"

namespace quen::reprocess {

/** Writes a TIFF of one picture, compressed without loss; see RgbFileModule::tiff. */
std::vector<uint8_t> writeTiff(PixelRows& rows, std::vector<uint8_t> const& exif,
                               std::string& problem);

}  // namespace quen::reprocess
