#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstring>
#include <set>
#include <string>
#include <vector>

#include <gralloctypes/Gralloc4.h>
#include <nscam/Format.h>
#include <system/graphics.h>

#include "host/GrallocTest.h"

namespace {

using namespace android::gralloc4;

using quen::host::Layout;
using quentest::Error;
using quentest::hidl_handle;
using quentest::hidl_vec;
using GrallocAllocator = quentest::GrallocTest;

TEST_F(GrallocAllocator, LaysOutEveryFormat) {
    using Strings = std::vector<std::string>;
    struct Expected {
        PixelFormat format;
        uint32_t width, height, stride;
        Strings planes;
        uint64_t size;
        std::string code;  // FourCC
    };
    std::set<uint64_t> ids;
    auto const expectLayout = [&](Expected const& expected) {
        SCOPED_TRACE(static_cast<int>(expected.format));
        hidl_handle const made = allocate(expected.width, expected.height, expected.format);
        EXPECT_EQ(stride, expected.stride);
        void* const buffer = import(made);
        EXPECT_EQ(planes(buffer), expected.planes);
        EXPECT_EQ(get(buffer, MetadataType_AllocationSize, decodeAllocationSize), expected.size);
        EXPECT_EQ(lseek(made->data[0], 0, SEEK_END), static_cast<off_t>(expected.size));
        EXPECT_NE(ftruncate(made->data[0], 1), 0) << "shrunk under a mapping";
        uint32_t const code = get(buffer, MetadataType_PixelFormatFourCC, decodePixelFormatFourCC);
        EXPECT_EQ(code == 0 ? "" : std::string(reinterpret_cast<char const*>(&code), 4),
                  expected.code);
        bool const isYuv = expected.planes.size() > 1;
        EXPECT_EQ(get(buffer, MetadataType_ChromaSiting, decodeChromaSiting).value,
                  (isYuv ? ChromaSiting_SitedInterstitial : ChromaSiting_None).value);
        EXPECT_TRUE(ids.insert(get(buffer, MetadataType_BufferId, decodeBufferId)).second);
    };
    // Odd pictures have chroma for the last row and column, and chroma rows reach as far as luma's.
    std::string const luma = "1:0+8 @0/128 65x3 8 =384 1:1:1";
    Strings const nv12 = {luma, "2:0+8 4:8+8 @384/128 33x2 16 =256 1:2:2"};
    Strings const nv21 = {luma, "4:0+8 2:8+8 @384/128 33x2 16 =256 1:2:2"};
    Strings const i420 = {luma, "2:0+8 @384/64 33x2 8 =128 1:2:2",
                          "4:0+8 @512/64 33x2 8 =128 1:2:2"};
    Strings const yv12 = {luma, "4:0+8 @384/64 33x2 8 =128 1:2:2",
                          "2:0+8 @512/64 33x2 8 =128 1:2:2"};
    Strings const blob = {"1048576:0+8 @0/1001 1001x1 8 =1001 1:1:1"};
    Strings const raw16 = {"1048576:0+16 @0/128 33x2 16 =256 1:1:1"};
    Strings const rgba = {"1024:0+8 2048:8+8 4096:16+8 1073741824:24+8 @0/128 17x2 32 =256 1:1:1"};
    std::vector<Expected> const usual = {
            {PixelFormat::YCRCB_420_SP, 65, 3, 128, nv21, 640, "NV21"},
            {PixelFormat::IMPLEMENTATION_DEFINED, 65, 3, 128, nv12, 640, "NV12"},
            {PixelFormat::YCBCR_420_888, 65, 3, 128, nv21, 640, "NV21"},
            {PixelFormat::YV12, 65, 3, 128, yv12, 640, "YV12"},
            {PixelFormat::BLOB, 1001, 1, 1001, blob, 1001, ""},
            {PixelFormat::RAW10, 49, 2, 102, {"1048576:0+-1 @0/128 49x2 0 =256 1:1:1"}, 256, ""},
            {PixelFormat::RAW12, 85, 2, 128, {"1048576:0+-1 @0/192 85x2 0 =384 1:1:1"}, 384, ""},
            {PixelFormat::RAW16, 33, 2, 64, raw16, 256, "R16 "},
            {PixelFormat::RGBA_8888, 17, 2, 32, rgba, 256, "AB24"},
    };
    for (Expected const& expected : usual) {
        expectLayout(expected);
    }
    EXPECT_TRUE(allocator->setLayout(PixelFormat::YCBCR_420_888, Layout::I420));
    expectLayout({PixelFormat::YCBCR_420_888, 65, 3, 128, i420, 640, "YU12"});
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
    struct Expected {
        int format;
        size_t bits, planes, lastWidth, lastBits;  // of a picture 65 pixels wide
    };
    for (Expected const& expected : {Expected{HAL_PIXEL_FORMAT_RGBA_8888, 32, 1, 65, 32},
                                     {HAL_PIXEL_FORMAT_RAW10, 10, 1, 65, 10},
                                     {HAL_PIXEL_FORMAT_RAW16, 16, 1, 65, 16},
                                     {HAL_PIXEL_FORMAT_YCRCB_420_SP, 12, 2, 33, 16},
                                     {HAL_PIXEL_FORMAT_IMPLEMENTATION_DEFINED, 12, 2, 33, 16},
                                     {HAL_PIXEL_FORMAT_YCBCR_420_888, 12, 3, 33, 8},
                                     {HAL_PIXEL_FORMAT_YV12, 12, 3, 33, 8},
                                     {0x7777, 0, 0, 0, 0}}) {
        SCOPED_TRACE(expected.format);
        EXPECT_EQ(queryImageBitsPerPixel(expected.format), expected.bits);
        ASSERT_EQ(queryPlaneCount(expected.format), expected.planes);
        size_t const last = expected.planes - 1;
        EXPECT_EQ(queryPlaneWidthInPixels(expected.format, last, 65), expected.lastWidth);
        EXPECT_EQ(queryPlaneBitsPerPixel(expected.format, last), expected.lastBits);
        EXPECT_EQ(queryPlaneWidthInPixels(expected.format, expected.planes, 65), 0u);
    }
}

}  // namespace
