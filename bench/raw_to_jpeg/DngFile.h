#pragma once

#include <string>

#include "inputs/Capture.h"

namespace quenbench {

/**
 * Writes an RGGB mosaic as the smallest DNG there is: one uncompressed strip of words of 16 bits,
 * with the levels, the white balance and the colour matrix of the capture's calibration.
 *
 * @param capture a mosaic of unpacked samples
 * @return whether the file was written
 */
bool writeDng(quen::reprocess::Capture const& capture, std::string const& path);

}  // namespace quenbench
