#pragma once

#include <cstdint>
#include <vector>

#include "host/isp/buffers/Picture.h"

namespace quen::host::isp {

/** A JPEG of a picture of up to 160 pixels on a side, for its EXIF; empty when it has none. */
std::vector<uint8_t> makeThumbnail(YuvPicture const& picture);

}  // namespace quen::host::isp
