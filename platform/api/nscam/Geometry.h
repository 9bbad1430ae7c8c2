#pragma once

#include <cstdint>

namespace NSCam {

struct MPoint {
    int32_t x = 0;
    int32_t y = 0;
};

struct MSize {
    int32_t w = 0;
    int32_t h = 0;
};

/** A rectangle: top left corner and size, in pixels. */
struct MRect {
    MPoint p;
    MSize s;

    MRect() = default;
    MRect(MPoint const& point, MSize const& size) : p(point), s(size) {}
};

struct MRational {
    int32_t numerator = 0;
    int32_t denominator = 0;
};

static_assert(sizeof(MRect) == 16, "a rectangle travels as four int32");

}  // namespace NSCam
