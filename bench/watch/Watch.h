#pragma once

#include <dlfcn.h>

#include <cstdint>

/**
 * The watch library: preloaded, it counts calls of the C library inside watched sections. A program
 * runs without it as well, and counts nothing.
 */
namespace quenbench {

struct WatchCounts {
    uint64_t allocations;  ///< malloc and the like, operator new among them
    uint64_t bytes;        ///< requested by them
    uint64_t largeCopies;  ///< memcpy and memmove of at least kLargeCopyBytes
    uint64_t formats;      ///< snprintf and vsnprintf
    uint64_t entryCopies;  ///< of NSCam::IMetadata::IEntry, whose items are shared or small
};

inline constexpr uint64_t kLargeCopyBytes = 1 << 20;

/** Calls the watch library where it is loaded. */
inline bool setWatching(bool watching) {
    using Set = void (*)(bool);
    static auto const set = reinterpret_cast<Set>(dlsym(RTLD_DEFAULT, "quenSetWatching"));
    if (set != nullptr) {
        set(watching);
    }
    return set != nullptr;
}

/** Reads and resets the counts. @return false when the watch library is not loaded */
inline bool takeCounts(WatchCounts& counts) {
    using Take = void (*)(WatchCounts*);
    static auto const take = reinterpret_cast<Take>(dlsym(RTLD_DEFAULT, "quenTakeCounts"));
    if (take != nullptr) {
        take(&counts);
    }
    return take != nullptr;
}

}  // namespace quenbench
