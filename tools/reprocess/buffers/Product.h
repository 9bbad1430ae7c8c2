#pragma once

#include <memory>
#include <string>

#include "support/Bytes.h"

namespace quen::reprocess {

/** What is made of an input. */
enum class OutputKind { Jpeg, Nv21, I420 };

/** A finished picture, ready for its file. */
struct Product {
    Bytes bytes{};
    std::shared_ptr<void const> memory;  ///< keeps the bytes alive
    std::string note;                    ///< a remark on it, for the user; usually empty
};

}  // namespace quen::reprocess
