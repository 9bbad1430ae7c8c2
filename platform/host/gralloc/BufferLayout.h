#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <aidl/android/hardware/graphics/common/PlaneLayout.h>
#include <android/hardware/graphics/common/1.2/types.h>

namespace quen::host {

/** The ways in which the samples of a buffer can lie. Values travel in buffer handles. */
enum class Layout : int32_t {
    Blob,
    Raw10,
    Raw12,
    Raw16,
    Rgba8888,
    Nv12,  ///< luma, then interleaved (Cb, Cr)
    Nv21,  ///< luma, then interleaved (Cr, Cb)
    I420,  ///< luma, Cb plane, Cr plane
    Yv12,  ///< luma, Cr plane, Cb plane
};

/** How much memory a picture takes. */
struct BufferExtent {
    uint32_t rowBytes;     ///< of the first plane, padding included
    uint32_t rowPixels;    ///< whole pixels that such a row has room for
    uint64_t sizeInBytes;  ///< of all planes
};

/** Bytes that the rows of a picture's first plane are a multiple of. Those of a BLOB are as asked.
 */
constexpr uint32_t kRowAlignment = 64;

/** The largest buffer there is: client records tell sizes as int32. */
constexpr uint64_t kLargestBuffer = INT32_MAX;

/**
 * The layout that buffers of a format have unless something else was chosen; none if not known.
 *
 * YCBCR_420_888 has V before U, as the library reads a picture to encode: what the ISP develops can
 * be handed on where its rows have no padding.
 */
std::optional<Layout> usualLayout(android::hardware::graphics::common::V1_2::PixelFormat format);

/** Whether the layout is one of 4:2:0 pictures. */
bool isYuv420(Layout layout);

/**
 * Extent of a picture; none when it has no pixels or is larger than kLargestBuffer.
 *
 * Rows are a multiple of kRowAlignment bytes, packed samples (RAW10, RAW12) in whole groups. Odd
 * pictures have chroma for their last row and column. Interleaved chroma rows are as long as luma
 * rows, those of a chroma plane half as long, so that they can be filled to the end like luma.
 */
std::optional<BufferExtent> extentOf(Layout layout, uint32_t width, uint32_t height);

/**
 * The planes of a picture that extentOf accepts. Packed samples have an increment of 0 and a size
 * of -1 bits: several share their bytes.
 */
std::vector<aidl::android::hardware::graphics::common::PlaneLayout> planesOf(Layout layout,
                                                                             uint32_t width,
                                                                             uint32_t height);

}  // namespace quen::host
