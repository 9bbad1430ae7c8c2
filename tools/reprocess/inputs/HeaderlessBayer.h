#pragma once

#include <string>

#include "inputs/Capture.h"
#include "inputs/InputOptions.h"

namespace quen::reprocess {

/**
 * Reads a headerless mosaic of `options.size` and `options.bayer`: 16-bit words or packed RAW10,
 * by the size of the file.
 *
 * @throws Failure, without the file's name
 */
Capture readHeaderlessBayer(std::string const& path, InputOptions const& options);

}  // namespace quen::reprocess
