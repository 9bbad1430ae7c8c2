#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/gralloc/MemoryPages.h"

namespace {

using quen::host::MappedPages;
using quen::host::mapShared;
using quen::host::PagesMade;

constexpr size_t kElsewhere = 512;  // kB that the heap may take meanwhile
constexpr int kTimes = 150;         // a page that stays each time is more than that

/** The address space in use, reserved ranges included, in kB; an emulator's own is not in the list.
 */
size_t addressSpace() {
    std::ifstream file("/proc/self/maps");
    size_t bytes = 0;
    for (std::string line; std::getline(file, line);) {
        unsigned long begin = 0, end = 0;
        if (std::sscanf(line.c_str(), "%lx-%lx", &begin, &end) == 2) {
            bytes += end - begin;
        }
    }
    return bytes / 1024;
}

/** Whether every page of memory is there. */
bool isPresent(MappedPages const& pages, size_t bytes) {
    size_t const page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    std::vector<unsigned char> present((bytes + page - 1) / page);
    return mincore(pages.address, bytes, present.data()) == 0 &&
           std::all_of(present.begin(), present.end(), [](unsigned char p) { return p & 1; });
}

/** Whether pages are made on request: an emulated system says that it has, and has not. */
bool canBeMade() {
    constexpr int kPopulateWrite = 23;
    constexpr size_t kBytes = 1 << 16;
    void* const address =
            mmap(nullptr, kBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    bool const made = madvise(address, kBytes, kPopulateWrite) == 0 &&
                      isPresent({static_cast<uint8_t*>(address), kBytes}, kBytes);
    munmap(address, kBytes);
    return made;
}

}  // namespace

// A page, some, one huge page or nearly, several and a rest that is worth one more, or is not.
TEST(MemoryPages, AreAllThereKeepWhatIsInThemAndGoWithoutRemains) {
    for (size_t const bytes : {4096u, 100'000u, 2'000'000u, 2u << 20, 5'000'000u, 6'400'000u}) {
        int const memory = memfd_create("pages", MFD_CLOEXEC);
        ASSERT_EQ(ftruncate(memory, static_cast<off_t>(bytes)), 0);
        std::string const text = "kept";
        off_t const end = static_cast<off_t>(bytes - text.size());
        ASSERT_EQ(pwrite(memory, text.data(), text.size(), end), 4);
        size_t const before = addressSpace();

        MappedPages const pages = mapShared(memory, bytes, PagesMade::AtOnce);
        ASSERT_NE(pages.address, nullptr);
        EXPECT_GE(pages.bytes, bytes);
        EXPECT_TRUE(!canBeMade() || isPresent(pages, bytes)) << bytes;
        EXPECT_EQ(std::string(pages.address + end, pages.address + bytes), text) << bytes;
        EXPECT_EQ(std::count(pages.address, pages.address + end, 0), end) << bytes;
        std::copy(text.begin(), text.end(), pages.address);
        std::string read(text.size(), '\0');
        EXPECT_EQ(pread(memory, read.data(), read.size(), 0), 4);
        EXPECT_EQ(read, text);

        EXPECT_EQ(munmap(pages.address, pages.bytes), 0);
        for (int i = 1; i < kTimes; ++i) {
            MappedPages const again = mapShared(memory, bytes, PagesMade::AtOnce);
            EXPECT_EQ(munmap(again.address, again.bytes), 0);
        }
        EXPECT_LT(addressSpace(), before + kElsewhere) << bytes;
        close(memory);
    }
    size_t const before = addressSpace();
    for (int i = 0; i < kTimes; ++i) {
        EXPECT_EQ(mapShared(-1, 5'000'000, PagesMade::AtOnce).address, nullptr);
    }
    EXPECT_LT(addressSpace(), before + kElsewhere);
}
