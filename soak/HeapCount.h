#pragma once

#include <cstdint>

namespace quensoak {

/**
 * How many blocks the process holds on the heap, whoever took them; -1 in a build with a sanitizer,
 * which has an eye on that itself. Any thread; exact while no other thread allocates.
 */
int64_t heapBlocks();

}  // namespace quensoak
