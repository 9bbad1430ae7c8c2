#pragma once

#include <string>

#include "inputs/Capture.h"
#include "inputs/InputOptions.h"

namespace quen::reprocess {

/**
 * Reads a camera's raw file: DNG and what else LibRaw knows.
 *
 * @throws Failure, without the file's name
 */
Capture readCameraRaw(std::string const& path, InputOptions const& options);

}  // namespace quen::reprocess
