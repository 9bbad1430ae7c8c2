#include "host/gralloc/MemoryPages.h"

#include <sys/mman.h>
#include <unistd.h>

namespace quen::host {

namespace {

constexpr size_t kHugePage = 2u << 20;

// The time to clear a huge page is that of the faults of so many bytes of small ones, or less.
constexpr size_t kWorthHugePage = kHugePage / 4;

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

/** Maps memory at a huge page's boundary. @return MAP_FAILED when it cannot */
void* mapAtBoundary(int descriptor, size_t bytes) {
    size_t const reserved = bytes + kHugePage;
    void* const range =
            mmap(nullptr, reserved, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (range == MAP_FAILED) {
        return MAP_FAILED;
    }
    size_t const before = toBoundary(range);
    uint8_t* const start = static_cast<uint8_t*>(range) + before;
    void* const address = map(start, bytes, MAP_SHARED | MAP_FIXED, descriptor);
    if (address == MAP_FAILED) {
        munmap(range, reserved);
        return MAP_FAILED;
    }
    if (before != 0) {
        munmap(range, before);
    }
    munmap(start + bytes, kHugePage - before);
    return address;
}

}  // namespace

MappedPages mapShared(int descriptor, size_t bytes) {
    static size_t const kPage = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    size_t const huge = hugeBytes(bytes);
    size_t const mapped = huge > bytes ? huge : (bytes + kPage - 1) / kPage * kPage;
    void* const address = huge != 0 ? mapAtBoundary(descriptor, mapped)
                                    : map(nullptr, mapped, MAP_SHARED, descriptor);
    return address == MAP_FAILED ? MappedPages{nullptr, 0}
                                 : MappedPages{static_cast<uint8_t*>(address), mapped};
}

size_t makeHugePages(MappedPages const& pages, size_t bytes) {
    size_t const huge = hugeBytes(bytes);
    // Only where there is a page already does the system make a huge one.
    for (size_t offset = 0; offset < huge; offset += kHugePage) {
        static_cast<void>(*const_cast<uint8_t volatile*>(pages.address + offset));
    }
    return huge != 0 && madvise(pages.address, huge, kCollapse) == 0 ? huge : 0;
}

void makePages(MappedPages const& pages, size_t bytes) {
    size_t const made = makeHugePages(pages, bytes);
    if (made < bytes) {
        // At once, pages take two thirds of the time of their faults one by one, half of the time
        // of two threads' faults together. A system that does not know this makes them when
        // touched.
        madvise(pages.address + made, bytes - made, kPopulateWrite);
    }
}

}  // namespace quen::host
