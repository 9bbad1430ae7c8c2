#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstring>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gralloctypes/Gralloc4.h>
#include <nscam/Format.h>

#include "host/GrallocTest.h"
#include "support/Golden.h"

namespace {

using namespace android::gralloc4;

using quen::host::Layout;
using quentest::Error;
using quentest::hidl_handle;
using quentest::hidl_vec;
using GrallocAllocator = quentest::GrallocTest;

// golden/layouts.txt was looked through: rows of 64 bytes, packed samples in whole groups, chroma
// for the last row and column of odd pictures in rows that reach as far as luma's.
TEST_F(GrallocAllocator, LaysOutEveryFormat) {
    std::vector<std::string> lines;
    std::set<uint64_t> ids;
    auto const note = [&](PixelFormat format, uint32_t width, uint32_t height) {
        hidl_handle const made = allocate(width, height, format);
        void* const buffer = import(made);
        uint64_t const size = get(buffer, MetadataType_AllocationSize, decodeAllocationSize);
        EXPECT_EQ(lseek(made->data[0], 0, SEEK_END), static_cast<off_t>(size));
        EXPECT_NE(ftruncate(made->data[0], 1), 0) << "shrunk under a mapping";
        EXPECT_TRUE(ids.insert(get(buffer, MetadataType_BufferId, decodeBufferId)).second);
        uint32_t const code = get(buffer, MetadataType_PixelFormatFourCC, decodePixelFormatFourCC);
        std::ostringstream line;
        line << std::hex << "0x" << static_cast<int>(format) << std::dec << ' ' << width << 'x'
             << height << ": row of " << stride << ", " << size << " bytes, code "
             << (code == 0 ? "none" : std::string(reinterpret_cast<char const*>(&code), 4))
             << ", siting " << get(buffer, MetadataType_ChromaSiting, decodeChromaSiting).value;
        lines.push_back(line.str());
        for (std::string const& plane : planes(buffer)) {
            lines.push_back("  " + plane);
        }
    };
    for (PixelFormat const format :
         {PixelFormat::RGBA_8888, PixelFormat::YCRCB_420_SP, PixelFormat::RAW16,
          PixelFormat::IMPLEMENTATION_DEFINED, PixelFormat::YCBCR_420_888, PixelFormat::RAW10,
          PixelFormat::RAW12, PixelFormat::YV12}) {
        note(format, 65, 3);
        note(format, 85, 2);
    }
    note(PixelFormat::BLOB, 1001, 1);
    EXPECT_TRUE(allocator->setLayout(PixelFormat::YCBCR_420_888, Layout::I420));
    note(PixelFormat::YCBCR_420_888, 65, 3);
    quentest::expectGolden("layouts", lines);
    EXPECT_FALSE(allocator->setLayout(PixelFormat::YCBCR_420_888, Layout::Raw16));
    EXPECT_FALSE(allocator->setLayout(PixelFormat::YV12, Layout::I420));
}

TEST_F(GrallocAllocator, RefusesWhatCannotBeAllocated) {
    describe({"", 0, 4, 1, PixelFormat::YV12, 0, 0}, Error::BAD_VALUE);
    describe({"", 4, 4, 0, PixelFormat::YV12, 0, 0}, Error::BAD_VALUE);
    describe({"", 4, 2, 1, PixelFormat::BLOB, 0, 0}, Error::BAD_VALUE);
    describe({"", 4, 4, 1, static_cast<PixelFormat>(0x7777), 0, 0}, Error::UNSUPPORTED);
    describe({"", 4, 4, 2, PixelFormat::YV12, 0, 0}, Error::UNSUPPORTED);
    describe({"", 4, 4, 1, PixelFormat::YV12, 0, UINT64_MAX}, Error::UNSUPPORTED);
    describe({"", UINT32_MAX, UINT32_MAX, 1, PixelFormat::RGBA_8888, 0, 0}, Error::UNSUPPORTED);
    describe({"", 65536, 32768, 1, PixelFormat::YCRCB_420_SP, 0, 0}, Error::UNSUPPORTED);
    hidl_vec<uint8_t> const good = describe({"", 4, 4, 1, PixelFormat::YV12, 0, 0}, Error::NONE);
    allocate({}, 1, Error::BAD_DESCRIPTOR);
    allocate(hidl_vec<uint8_t>(good.begin(), good.end() - 1), 1, Error::BAD_DESCRIPTOR);
    hidl_vec<uint8_t> bad = good;
    bad.resize(good.size() + 1);
    allocate(bad, 1, Error::BAD_DESCRIPTOR);
    bad = good;
    memset(bad.data() + 4, 0, 4);  // its width
    allocate(bad, 1, Error::BAD_DESCRIPTOR);
    bad = good;
    bad[12] = 2;  // layers
    allocate(bad, 1, Error::UNSUPPORTED);
    allocate(good, 0, Error::NONE);
    allocate(good, 2, Error::NONE);

    // Without descriptors there is neither memory nor an import of it.
    hidl_handle const raw = allocate(64, 2, PixelFormat::RAW16);
    rlimit limit;
    getrlimit(RLIMIT_NOFILE, &limit);
    rlimit const none = {3, limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    hidl_handle const made = allocate(good, 1, Error::NO_RESOURCES);
    import(raw, Error::NO_RESOURCES);
    setrlimit(RLIMIT_NOFILE, &limit);
    EXPECT_EQ(made.getNativeHandle(), nullptr);
    EXPECT_EQ(mapper->counts().imports, 0u);
}

TEST(PixelFormats, AreTakenApartIntoPlanes) {
    using namespace NSCam::Utils::Format;
    std::vector<std::string>
            lines;  // bits of the picture; by plane its width, of 65 pixels, and bits
    for (int const format : {1, 0x11, 0x20, 0x21, 0x22, 0x23, 0x25, 0x26, 0x32315659, 0x7777}) {
        lines.push_back(std::to_string(format) + ": " +
                        std::to_string(queryImageBitsPerPixel(format)));
        for (size_t i = 0; i < queryPlaneCount(format) + 1; ++i) {
            lines.back() += ' ' + std::to_string(queryPlaneWidthInPixels(format, i, 65)) + 'x' +
                            std::to_string(queryPlaneBitsPerPixel(format, i));
        }
    }
    quentest::expectGolden("formats", lines);
}

}  // namespace
