#pragma once

#include <cstddef>

/** Geometry of the Android HAL pixel formats; 0 for unknown ones. */
namespace NSCam::Utils::Format {

size_t queryPlaneCount(int format);
size_t queryPlaneWidthInPixels(int format, size_t planeIndex, size_t imageWidthInPixels);
size_t queryPlaneBitsPerPixel(int format, size_t planeIndex);
size_t queryImageBitsPerPixel(int format);

}  // namespace NSCam::Utils::Format
