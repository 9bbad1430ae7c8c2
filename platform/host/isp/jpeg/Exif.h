#pragma once

#include <cstdint>
#include <vector>

#include "host/isp/exif/ExifModule.h"

namespace quen::host::isp {

/**
 * Builds the content of a JPEG's APP1 segment, from "Exif" on.
 *
 * It says what the ISP knows, the picture's size, turn and colours: nothing of the capture, which
 * no setting tells.
 *
 * @param facts the software is filled in
 * @return empty when it cannot be built
 */
std::vector<uint8_t> buildExif(PictureFacts facts);

}  // namespace quen::host::isp
