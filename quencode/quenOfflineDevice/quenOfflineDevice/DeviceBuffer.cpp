#define LOG_TAG "quenOfflineDevice"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include <system/graphics.h>

#include "quenCommon/Log.h"
#include "quenGralloc/AllocatorHelper.h"
#include "quenGralloc/MapperHelper.h"
#include "quenOfflineDevice/CpuUsage.h"
#include "quenOfflineDevice/RowCopy.h"
#include "quenOfflineDevice/quenOfflineDevice.h"

using android::hardware::hidl_handle;
using android::hardware::graphics::common::V1_0::PixelFormat;

namespace {

constexpr size_t kSemiPlanarStep = 2;

/** Rows of a plane: as many bytes of each as are written, and what lies between their beginnings.
 */
struct Plane {
    uint8_t* address;  // may be null: nothing is written
    size_t rowBytes;
    size_t stride;
    size_t rows;
};

/** Sets to 0 what a row has beyond the source's bytes. */
void clearRowEnds(Plane const& plane, size_t sourceBytes) {
    for (size_t row = 0; row < plane.rows && sourceBytes < plane.rowBytes; ++row) {
        memset(plane.address + row * plane.stride + sourceBytes, 0, plane.rowBytes - sourceBytes);
    }
}

/** Fills a plane from packed rows. Returns the source behind what was read. */
uint8_t const* fillPlane(uint8_t const* source, size_t sourceRowBytes, Plane const& plane) {
    size_t const copied = std::min(sourceRowBytes, plane.rowBytes);
    if (plane.address != nullptr) {
        clearRowEnds(plane, copied);
        copyRows(source, copied, plane.address, plane.stride, plane.rows);
    }
    return source + copied * plane.rows;
}

/** Fills a plane of pairs from packed pairs in the other order. */
void fillSwappedPlane(uint8_t const* source, size_t sourcePairs, Plane const& plane) {
    size_t const pairs = std::min(sourcePairs, plane.rowBytes / 2);
    clearRowEnds(plane, 2 * pairs);
    copySwappedRows(source, pairs, plane.address, plane.stride, plane.rows);
}

/** Copies every second source byte into samples a step apart; row ends are set to 0. */
void copySamples(uint8_t const* source, size_t sourceSamples, uint8_t* plane, size_t planeSamples,
                 size_t stride, size_t rows) {
    if (plane == nullptr) {
        return;
    }
    size_t const copied = std::min(sourceSamples, planeSamples);
    for (size_t row = 0; row < rows; ++row) {
        uint8_t* const target = plane + row * stride;
        for (size_t i = 0; i < planeSamples; ++i) {
            target[kSemiPlanarStep * i] = i < copied ? source[2 * i] : 0;
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
    source = fillPlane(source, width, {luma, target.ystride, target.ystride, height});
    size_t const sourceChroma = width / 2;
    size_t const targetChroma = target.ystride / 2;
    size_t const rows = height / 2;
    if (target.chroma_step != kSemiPlanarStep) {
        source = fillPlane(source, sourceChroma, {cb, targetChroma, target.cstride, rows});
        fillPlane(source, sourceChroma, {cr, targetChroma, target.cstride, rows});
    } else if (cr != nullptr && cb == cr + 1) {
        fillPlane(source, 2 * sourceChroma, {cr, 2 * targetChroma, target.cstride, rows});
    } else if (cb != nullptr && cr == cb + 1) {
        fillSwappedPlane(source, sourceChroma, {cb, 2 * targetChroma, target.cstride, rows});
    } else {
        copySamples(source, sourceChroma, cr, targetChroma, target.cstride, rows);
        copySamples(source + 1, sourceChroma, cb, targetChroma, target.cstride, rows);
    }
}

}  // namespace

/**
 * Allocates a buffer for the ISP device and, for NV21, fills it from a packed picture.
 *
 * A source of any other format is not copied: the buffer is imported and freed again, and stays as
 * the allocator gave it. No outcome is checked; what cannot be accessed is left out.
 *
 * @param handle receives the new, raw buffer; it stays alive for the caller
 * @param source null: allocate only; MAP_FAILED: all steps but the copy
 * @param stride receives the allocator's stride, in pixels
 */
void quenOfflineDevice::allocGraphicBuffer(hidl_handle& handle, void const* source, int width,
                                           int height, int format, unsigned long usage,
                                           unsigned int& stride, int /*unused*/) {
    AllocatorHelper::getInstance().allocateGraphicBuffer(
            static_cast<uint32_t>(width), static_cast<uint32_t>(height), usage,
            static_cast<PixelFormat>(format), &handle, &stride);
    if (source == nullptr) {
        return;
    }
    native_handle const* imported = handle.getNativeHandle();
    int releaseFence = -1;
    MapperHelper mapper = MapperHelper::getInstance();
    mapper.importBuffer(imported);
    if (format == HAL_PIXEL_FORMAT_YCRCB_420_SP) {
        android_ycbcr ycbcr = {};
        mapper.lockYCbCr_4_0(imported, kCpuWriteOften, {0, 0, width, height}, -1, ycbcr);
        QLOGD("Load YUV stride(%d, %d)", static_cast<int>(ycbcr.ystride),
              static_cast<int>(ycbcr.cstride));
        if (ycbcr.y != nullptr && source != MAP_FAILED) {
            copyPicture(static_cast<uint8_t const*>(source),
                        static_cast<size_t>(std::max(width, 0)),
                        static_cast<size_t>(std::max(height, 0)), ycbcr);
        }
    }
    mapper.unlock(imported, releaseFence);
    if (releaseFence >= 0) {
        close(releaseFence);
    }
    mapper.freeBuffer(imported);
}
