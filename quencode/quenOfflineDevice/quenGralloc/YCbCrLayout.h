#pragma once

#include <vector>

#include <aidl/android/hardware/graphics/common/PlaneLayout.h>
#include <system/graphics.h>

namespace quen {

/**
 * Converts gralloc4 plane layouts to an `android_ycbcr`: 8-bit luma samples in a plane of their
 * own, chroma samples one or two bytes apart, the same for Cb and Cr.
 *
 * @param base address of the locked buffer; null when the lock failed, every address is null then
 * @param ycbcr cleared first; keeps what was found before a failure
 * @return false for a layout that `android_ycbcr` cannot express
 */
bool describeYCbCr(
        std::vector<aidl::android::hardware::graphics::common::PlaneLayout> const& layouts,
        void* base, android_ycbcr& ycbcr);

}  // namespace quen
