#pragma once

#include <cstdio>
#include <cstdlib>

namespace quenfuzz {

/** Ends the process, which is what the fuzzer takes for a crash, when something does not hold. */
inline void require(bool holds, char const* what) {
    if (!holds) {
        fprintf(stderr, "does not hold: %s\n", what);
        abort();
    }
}

}  // namespace quenfuzz
