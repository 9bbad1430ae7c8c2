#pragma once

#include <array>
#include <atomic>
#include <cstdint>

#include <android/hardware/graphics/allocator/4.0/IAllocator.h>
#include <android/hardware/graphics/common/1.2/types.h>

#include "host/gralloc/BufferLayout.h"

namespace quen::host {

/**
 * Allocates graphic buffers as shared memory: a memfd a buffer, sealed against shrinking,
 * reading as zero. No buffer is ever used again. The rules of rows and planes are
 * BufferLayout.h's.
 *
 * Any thread; takes no lock.
 */
class MemfdAllocator : public android::hardware::graphics::allocator::V4_0::IAllocator {
  public:
    using PixelFormat = android::hardware::graphics::common::V1_2::PixelFormat;

    /**
     * Chooses the layout of a format's buffers from now on, for the formats that leave it to the
     * allocator: IMPLEMENTATION_DEFINED and YCBCR_420_888, NV12 unless chosen. YCRCB_420_SP, NV21
     * unless chosen, can be given another one too, as on phones whose allocator knows better.
     *
     * @return false, nothing changed, for any other format and for a layout that is not 4:2:0
     */
    bool setLayout(PixelFormat format, Layout layout);

    android::hardware::Return<void> allocate(
            android::hardware::hidl_vec<uint8_t> const& bufferDescriptor, uint32_t count,
            allocate_cb cb) override;

  private:
    struct Choice {
        PixelFormat const format;
        std::atomic<Layout> layout;
    };

    Choice* findChoice(PixelFormat format);

    std::array<Choice, 3> mChoices = {{{PixelFormat::YCRCB_420_SP, {Layout::Nv21}},
                                       {PixelFormat::IMPLEMENTATION_DEFINED, {Layout::Nv12}},
                                       {PixelFormat::YCBCR_420_888, {Layout::Nv12}}}};
};

}  // namespace quen::host
