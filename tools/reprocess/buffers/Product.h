#pragma once

#include <memory>

#include "support/Bytes.h"

namespace quen::reprocess {

/** What is made of an input. */
enum class OutputKind { Jpeg, Nv21, I420 };

/** A finished picture, ready for its file. */
struct Product {
    Bytes bytes{};
    std::shared_ptr<void const> memory;  ///< keeps the bytes alive
};

}  // namespace quen::reprocess
