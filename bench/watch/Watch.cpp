#include "watch/Watch.h"

#include <execinfo.h>
#include <unistd.h>

#include <atomic>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>

using quenbench::kLargeCopyBytes;
using quenbench::WatchCounts;

extern "C" {
// The implementations that the wrappers call.
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
}

namespace {

constexpr int kFrames = 16;

std::atomic<bool> gWatching{false};
std::atomic<uint64_t> gAllocations{0};
std::atomic<uint64_t> gBytes{0};
std::atomic<uint64_t> gLargeCopies{0};
std::atomic<uint64_t> gFormats{0};
std::atomic<uint64_t> gEntryCopies{0};

// The file that lists every watched call, from QUEN_BENCH_LIST; without it calls are only counted.
FILE* gList = nullptr;
__attribute__((tls_model("initial-exec"))) thread_local bool tListing = false;

/** The definition of a function that this library overrides. */
template <typename Function>
Function next(char const* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

/** Lists a call with its callers, innermost first, as "file+offset". */
void list(char const* what, size_t size) {
    if (gList == nullptr || tListing) {
        return;
    }
    tListing = true;
    void* frames[kFrames];
    int const count = backtrace(frames, kFrames);
    fprintf(gList, "%s %zu", what, size);
    for (int i = 2; i < count; ++i) {
        Dl_info info = {};
        if (dladdr(frames[i], &info) != 0) {
            // A return address: the call precedes it.
            ptrdiff_t const offset =
                    static_cast<char*>(frames[i]) - static_cast<char*>(info.dli_fbase) - 1;
            fprintf(gList, " %s+0x%tx", info.dli_fname, offset);
        }
    }
    fputc('\n', gList);
    tListing = false;
}

void note(std::atomic<uint64_t>& counter, char const* what, size_t size) {
    if (gWatching.load(std::memory_order_relaxed) && !tListing) {
        ++counter;
        list(what, size);
    }
}

void noteAllocation(size_t size) {
    if (gWatching.load(std::memory_order_relaxed) && !tListing) {
        gBytes += size;
        note(gAllocations, "allocation", size);
    }
}

void noteCopy(size_t size) {
    if (size >= kLargeCopyBytes) {
        note(gLargeCopies, "copy", size);
    }
}

__attribute__((constructor)) void openList() {
    if (char const* const path = getenv("QUEN_BENCH_LIST")) {
        gList = fopen(path, "w");
        void* frame = nullptr;
        backtrace(&frame, 1);  // loads its library now, outside any watched section
    }
}

}  // namespace

extern "C" {

void quenSetWatching(bool watching) {
    gWatching = watching;
}

void quenTakeCounts(WatchCounts* counts) {
    *counts = {gAllocations.exchange(0), gBytes.exchange(0), gLargeCopies.exchange(0),
               gFormats.exchange(0), gEntryCopies.exchange(0)};
    if (gList != nullptr) {
        fflush(gList);
    }
}

void* malloc(size_t size) {
    noteAllocation(size);
    return __libc_malloc(size);
}

void* calloc(size_t count, size_t size) {
    noteAllocation(count * size);
    return __libc_calloc(count, size);
}

void* realloc(void* block, size_t size) {
    noteAllocation(size);
    return __libc_realloc(block, size);
}

void* aligned_alloc(size_t alignment, size_t size) {
    noteAllocation(size);
    return __libc_memalign(alignment, size);
}

void* memcpy(void* target, void const* source, size_t size) {
    static auto const real = next<void* (*)(void*, void const*, size_t)>("memcpy");
    noteCopy(size);
    return real(target, source, size);
}

void* memmove(void* target, void const* source, size_t size) {
    static auto const real = next<void* (*)(void*, void const*, size_t)>("memmove");
    noteCopy(size);
    return real(target, source, size);
}

int vsnprintf(char* text, size_t size, char const* format, va_list arguments) {
    static auto const real = next<int (*)(char*, size_t, char const*, va_list)>("vsnprintf");
    note(gFormats, "format", size);
    return real(text, size, format, arguments);
}

int snprintf(char* text, size_t size, char const* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    int const written = vsnprintf(text, size, format, arguments);
    va_end(arguments);
    return written;
}

/**
 * NSCam::IMetadata::IEntry::IEntry(IEntry const&), by its symbol: this library does not include the
 * class.
 */
void _ZN5NSCam9IMetadata6IEntryC1ERKS1_(void* entry, void const* other) {
    using Copy = void (*)(void*, void const*);
    static auto const real = next<Copy>("_ZN5NSCam9IMetadata6IEntryC1ERKS1_");
    note(gEntryCopies, "entry", 0);
    real(entry, other);
}

}  // extern "C"
