#pragma once

#include "host/isp/buffers/Picture.h"

namespace quen::host::isp {

/**
 * Copies a picture, scaled to the size of the target, its chroma in the arrangement of the target.
 * Both are planar, NV12 or NV21; their memory does not overlap.
 */
void resample(YuvPicture const& source, YuvPicture const& target);

}  // namespace quen::host::isp
