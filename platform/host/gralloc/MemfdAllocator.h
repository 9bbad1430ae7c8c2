#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <string>

#include <android/hardware/graphics/allocator/4.0/IAllocator.h>
#include <android/hardware/graphics/common/1.2/types.h>

#include "host/gralloc/BufferHandle.h"
#include "host/gralloc/BufferLayout.h"

namespace quen::host {

/**
 * Allocates each graphic buffer as a memfd of its own, zeroed and sealed against shrinking. Never
 * reuses a buffer. BufferLayout.h has the rules of rows and planes.
 *
 * Any thread; takes no lock.
 */
class MemfdAllocator : public android::hardware::graphics::allocator::V4_0::IAllocator {
  public:
    using PixelFormat = android::hardware::graphics::common::V1_2::PixelFormat;

    /**
     * Sets the layout of a format's future buffers, for the formats whose layout the allocator
     * chooses: IMPLEMENTATION_DEFINED and YCBCR_420_888 (NV12 unless set), and YCRCB_420_SP (NV21
     * unless set), which some phones' allocators lay out otherwise.
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
                                       {PixelFormat::YCBCR_420_888, {Layout::Nv21}}}};
};

}  // namespace quen::host
