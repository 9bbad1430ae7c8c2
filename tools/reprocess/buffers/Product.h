#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "support/Bytes.h"

namespace quen::reprocess {

/** What is made of an input. */
enum class OutputKind { Jpeg, Nv21, I420, Png, Tiff, Ppm };

/** Whether files of a kind hold RGB, which is made of the planes of YUV. */
constexpr bool isRgb(OutputKind kind) {
    return kind == OutputKind::Png || kind == OutputKind::Tiff || kind == OutputKind::Ppm;
}

/** An upright I420 picture that is yet to become a file. */
struct PlanesToWrite {
    uint32_t width;
    uint32_t height;
    std::vector<uint8_t> exif;  ///< what is known of the capture
};

/** A finished picture, ready for its file. */
struct Product {
    Bytes bytes{};
    std::shared_ptr<void const> memory;   ///< keeps the bytes alive
    std::string note;                     ///< a remark on it, for the user; usually empty
    std::optional<PlanesToWrite> planes;  ///< of an RGB output: what the bytes are
};

}  // namespace quen::reprocess
