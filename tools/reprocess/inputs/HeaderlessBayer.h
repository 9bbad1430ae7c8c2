#pragma once

#include <string>

#include "inputs/Capture.h"
#include "inputs/InputOptions.h"

namespace quen::reprocess {

/**
 * Reads a headerless mosaic of `options.size` and `options.bayer`, in the layout that the options
 * state or that the size of the file tells.
 *
 * @throws Failure, without the file's name
 */
Capture readHeaderlessBayer(std::string const& path, InputOptions const& options);

}  // namespace quen::reprocess
