#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include <gralloctypes/Gralloc4.h>

#include "support/Buffers.h"

namespace quentest {

/**
 * Plane layouts, encoded, from a text of planes: "<components> <offset> <increment> <stride>",
 * offset and stride in bytes, the increment in bits. A component is a letter (Y, U for Cb, V for
 * Cr, A, or X for a vendor's own) and its offset in bits; lower case stands for 10 bits instead
 * of 8.
 */
inline hidl_vec<uint8_t> layoutsOf(char const* text) {
    using namespace aidl::android::hardware::graphics::common;
    std::vector<PlaneLayout> layouts;
    std::istringstream in(text);
    for (std::string components; in >> components;) {
        PlaneLayout& layout = layouts.emplace_back();
        in >> layout.offsetInBytes >> layout.sampleIncrementInBits >> layout.strideInBytes;
        std::istringstream each(components);
        for (char letter; each >> letter;) {
            PlaneLayoutComponent& component = layout.components.emplace_back();
            each >> component.offsetInBits;
            component.sizeInBits = letter == 'y' ? 10 : 8;
            namespace type = android::gralloc4;
            component.type = letter == 'U'   ? type::PlaneLayoutComponentType_CB
                             : letter == 'V' ? type::PlaneLayoutComponentType_CR
                             : letter == 'A' ? type::PlaneLayoutComponentType_A
                                             : type::PlaneLayoutComponentType_Y;
            if (letter == 'X') {
                component.type.name = "vendor.maker.Depth";
            }
        }
    }
    hidl_vec<uint8_t> encoded;
    EXPECT_EQ(android::gralloc4::encodePlaneLayouts(layouts, &encoded), 0);
    return encoded;
}

/** Makes the mapper hand a fence out with every unlock, whose descriptor stays the fence's. */
inline void fenceUnlocks(HookedMapper& mapper, Fence const& fence) {
    mapper.onUnlock = [&](void* buffer, auto const& cb) {
        (void)mapper.Real::unlock(buffer, [](auto, auto const&) {}).isOk();
        BorrowedHandle const handle({fence.fd});
        cb(Error::NONE, hidl_handle(handle.get()));
        return android::hardware::Void();
    };
}

}  // namespace quentest
