#define LOG_TAG "quenOfflineDevice"

#include "quenOfflineDevice/request/DeviceBuffer.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstring>

#include <system/graphics.h>

#include "quenCommon/Log.h"
#include "quenGralloc/AllocatorHelper.h"
#include "quenGralloc/ImportedBuffer.h"
#include "quenOfflineDevice/request/RowCopy.h"

using android::hardware::hidl_handle;
using android::hardware::graphics::common::V1_0::PixelFormat;

namespace quen {
namespace {

constexpr size_t kSemiPlanarStep = 2;

/**
 * Fills a plane from packed rows: as many bytes of each row as both sides have, the rest 0. A
 * plane without an address is skipped.
 *
 * @return the source behind what was read
 */
uint8_t const* fillPlane(uint8_t const* source, size_t sourceBytes, Rows const& plane,
                         size_t planeBytes) {
    size_t const copied = std::min(sourceBytes, planeBytes);
    if (plane.first != nullptr) {
        copyRows(source, copied, plane, planeBytes - copied);
    }
    return source + copied * plane.count;
}

/** Sets one chroma sample; a plane without an address is skipped. */
void setSample(uint8_t* plane, size_t offset, uint8_t value) {
    if (plane != nullptr) {
        plane[offset] = value;
    }
}

/**
 * Copies pairs (V, U) into two planes with a sample every other byte, V to Cr and U to Cb, pair by
 * pair; row ends are set to 0. The planes may overlap: the last write wins.
 */
void copyPairs(uint8_t const* source, size_t sourcePairs, uint8_t* cr, uint8_t* cb,
               size_t targetPairs, size_t stride, size_t rows) {
    size_t const copied = std::min(sourcePairs, targetPairs);
    for (size_t row = 0; row < rows; ++row) {
        for (size_t i = 0; i < targetPairs; ++i) {
            size_t const offset = row * stride + kSemiPlanarStep * i;
            setSample(cr, offset, i < copied ? source[2 * i] : 0);
            setSample(cb, offset, i < copied ? source[2 * i + 1] : 0);
        }
        source += 2 * copied;
    }
}

/**
 * Fills a locked YCbCr buffer from a packed picture: luma, then chroma. Each row is written up to
 * the luma stride, chroma rows up to half of it.
 *
 * A semi-planar buffer takes the source's chroma as pairs (V, U), the NV21 order; a planar one
 * takes the whole U plane before the whole V plane. The two orders differ, and both are relied on.
 */
void copyPicture(uint8_t const* source, size_t width, size_t height, android_ycbcr const& target) {
    auto* const luma = static_cast<uint8_t*>(target.y);
    auto* const cb = static_cast<uint8_t*>(target.cb);
    auto* const cr = static_cast<uint8_t*>(target.cr);
    source = fillPlane(source, width, {luma, target.ystride, height}, target.ystride);
    size_t const sourceChroma = width / 2;
    size_t const targetChroma = target.ystride / 2;
    size_t const rows = height / 2;
    if (target.chroma_step != kSemiPlanarStep) {
        source = fillPlane(source, sourceChroma, {cb, target.cstride, rows}, targetChroma);
        fillPlane(source, sourceChroma, {cr, target.cstride, rows}, targetChroma);
    } else if (cr != nullptr && cb == cr + 1) {
        fillPlane(source, 2 * sourceChroma, {cr, target.cstride, rows}, 2 * targetChroma);
    } else if (cb != nullptr && cr == cb + 1) {
        size_t const pairs = std::min(sourceChroma, targetChroma);
        copySwappedRows(source, pairs, {cb, target.cstride, rows}, 2 * (targetChroma - pairs));
    } else {
        copyPairs(source, sourceChroma, cr, cb, targetChroma, target.cstride, rows);
    }
}

}  // namespace

void allocGraphicBuffer(hidl_handle& handle, void const* source, int width, int height, int format,
                        uint64_t usage, uint32_t& stride) {
    AllocatorHelper::getInstance().allocateGraphicBuffer(
            static_cast<uint32_t>(width), static_cast<uint32_t>(height), usage,
            static_cast<PixelFormat>(format), &handle, &stride);
    if (source == nullptr) {
        return;
    }
    ImportedBuffer buffer(handle.getNativeHandle());
    if (format != HAL_PIXEL_FORMAT_YCRCB_420_SP) {
        return;
    }
    android_ycbcr const planes = buffer.lockYCbCr(kCpuWriteOften, width, height);
    QLOGD("Load YUV stride(%d, %d)", static_cast<int>(planes.ystride),
          static_cast<int>(planes.cstride));
    if (planes.y != nullptr && source != MAP_FAILED) {
        copyPicture(static_cast<uint8_t const*>(source), static_cast<size_t>(std::max(width, 0)),
                    static_cast<size_t>(std::max(height, 0)), planes);
    }
}

}  // namespace quen
