#include "buffers/YuvPlanes.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include <libyuv.h>

#include <gralloctypes/Gralloc4.h>

#include "support/Failure.h"

namespace quen::reprocess {
namespace {

namespace gralloc4 = android::gralloc4;

using aidl::android::hardware::graphics::common::ExtendableType;

bool isSame(ExtendableType const& a, ExtendableType const& b) {
    return a.value == b.value && a.name == b.name;
}

}  // namespace

YuvPlanes yuvPlanes(ClientBuffer const& buffer, uint8_t const* data) {
    YuvPlanes planes{};
    int crStride = 0;
    int crStep = 0;
    for (auto const& plane : buffer.planes()) {
        int const stride = static_cast<int>(plane.strideInBytes);
        int const step = static_cast<int>(plane.sampleIncrementInBits / 8);
        for (auto const& component : plane.components) {
            uint8_t const* const first = data + plane.offsetInBytes + component.offsetInBits / 8;
            if (isSame(component.type, gralloc4::PlaneLayoutComponentType_Y)) {
                planes.y = first;
                planes.yStride = stride;
            } else if (isSame(component.type, gralloc4::PlaneLayoutComponentType_CB)) {
                planes.cb = first;
                planes.chromaStride = stride;
                planes.chromaStep = step;
            } else if (isSame(component.type, gralloc4::PlaneLayoutComponentType_CR)) {
                planes.cr = first;
                crStride = stride;
                crStep = step;
            }
        }
    }
    bool const complete = planes.y && planes.cb && planes.cr && planes.chromaStride == crStride &&
                          planes.chromaStep == crStep &&
                          (planes.chromaStep == 1 || planes.chromaStep == 2);
    if (!complete) {
        throw Failure("came back in a layout that is no 4:2:0 of 8 bits");
    }
    return planes;
}

bool isPackedNv21(YuvPlanes const& planes, uint32_t width, uint32_t height, uint8_t const* data) {
    return planes.y == data && planes.yStride == int(width) && planes.chromaStep == 2 &&
           planes.chromaStride == int(width) && planes.cr == data + size_t{width} * height &&
           planes.cb == planes.cr + 1;
}

bool canPackInPlace(YuvPlanes const& planes, uint32_t width, uint32_t height, uint8_t const* data) {
    return planes.chromaStep == 2 && planes.y == data && planes.yStride >= int(width) &&
           planes.chromaStride >= int(width) &&
           std::min(planes.cb, planes.cr) >= data + size_t{width} * height;
}

void packNv21(YuvPlanes const& planes, uint32_t width, uint32_t height, uint8_t* out) {
    int const columns = static_cast<int>(width);
    for (uint32_t row = 0; row < height; ++row, out += width) {
        std::memmove(out, planes.y + row * static_cast<size_t>(planes.yStride), width);
    }
    std::vector<uint8_t> pairs(width);
    for (uint32_t row = 0; row < height / 2; ++row, out += width) {
        size_t const offset = row * static_cast<size_t>(planes.chromaStride);
        uint8_t const* const cb = planes.cb + offset;
        uint8_t const* const cr = planes.cr + offset;
        if (planes.chromaStep == 1) {
            libyuv::MergeUVPlane(cr, 0, cb, 0, pairs.data(), 0, columns / 2, 1);
        } else if (cr < cb) {
            std::memcpy(pairs.data(), cr, width);
        } else {
            libyuv::SwapUVPlane(cb, 0, pairs.data(), 0, columns / 2, 1);
        }
        std::memcpy(out, pairs.data(), width);
    }
}

void packI420(YuvPlanes const& planes, uint32_t width, uint32_t height, uint8_t* out) {
    packUprightI420(planes, width, height, 0, false, out);
}

void packUprightI420(YuvPlanes const& planes, uint32_t width, uint32_t height, int degrees,
                     bool mirrored, uint8_t* out) {
    bool const isQuarter = degrees % 180 != 0;
    int const columns = static_cast<int>(isQuarter ? height : width);
    int const rows = static_cast<int>(isQuarter ? width : height);
    uint8_t* const u = out + size_t{width} * height;
    uint8_t* const v = u + size_t{width} * height / 4;
    libyuv::Android420ToI420Rotate(planes.y, planes.yStride, planes.cb, planes.chromaStride,
                                   planes.cr, planes.chromaStride, planes.chromaStep, out, columns,
                                   u, columns / 2, v, columns / 2, static_cast<int>(width),
                                   static_cast<int>(height),
                                   static_cast<libyuv::RotationMode>(degrees));
    if (!mirrored) {
        return;
    }
    struct {
        uint8_t* samples;
        int columns, rows;
    } const all[] = {{out, columns, rows}, {u, columns / 2, rows / 2}, {v, columns / 2, rows / 2}};
    for (auto const& plane : all) {
        for (int row = 0; row < plane.rows; ++row) {
            uint8_t* const first = plane.samples + static_cast<ptrdiff_t>(row) * plane.columns;
            std::reverse(first, first + plane.columns);
        }
    }
}

}  // namespace quen::reprocess
