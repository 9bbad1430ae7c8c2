#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <hidl/HidlSupport.h>

#include "host/isp/buffers/Picture.h"

namespace quen::host::isp {

/** The settings that the ISP reads from a settings buffer; absent ones stay empty. */
struct RequestSettings {
    std::optional<PixelRect> crop;       ///< 0x000d0000, in pixels of the input
    std::optional<int> rawBits;          ///< 0x800b001b
    std::optional<int> tuningMode;       ///< 0x800b000e; only echoed in the result
    std::optional<int> jpegQuality;      ///< 0x00070004
    std::optional<int> jpegOrientation;  ///< 0x00070003, degrees clockwise
};

/**
 * Reads a settings buffer. An empty buffer sets nothing, nor does an entry without items.
 *
 * @param problem says why when the answer is false; may be null
 * @return false when the buffer is malformed, or a value is not of its tag's type, count or range:
 * a crop that is not four numbers or is empty, a depth outside 8..16, a quality outside 1..100, an
 * orientation that is not 0, 90, 180 or 270
 */
bool parseSettings(android::hardware::hidl_vec<uint8_t> const& bytes, RequestSettings& settings,
                   std::string* problem = nullptr);

}  // namespace quen::host::isp
