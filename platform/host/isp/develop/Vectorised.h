#pragma once

/**
 * Compiles a function for several x86-64 instruction sets; the best that the processor has is
 * chosen when the library is loaded. For functions that loop over samples; what they call must be
 * inline. Not for 64-bit Arm, where vectors are always available, nor with sanitizers, whose run
 * time is not yet set up when the choice is made.
 */
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && \
        !defined(__SANITIZE_THREAD__) && !defined(__SANITIZE_ADDRESS__)
#define QUEN_VECTORISED \
    __attribute__((target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")))
#else
#define QUEN_VECTORISED
#endif
