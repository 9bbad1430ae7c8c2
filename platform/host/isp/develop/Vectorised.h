#pragma once

/**
 * Before a function whose loops over samples are worth the processor's widest vectors: it is
 * compiled for several instruction sets, and the one that the processor has is chosen when the
 * library is loaded. What it calls must be inline to be compiled with it. 64-bit Arm needs none of
 * this, its vectors are always there; the thread sanitizer cannot run what chooses.
 */
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && \
        !defined(__SANITIZE_THREAD__) && !defined(__SANITIZE_ADDRESS__)
#define QUEN_VECTORISED \
    __attribute__((target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")))
#else
#define QUEN_VECTORISED
#endif
