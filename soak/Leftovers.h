#pragma once

#include <cstdint>

#include "Graphics.h"

namespace quensoak {

/** What the process holds at a moment: the same at the end as at the start, or something leaks. */
struct Holdings {
    int64_t descriptors;
    int64_t mappings;  ///< of shared memory, which is what the library maps
    int64_t imports;   ///< graphic buffers
    int64_t heapBlocks;

    static Holdings now(Graphics const& graphics);
    Holdings operator-(Holdings const& before) const;
};

}  // namespace quensoak
