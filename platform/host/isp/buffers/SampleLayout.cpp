#include "host/isp/buffers/SampleLayout.h"

#include <algorithm>

#include <aidl/android/hardware/graphics/common/PlaneLayoutComponent.h>
#include <aidl/android/hardware/graphics/common/PlaneLayoutComponentType.h>
#include <gralloctypes/Gralloc4.h>

using aidl::android::hardware::graphics::common::PlaneLayout;
using aidl::android::hardware::graphics::common::PlaneLayoutComponent;
using aidl::android::hardware::graphics::common::PlaneLayoutComponentType;

namespace quen::host::isp {

namespace {

constexpr int64_t kBitsPerByte = 8;

/** Where the samples of one component lie. */
struct Samples {
    bool found = false;
    size_t offset = 0;
    size_t stride = 0;
    size_t step = 0;
};

/** Whether `rows` rows of `rowBytes` each lie within a plane. */
bool holds(PlaneLayout const& plane, int64_t rowBytes, int64_t rows) {
    return plane.offsetInBytes >= 0 && plane.strideInBytes >= rowBytes &&
           plane.totalSizeInBytes >= (rows - 1) * plane.strideInBytes + rowBytes;
}

/** Finds a component of 8 bits with at least that many samples. */
Samples findSamples(std::vector<PlaneLayout> const& planes, PlaneLayoutComponentType type,
                    int width, int height) {
    Samples samples;
    for (PlaneLayout const& plane : planes) {
        for (PlaneLayoutComponent const& component : plane.components) {
            int64_t const step = plane.sampleIncrementInBits / kBitsPerByte;
            if (!android::gralloc4::isStandardPlaneLayoutComponentType(component.type) ||
                component.type.value != static_cast<int64_t>(type) ||
                component.sizeInBits != kBitsPerByte ||
                component.offsetInBits % kBitsPerByte != 0 || plane.widthInSamples < width ||
                plane.heightInSamples < height || !holds(plane, width * step, height)) {
                continue;
            }
            samples.found = true;
            samples.offset = static_cast<size_t>(plane.offsetInBytes +
                                                 component.offsetInBits / kBitsPerByte);
            samples.stride = static_cast<size_t>(plane.strideInBytes);
            samples.step = static_cast<size_t>(step);
        }
    }
    return samples;
}

/** Bytes of a plane of one byte per sample. */
size_t blockBytes(PlaneLayout const& plane) {
    return static_cast<size_t>(std::max<int64_t>(plane.widthInSamples, 0) *
                               std::max<int64_t>(plane.heightInSamples, 0));
}

/** Whether a plane is a plain block of bytes. */
bool isBlock(PlaneLayout const& plane) {
    return plane.heightInSamples == 1 && plane.sampleIncrementInBits == kBitsPerByte;
}

}  // namespace

std::optional<YuvLayout> findYuv(GraphicBuffer const& buffer, int width, int height) {
    int const chromaWidth = chromaSize(width);
    int const chromaHeight = chromaSize(height);
    auto const& planes = buffer.planes();
    Samples const y = findSamples(planes, PlaneLayoutComponentType::Y, width, height);
    Samples const cb = findSamples(planes, PlaneLayoutComponentType::CB, chromaWidth, chromaHeight);
    Samples const cr = findSamples(planes, PlaneLayoutComponentType::CR, chromaWidth, chromaHeight);
    bool const isPlanar = cb.step == 1 && cr.step == 1;
    bool const isInterleaved = cb.step == 2 && cr.step == 2 &&
                               std::max(cb.offset, cr.offset) == std::min(cb.offset, cr.offset) + 1;
    if (!y.found || !cb.found || !cr.found || y.step != 1 || cb.stride != cr.stride ||
        (!isPlanar && !isInterleaved)) {
        return std::nullopt;
    }
    return YuvLayout{y.offset, cb.offset, cr.offset, y.stride, cb.stride, cb.step};
}

std::optional<RawRows> findRaw(GraphicBuffer const& buffer, size_t rowBytes, int height,
                               size_t blockStride) {
    if (buffer.planes().empty()) {
        return std::nullopt;
    }
    PlaneLayout const& plane = buffer.planes().front();
    size_t const offset = static_cast<size_t>(plane.offsetInBytes);
    if (isBlock(plane)) {
        size_t const stride = std::max(rowBytes, blockStride);
        if (blockBytes(plane) < stride * static_cast<size_t>(height - 1) + rowBytes) {
            return std::nullopt;
        }
        return RawRows{offset, stride};
    }
    if (!holds(plane, static_cast<int64_t>(rowBytes), height) || plane.heightInSamples < height) {
        return std::nullopt;
    }
    return RawRows{offset, static_cast<size_t>(plane.strideInBytes)};
}

std::optional<size_t> findBlock(GraphicBuffer const& buffer) {
    if (buffer.planes().size() != 1 || !isBlock(buffer.planes().front())) {
        return std::nullopt;
    }
    return blockBytes(buffer.planes().front());
}

YuvPicture pictureAt(YuvLayout const& layout, uint8_t* address, int width, int height) {
    YuvPicture picture;
    picture.width = width;
    picture.height = height;
    picture.y = address + layout.y;
    picture.cb = address + layout.cb;
    picture.cr = address + layout.cr;
    picture.lumaStride = layout.lumaStride;
    picture.chromaStride = layout.chromaStride;
    picture.chromaStep = layout.chromaStep;
    return picture;
}

}  // namespace quen::host::isp
