#pragma once

#include "host/isp/buffers/Picture.h"

namespace quen::host::isp {

/**
 * Writes a picture into another one: scaled when the sizes differ, with the chroma in the order and
 * arrangement of the target. Both are planar, NV12 or NV21; their memory does not overlap.
 */
void resample(YuvPicture const& source, YuvPicture const& target);

}  // namespace quen::host::isp
