#include "client/YuvPlanes.h"

#include <libyuv.h>

#include <gralloctypes/Gralloc4.h>

#include "support/Failure.h"

namespace quen::reprocess {
namespace {

namespace gralloc4 = android::gralloc4;

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
            if (component.type == gralloc4::PlaneLayoutComponentType_Y) {
                planes.y = first;
                planes.yStride = stride;
            } else if (component.type == gralloc4::PlaneLayoutComponentType_CB) {
                planes.cb = first;
                planes.chromaStride = stride;
                planes.chromaStep = step;
            } else if (component.type == gralloc4::PlaneLayoutComponentType_CR) {
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

void packNv21(YuvPlanes const& planes, uint32_t width, uint32_t height, uint8_t* out) {
    int const columns = static_cast<int>(width);
    int const rows = static_cast<int>(height);
    uint8_t* const chroma = out + size_t{width} * height;
    libyuv::CopyPlane(planes.y, planes.yStride, out, columns, columns, rows);
    if (planes.chromaStep == 1) {
        libyuv::MergeUVPlane(planes.cr, planes.chromaStride, planes.cb, planes.chromaStride, chroma,
                             columns, columns / 2, rows / 2);
    } else if (planes.cr < planes.cb) {
        libyuv::CopyPlane(planes.cr, planes.chromaStride, chroma, columns, columns, rows / 2);
    } else {
        libyuv::SwapUVPlane(planes.cb, planes.chromaStride, chroma, columns, columns / 2, rows / 2);
    }
}

void packI420(YuvPlanes const& planes, uint32_t width, uint32_t height, uint8_t* out) {
    int const columns = static_cast<int>(width);
    int const rows = static_cast<int>(height);
    uint8_t* const u = out + size_t{width} * height;
    uint8_t* const v = u + size_t{width} * height / 4;
    libyuv::Android420ToI420(planes.y, planes.yStride, planes.cb, planes.chromaStride, planes.cr,
                             planes.chromaStride, planes.chromaStep, out, columns, u, columns / 2,
                             v, columns / 2, columns, rows);
}

}  // namespace quen::reprocess
