#pragma once

#include "host/isp/buffers/Picture.h"
#include "host/isp/buffers/SensorCalibration.h"

namespace quen::host::isp {

/**
 * Develops a raw image: black level, white balance, demosaic, colour matrix, tone curve,
 * noise and sharpening, full-range BT.601 4:2:0. Bands of rows are developed in parallel, with
 * memory for a few bands only.
 *
 * @param source width and height of 8 or more; a packed image's width is a multiple of four
 * @param crop within the source, not empty; its corner may lie on any pixel
 * @param target of the crop's size; planar, NV12 or NV21
 */
void develop(RawPicture const& source, PixelRect const& crop, SensorCalibration const& calibration,
             YuvPicture const& target);

}  // namespace quen::host::isp
