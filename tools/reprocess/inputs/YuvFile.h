#pragma once

#include <string>

#include "inputs/Capture.h"
#include "inputs/InputOptions.h"

namespace quen::reprocess {

/**
 * Reads a headerless 4:2:0 picture of `options.size` in the layout of `options.yuv`; without one,
 * planar I420 when the name ends in .yuv, else NV21.
 *
 * @throws Failure, without the file's name
 */
Capture readYuv(std::string const& path, InputOptions const& options);

}  // namespace quen::reprocess
