#pragma once

#include <string>

#include "inputs/InputOptions.h"

namespace quen::reprocess {

/**
 * Whether a file found in a folder is one to take: by its extension, which is one of JPEG's, of
 * YUV's where a size is given, or one usual for headerless samples where a Bayer order or a layout
 * of YUV is given; else when it begins as a JPEG does or LibRaw knows it.
 *
 * @param mosaicsOnly whether pictures that are developed already are to be left
 */
bool isPictureToTake(std::string const& path, InputOptions const& options, bool mosaicsOnly);

}  // namespace quen::reprocess
