#pragma once

#include <dlfcn.h>

#include <cstdint>

/**
 * The watch library: preloaded, it counts what a program asks of the C library while it is watched.
 * Without it a program runs on the C library itself, and nothing is counted.
 */
namespace quenbench {

struct WatchCounts {
    uint64_t allocations;  ///< malloc and the like, operator new among them
    uint64_t bytes;        ///< asked for by them
    uint64_t largeCopies;  ///< memcpy and memmove of at least kLargeCopyBytes
    uint64_t formats;      ///< snprintf and vsnprintf
    uint64_t entryCopies;  ///< of NSCam::IMetadata::IEntry, whose items are shared or small
};

inline constexpr uint64_t kLargeCopyBytes = 1 << 20;

/** Calls into the watch library if it is there. */
inline bool setWatching(bool watching) {
    using Set = void (*)(bool);
    static auto const set = reinterpret_cast<Set>(dlsym(RTLD_DEFAULT, "quenSetWatching"));
    if (set != nullptr) {
        set(watching);
    }
    return set != nullptr;
}

/** Hands the counts out and starts anew. False when the watch library is not there. */
inline bool takeCounts(WatchCounts& counts) {
    using Take = void (*)(WatchCounts*);
    static auto const take = reinterpret_cast<Take>(dlsym(RTLD_DEFAULT, "quenTakeCounts"));
    if (take != nullptr) {
        take(&counts);
    }
    return take != nullptr;
}

}  // namespace quenbench
