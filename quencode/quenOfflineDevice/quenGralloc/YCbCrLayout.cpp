#include "quenGralloc/YCbCrLayout.h"

#include <cstdint>

#include <aidl/android/hardware/graphics/common/PlaneLayoutComponent.h>
#include <aidl/android/hardware/graphics/common/PlaneLayoutComponentType.h>
#include <gralloctypes/Gralloc4.h>

using aidl::android::hardware::graphics::common::PlaneLayout;
using aidl::android::hardware::graphics::common::PlaneLayoutComponent;
using aidl::android::hardware::graphics::common::PlaneLayoutComponentType;

namespace quen {
namespace {

constexpr int64_t kBitsPerByte = 8;

/** Fills an `android_ycbcr` component by component; false at the first that does not fit. */
class Description {
  public:
    Description(uint8_t* base, android_ycbcr& ycbcr) : mBase(base), mYCbCr(ycbcr) {}

    bool add(PlaneLayout const& plane, PlaneLayoutComponent const& component) {
        if (component.offsetInBits % kBitsPerByte != 0) {
            return false;
        }
        uint8_t* const address = addressOf(plane.offsetInBytes, component.offsetInBits);
        switch (component.type.value) {
            case static_cast<int64_t>(PlaneLayoutComponentType::Y):
                return addLuma(plane, component, address);
            case static_cast<int64_t>(PlaneLayoutComponentType::CB):
                return addChroma(plane, address, mYCbCr.cb, mHasCb);
            case static_cast<int64_t>(PlaneLayoutComponentType::CR):
                return addChroma(plane, address, mYCbCr.cr, mHasCr);
            default:
                return true;
        }
    }

  private:
    // Added as an integer: the mapper's offsets may point anywhere.
    uint8_t* addressOf(int64_t offsetInBytes, int64_t offsetInBits) const {
        uint64_t const offset = static_cast<uint64_t>(offsetInBytes) +
                                static_cast<uint64_t>(offsetInBits / kBitsPerByte);
        return mBase == nullptr ? nullptr
                                : reinterpret_cast<uint8_t*>(reinterpret_cast<uintptr_t>(mBase) +
                                                             static_cast<uintptr_t>(offset));
    }

    bool addLuma(PlaneLayout const& plane, PlaneLayoutComponent const& component,
                 uint8_t* address) {
        if (mHasY || component.sizeInBits != kBitsPerByte ||
            plane.sampleIncrementInBits != kBitsPerByte) {
            return false;
        }
        mHasY = true;
        mYCbCr.y = address;
        mYCbCr.ystride = static_cast<size_t>(plane.strideInBytes);
        return true;
    }

    // Both chroma planes have one stride and one step: the first one seen sets them.
    bool addChroma(PlaneLayout const& plane, uint8_t* address, void*& sample, bool& has) {
        if (plane.sampleIncrementInBits != kBitsPerByte &&
            plane.sampleIncrementInBits != 2 * kBitsPerByte) {
            return false;
        }
        size_t const stride = static_cast<size_t>(plane.strideInBytes);
        size_t const step = static_cast<size_t>(plane.sampleIncrementInBits / kBitsPerByte);
        if (mYCbCr.cstride == 0 && mYCbCr.chroma_step == 0) {
            mYCbCr.cstride = stride;
            mYCbCr.chroma_step = step;
        } else if (mYCbCr.cstride != stride || mYCbCr.chroma_step != step) {
            return false;
        }
        if (has) {
            return false;
        }
        has = true;
        sample = address;
        return true;
    }

    uint8_t* const mBase;
    android_ycbcr& mYCbCr;
    // Kept apart from the addresses, which are all null when the lock failed.
    bool mHasY = false;
    bool mHasCb = false;
    bool mHasCr = false;
};

}  // namespace

bool describeYCbCr(std::vector<PlaneLayout> const& layouts, void* base, android_ycbcr& ycbcr) {
    ycbcr.y = nullptr;
    ycbcr.cb = nullptr;
    ycbcr.cr = nullptr;
    ycbcr.ystride = 0;
    ycbcr.cstride = 0;
    ycbcr.chroma_step = 0;
    Description description(static_cast<uint8_t*>(base), ycbcr);
    for (PlaneLayout const& plane : layouts) {
        for (PlaneLayoutComponent const& component : plane.components) {
            if (android::gralloc4::isStandardPlaneLayoutComponentType(component.type) &&
                !description.add(plane, component)) {
                return false;
            }
        }
    }
    return true;
}

}  // namespace quen
