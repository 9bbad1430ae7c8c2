#pragma once

#include <string>

#include "inputs/Capture.h"
#include "inputs/InputOptions.h"

namespace quen::reprocess {

/**
 * Reads one picture, whatever its format; "-" is standard input. Options that it makes no use of
 * are noted.
 *
 * @throws Failure, without the file's name
 */
Capture readCapture(std::string const& path, InputOptions const& options);

}  // namespace quen::reprocess
