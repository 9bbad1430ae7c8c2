#pragma once

#include <string>

#include "inputs/Capture.h"

namespace quen::reprocess {

/**
 * Decodes a JPEG to NV21, its orientation as EXIF states it.
 *
 * @throws Failure, without the file's name
 */
Capture readJpeg(std::string const& path);

}  // namespace quen::reprocess
