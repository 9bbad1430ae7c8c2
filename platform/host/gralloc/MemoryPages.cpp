#include "host/gralloc/MemoryPages.h"

#include <sys/mman.h>
#include <unistd.h>

namespace quen::host {

namespace {

constexpr size_t kHugePage = 2u << 20;

// The time to clear a huge page is that of the faults of so many bytes of small ones, or less.
constexpr size_t kWorthHugePage = kHugePage / 4;

// An encoded picture seldom fills more of the memory that its client allows it.
constexpr size_t kLikelyShare = 16;

constexpr MappedPages kUnmapped{nullptr, 0};

// Linux 6.1 and 5.14; older headers lack them, and older systems refuse them.
constexpr int kCollapse = 25;
constexpr int kPopulateWrite = 23;

/** Bytes from the start of memory to the end of its last huge page; 0 when none is worth it. */
size_t hugeBytes(size_t bytes) {
    size_t const whole = bytes / kHugePage * kHugePage;
    return bytes - whole >= kWorthHugePage ? whole + kHugePage : whole;
}

size_t toBoundary(void const* address) {
    return (kHugePage - reinterpret_cast<uintptr_t>(address) % kHugePage) % kHugePage;
}

void* map(void* address, size_t bytes, int flags, int descriptor) {
    return mmap(address, bytes, PROT_READ | PROT_WRITE, flags, descriptor, 0);
}

/** Maps memory at a huge page's boundary. @return null when it cannot */
uint8_t* mapAtBoundary(int descriptor, size_t bytes) {
    size_t const reserved = bytes + kHugePage;
    void* const range =
            mmap(nullptr, reserved, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (range == MAP_FAILED) {
        return nullptr;
    }
    size_t const before = toBoundary(range);
    uint8_t* const start = static_cast<uint8_t*>(range) + before;
    void* const address = map(start, bytes, MAP_SHARED | MAP_FIXED, descriptor);
    if (address == MAP_FAILED) {
        munmap(range, reserved);
        return nullptr;
    }
    if (before != 0) {
        munmap(range, before);
    }
    munmap(start + bytes, kHugePage - before);
    return start;
}

/** Makes huge pages of mapped memory's first bytes. @return false when the system makes none */
bool makeHugePages(uint8_t* address, size_t bytes) {
    // Only where there is a page already does the system make a huge one.
    for (size_t offset = 0; offset < bytes; offset += kHugePage) {
        static_cast<void>(*const_cast<uint8_t volatile*>(address + offset));
    }
    return madvise(address, bytes, kCollapse) == 0;
}

/** Makes all pages of memory that is mapped at a huge page's boundary. */
void makePages(uint8_t* address, size_t bytes) {
    size_t const huge = hugeBytes(bytes);
    size_t const made = makeHugePages(address, huge) ? huge : 0;
    if (made < bytes) {
        // A system that does not know this makes them when they are touched.
        madvise(address + made, bytes - made, kPopulateWrite);
    }
}

}  // namespace

MappedPages mapShared(int descriptor, size_t bytes, PagesMade made) {
    static size_t const kPage = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    size_t const huge = hugeBytes(bytes);
    size_t const mapped = huge > bytes ? huge : (bytes + kPage - 1) / kPage * kPage;
    if (huge == 0) {
        // At once, pages take two thirds of the time of their faults one by one, half of the time
        // of two threads' faults together.
        int const flags = MAP_SHARED | (made == PagesMade::AtOnce ? MAP_POPULATE : 0);
        void* const address = map(nullptr, mapped, flags, descriptor);
        return address == MAP_FAILED ? kUnmapped
                                     : MappedPages{static_cast<uint8_t*>(address), mapped};
    }
    uint8_t* const address = mapAtBoundary(descriptor, mapped);
    if (address == nullptr) {
        return kUnmapped;
    }
    size_t const likely = hugeBytes(bytes / kLikelyShare);
    if (made == PagesMade::AtOnce) {
        makePages(address, bytes);
    } else if (likely != 0) {
        makeHugePages(address, likely);
    }
    return {address, mapped};
}

}  // namespace quen::host
