#pragma once

#include <cstdint>
#include <ctime>
#include <vector>

namespace quen::host::isp {

/** The EXIF fields of a picture that differ from one to the next. */
struct ExifFields {
    int width = 0;
    int height = 0;
    int orientationDegrees = 0;  ///< clockwise turn that shows the picture upright: 0, 90, 180, 270
    time_t time = 0;             ///< written as local time
};

/** Builds the content of a JPEG's APP1 segment, from "Exif" on; empty when memory runs out. */
std::vector<uint8_t> buildExif(ExifFields const& fields);

}  // namespace quen::host::isp
