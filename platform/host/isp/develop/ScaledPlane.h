#pragma once

#include <cstddef>
#include <cstdint>

namespace quen::host::isp {

/** A plane of 8-bit samples in memory, of one or several interleaved channels. Owns nothing. */
struct Plane {
    uint8_t* data = nullptr;
    size_t stride = 0;  ///< bytes from row to row
    int width = 0;      ///< pixels
    int height = 0;
    int channels = 1;
};

/**
 * Scales a plane, on all processors: along an axis that shrinks each sample is the mean of the area
 * that it covers, along one that grows it lies on a cubic. The centre stays in place; beyond its
 * border the source goes on as at the border. The planes have the same channels and do not overlap.
 */
void scalePlane(Plane const& source, Plane const& target);

}  // namespace quen::host::isp
