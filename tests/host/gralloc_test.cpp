#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sync/sync.h>
#include <sys/eventfd.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gralloctypes/Gralloc4.h>
#include <nscam/Format.h>
#include <system/graphics.h>

#include "support/Graphics.h"

namespace {

using namespace android::gralloc4;

using aidl::android::hardware::graphics::common::PlaneLayout;
using android::hardware::graphics::common::V1_2::PixelFormat;
using quen::host::Layout;
using quen::host::MemfdMapper;
using quentest::Error;
using quentest::hidl_handle;
using quentest::hidl_vec;
using quentest::IMapper;
using quentest::Return;
using testing::Each;

constexpr IMapper::Rect kWhole = {0, 0, 0, 0};

class Gralloc : public testing::Test {
  protected:
    /** Calls the mapper, expects an outcome and gives what comes with it. */
    template <typename T, typename... Parameters, typename... Arguments>
    T call(Error expected, Return<void> (MemfdMapper::*function)(Parameters...),
           Arguments const&... arguments) {
        T result{};
        auto const keep = [&](Error error, auto const& value) {
            EXPECT_EQ(error, expected);
            result = value;
        };
        EXPECT_TRUE((*mapper.*function)(arguments..., keep).isOk());
        return result;
    }
    hidl_vec<uint8_t> describe(IMapper::BufferDescriptorInfo const& info, Error expected) {
        return call<hidl_vec<uint8_t>>(expected, &MemfdMapper::createDescriptor, info);
    }
    hidl_handle allocate(hidl_vec<uint8_t> const& descriptor, uint32_t count, Error expected) {
        hidl_handle result;
        auto const keep = [&](Error error, uint32_t rowPixels, auto const& buffers) {
            EXPECT_EQ(error, expected);
            EXPECT_EQ(buffers.size(), error == Error::NONE ? count : 0);
            EXPECT_EQ(rowPixels != 0, error == Error::NONE);
            stride = rowPixels;
            result = buffers.size() == 1 ? buffers[0] : result;
        };
        EXPECT_TRUE(allocator->allocate(descriptor, count, keep).isOk());
        return result;
    }
    hidl_handle allocate(uint32_t width, uint32_t height, PixelFormat format) {
        IMapper::BufferDescriptorInfo const info = {"test picture", width, height, 1, format, 3, 0};
        return allocate(describe(info, Error::NONE), 1, Error::NONE);
    }
    void* import(hidl_handle const& raw, Error expected = Error::NONE) {
        return call<void*>(expected, &MemfdMapper::importBuffer, raw);
    }
    uint8_t* lock(void* buffer, IMapper::Rect const& area = kWhole, Error expected = Error::NONE,
                  hidl_handle const& fence = {}, uint64_t usage = 0x33) {
        void* const result = call<void*>(expected, &MemfdMapper::lock, buffer, usage, area, fence);
        EXPECT_EQ(result != nullptr, expected == Error::NONE);
        return static_cast<uint8_t*>(result);
    }
    hidl_handle unlock(void* buffer, Error expected = Error::NONE) {
        return call<hidl_handle>(expected, &MemfdMapper::unlock, buffer);
    }
    Error free(void* buffer) { return mapper->freeBuffer(buffer); }
    hidl_vec<uint8_t> get(void* buffer, IMapper::MetadataType const& type, Error expected) {
        return call<hidl_vec<uint8_t>>(expected, &MemfdMapper::get, buffer, type);
    }
    template <typename T>
    T get(void* buffer, IMapper::MetadataType const& type,
          android::status_t (&decode)(hidl_vec<uint8_t> const&, T*)) {
        T result{};
        EXPECT_EQ(decode(get(buffer, type, Error::NONE), &result), android::OK);
        return result;
    }
    /** Each plane: "type:offset+bits ... @offset/stride widthxheight increment =size 1:x:y". */
    std::vector<std::string> planes(void* buffer) {
        std::vector<std::string> texts;
        for (auto const& plane : get(buffer, MetadataType_PlaneLayouts, decodePlaneLayouts)) {
            std::ostringstream text;
            for (auto const& component : plane.components) {
                text << component.type.value << ":" << component.offsetInBits << "+"
                     << component.sizeInBits << " ";
            }
            text << "@" << plane.offsetInBytes << "/" << plane.strideInBytes << " "
                 << plane.widthInSamples << "x" << plane.heightInSamples << " "
                 << plane.sampleIncrementInBits << " =" << plane.totalSizeInBytes
                 << " 1:" << plane.horizontalSubsampling << ":" << plane.verticalSubsampling;
            texts.push_back(text.str());
        }
        return texts;
    }
    android::sp<quen::host::MemfdAllocator> allocator = new quen::host::MemfdAllocator;
    android::sp<MemfdMapper> mapper = new MemfdMapper;
    uint32_t stride = 0;  // of the latest allocation
};

TEST_F(Gralloc, LaysOutEveryFormat) {
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
            {PixelFormat::RAW12, 43, 2, 85, {"1048576:0+-1 @0/128 43x2 0 =256 1:1:1"}, 256, ""},
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

TEST_F(Gralloc, RefusesWhatCannotBeAllocated) {
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

TEST_F(Gralloc, ImportsAnyCopyOfAHandleAndNothingElse) {
    hidl_handle const raw = allocate(64, 2, PixelFormat::RAW16);
    void* const first = import(raw);
    void* const second = import(hidl_handle(raw));
    EXPECT_NE(first, second);
    uint8_t* const written = lock(first);
    EXPECT_THAT(std::vector<uint8_t>(written, written + 256), Each(0));
    written[255] = 7;
    EXPECT_EQ(lock(second)[255], 7);

    import(hidl_handle(), Error::BAD_BUFFER);
    // Integers that contradict each other or stand for nothing; their order is the handle's own.
    for (int const slot : {0, 1, 3, 4, 5, 10, 11, 12, 13}) {
        SCOPED_TRACE(slot);
        hidl_handle const changed = raw;
        const_cast<native_handle_t*>(changed.getNativeHandle())->data[1 + slot] += 1 << 10;
        import(changed, Error::BAD_BUFFER);
    }
    dup2(allocate(64, 1, PixelFormat::RAW16)->data[0], raw->data[0]);
    import(raw, Error::BAD_BUFFER);  // its memory is too small
}

TEST_F(Gralloc, RefusesBuffersInTheWrongState) {
    void* const buffer = import(allocate(100, 50, PixelFormat::YCRCB_420_SP));
    EXPECT_EQ(get(buffer, MetadataType_Name, decodeName), "test picture");
    get(buffer, {"vendor.properties", 15}, Error::UNSUPPORTED);
    get(buffer, {GRALLOC4_STANDARD_METADATA_TYPE, 99}, Error::UNSUPPORTED);

    IMapper::Rect const bad[] = {{-1, 0, 4, 4}, {0, 0, -4, 4}, {97, 0, 4, 4},
                                 {0, 47, 4, 4}, {0, 0, 4, -4}, {INT32_MAX, 0, INT32_MAX, 1}};
    for (IMapper::Rect const& area : bad) {
        lock(buffer, area, Error::BAD_VALUE);
    }
    for (uint64_t const usage : {0x0, 0x20000, 0x20033}) {
        lock(buffer, kWhole, Error::BAD_VALUE, hidl_handle(), usage);
    }
    EXPECT_EQ(mapper->rereadLockedBuffer(buffer), Error::BAD_BUFFER);
    call<hidl_handle>(Error::BAD_BUFFER, &MemfdMapper::flushLockedBuffer, buffer);
    unlock(buffer, Error::BAD_BUFFER);

    uint8_t* const address = lock(buffer, {0, 0, 100, 50});
    EXPECT_EQ(mapper->rereadLockedBuffer(buffer), Error::NONE);
    call<hidl_handle>(Error::NONE, &MemfdMapper::flushLockedBuffer, buffer);
    EXPECT_EQ(lock(buffer, {99, 49, 1, 1}), address);
    import(allocate(1, 1, PixelFormat::BLOB));
    quen::host::BufferCounts const counts = mapper->counts();
    EXPECT_TRUE(counts.imports == 2 && counts.mappings == 1 && counts.locks == 2);
    unlock(buffer);
    EXPECT_EQ(free(buffer), Error::BAD_BUFFER) << "still locked";
    unlock(buffer);
    unlock(buffer, Error::BAD_BUFFER);
    EXPECT_EQ(free(buffer), Error::NONE);

    EXPECT_EQ(free(buffer), Error::BAD_BUFFER);
    lock(buffer, kWhole, Error::BAD_BUFFER);
    get(buffer, MetadataType_PlaneLayouts, Error::BAD_BUFFER);
}

TEST_F(Gralloc, GivesBackMemoryAndDescriptors) {
    auto const inUse = [] {
        std::ifstream maps("/proc/self/maps");
        std::string const text((std::istreambuf_iterator<char>(maps)), {});
        auto const descriptors = std::filesystem::directory_iterator("/proc/self/fd");
        return std::make_pair(std::distance(begin(descriptors), end(descriptors)),
                              text.find("/memfd:") != std::string::npos);
    };
    auto const before = inUse();
    EXPECT_FALSE(before.second);
    hidl_handle raw = allocate(64, 2, PixelFormat::RAW16);
    void* const freed = import(raw);
    lock(freed);
    lock(import(raw));
    EXPECT_TRUE(inUse().second);
    unlock(freed);
    free(freed);
    mapper = nullptr;
    raw = hidl_handle();
    EXPECT_EQ(inUse(), before);
}

TEST_F(Gralloc, WaitsForAcquireFencesAndGivesReleaseFences) {
    void* const buffer = import(allocate(16, 16, PixelFormat::RAW16));
    hidl_handle fence;
    fence.setTo(native_handle_create(1, 0), true);
    int const event = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    const_cast<native_handle_t*>(fence.getNativeHandle())->data[0] = event;
    std::thread signaller([event] {
        usleep(20000);  // so that a lock that does not wait is through by then
        EXPECT_EQ(eventfd_write(event, 1), 0);
    });
    lock(buffer, kWhole, Error::NONE, fence);
    eventfd_t value = 0;
    EXPECT_EQ(eventfd_read(event, &value), 0) << "waited for, and still its owner's";
    signaller.join();
    EXPECT_EQ(unlock(buffer).getNativeHandle(), nullptr);
    void* const freed = import(allocate(16, 16, PixelFormat::RAW16));
    std::thread freer([&] {
        usleep(20000);
        EXPECT_EQ(free(freed), Error::NONE);
        EXPECT_EQ(eventfd_write(event, 1), 0);
    });
    lock(freed, kWhole, Error::BAD_BUFFER, fence);
    freer.join();

    native_handle_t* const twoFences = native_handle_create(2, 0);
    twoFences->data[0] = twoFences->data[1] = eventfd(1, EFD_CLOEXEC);
    lock(buffer, kWhole, Error::BAD_VALUE, hidl_handle(twoFences));
    close(twoFences->data[0]);
    native_handle_delete(twoFences);

    native_handle_t* const noFence = native_handle_create(0, 0);
    lock(buffer, kWhole, Error::NONE, hidl_handle(noFence));
    unlock(buffer);
    native_handle_delete(noFence);

    mapper->setReleaseFences(true);
    lock(buffer);
    hidl_handle const released = unlock(buffer);
    ASSERT_NE(released.getNativeHandle(), nullptr);
    EXPECT_EQ(eventfd_read(released->data[0], &value), 0) << "signalled already";
}

TEST(Fences, AreLookedAtAndMerged) {
    int const waiting = eventfd(0, EFD_CLOEXEC);
    int const signalled = eventfd(1, EFD_CLOEXEC);
    auto const statusOf = [](int fd) {
        std::unique_ptr<struct sync_file_info, decltype(&sync_file_info_free)> const info(
                sync_file_info(fd), sync_file_info_free);
        return info == nullptr ? -1 : info->status;
    };
    EXPECT_EQ(statusOf(waiting), 0);
    EXPECT_EQ(statusOf(signalled), 1);
    EXPECT_EQ(sync_merge("none", waiting, waiting), -1);
    EXPECT_EQ(sync_merge("none", signalled, -1), -1);
    errno = 0;
    EXPECT_EQ(sync_wait(waiting, 1), -1);
    EXPECT_EQ(errno, ETIME);
    int const alike = sync_merge("alike", signalled, signalled);
    EXPECT_EQ(statusOf(alike), 1);
    close(alike);
    int const merged = sync_merge("both", signalled, waiting);
    EXPECT_EQ(statusOf(merged), 0);
    EXPECT_EQ(eventfd_write(waiting, 1), 0);
    EXPECT_EQ(statusOf(merged), 1);
    for (int const fd : {waiting, signalled, merged}) {
        close(fd);
    }
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    close(ends[0]);
    EXPECT_EQ(statusOf(ends[1]), -1) << "failed: nobody reads it any more";
    close(ends[1]);
}

// What one import sets every other one tells, and what is reserved is shared likewise.
TEST_F(Gralloc, TellsEveryPropertyAndKeepsWhatIsSet) {
    using namespace aidl::android::hardware::graphics::common;
    IMapper::BufferDescriptorInfo const info = {"two",          64, 2, 1, PixelFormat::YV12,
                                                1ULL << 40 | 3, 100};
    hidl_handle const raw = allocate(describe(info, Error::NONE), 1, Error::NONE);
    void* const buffer = import(raw);
    EXPECT_EQ(mapper->validateBufferSize(buffer, info, stride), Error::NONE);
    EXPECT_EQ(mapper->validateBufferSize(buffer, info, stride + 1), Error::BAD_VALUE);
    for (IMapper::BufferDescriptorInfo const& larger :
         {IMapper::BufferDescriptorInfo{"", 65, 2, 1, PixelFormat::YV12, 3, 100},
          {"", 64, 3, 1, PixelFormat::YV12, 3, 100},
          {"", 64, 2, 1, PixelFormat::YCRCB_420_SP, 3, 100},
          {"", 64, 2, 1, PixelFormat::YV12, 3, 101}}) {
        EXPECT_EQ(mapper->validateBufferSize(buffer, larger, stride), Error::BAD_VALUE);
    }
    using List = hidl_vec<IMapper::MetadataTypeDescription>;
    List const list = call<List>(Error::NONE, &MemfdMapper::listSupportedMetadataTypes);
    auto const dump = call<IMapper::BufferDump>(Error::NONE, &MemfdMapper::dumpBuffer, buffer);
    ASSERT_EQ(list.size(), 20u);
    // Id, codes, size, chroma siting, planes and crop come with the allocation.
    std::set<int64_t> const lateTypes = {1, 7, 8, 10, 14, 15, 16};
    for (size_t i = 0; i < list.size(); ++i) {
        SCOPED_TRACE(list[i].metadataType.value);
        EXPECT_EQ(get(buffer, list[i].metadataType, Error::NONE), dump.metadataDump[i].metadata);
        hidl_vec<uint8_t> const nothing = {1};
        bool const isSettled = list[i].metadataType.value <= 6 || list[i].metadataType.value == 9;
        EXPECT_EQ(mapper->set(buffer, list[i].metadataType, nothing),
                  isSettled ? Error::BAD_VALUE : Error::UNSUPPORTED);
        bool const isKnown = lateTypes.count(list[i].metadataType.value) == 0;
        EXPECT_EQ(call<hidl_vec<uint8_t>>(isKnown ? Error::NONE : Error::UNSUPPORTED,
                                          &MemfdMapper::getFromBufferDescriptorInfo, info,
                                          list[i].metadataType),
                  isKnown ? dump.metadataDump[i].metadata : hidl_vec<uint8_t>());
    }
    get(buffer, MetadataType_Smpte2094_40, Error::UNSUPPORTED);
    std::vector<Rect> const crop = get(buffer, MetadataType_Crop, decodeCrop);
    ASSERT_EQ(crop.size(), 3u);
    EXPECT_TRUE(crop[1].right == 32 && crop[1].bottom == 1);
    EXPECT_EQ(get(buffer, MetadataType_Usage, decodeUsage), info.usage);

    void* const other = import(raw);
    hidl_vec<uint8_t> encoded;
    auto const expectShared = [&](IMapper::MetadataType const& type) {
        EXPECT_EQ(mapper->set(buffer, type, encoded), Error::NONE) << type.value;
        EXPECT_EQ(get(other, type, Error::NONE), encoded) << type.value;
    };
    encodeCta861_3(Cta861_3{500, 200}, &encoded);
    expectShared(MetadataType_Cta861_3);
    encodeSmpte2086(Smpte2086{{1, 2}, {3, 4}, {5, 6}, {7, 8}, 9, 10}, &encoded);
    expectShared(MetadataType_Smpte2086);
    encodeBlendMode(BlendMode::COVERAGE, &encoded);
    expectShared(MetadataType_BlendMode);
    encoded = hidl_vec<uint8_t>();  // unset
    expectShared(MetadataType_Cta861_3);
    expectShared(MetadataType_Smpte2086);
    std::string const longName(210, 'n');
    void* const plain = import(allocate(
            describe({longName, 64, 2, 1, PixelFormat::RAW16, 3, 0}, Error::NONE), 1, Error::NONE));
    EXPECT_EQ(get(plain, MetadataType_Name, decodeName), longName.substr(0, 200));

    char* regions[2] = {};
    for (size_t i = 0; i < 2; ++i) {
        auto const keep = [&](Error error, void* region, uint64_t size) {
            EXPECT_TRUE(error == Error::NONE && size == 100);
            regions[i] = static_cast<char*>(region);
        };
        EXPECT_TRUE(mapper->getReservedRegion(i == 0 ? buffer : other, keep).isOk());
    }
    strcpy(regions[0], "shared");
    EXPECT_STREQ(regions[1], "shared");
    memset(lock(buffer), 0, 256);  // the whole picture
    EXPECT_STREQ(regions[1], "shared");
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

TEST(Gralloc4, NoticesBrokenPlaneLayouts) {
    PlaneLayout const plane = {
            {{PlaneLayoutComponentType_CR, 8, 9}}, 384, 16, 128, 33, 2, 256, 4, 3};
    hidl_vec<uint8_t> encoded;
    ASSERT_EQ(encodePlaneLayouts({plane}, &encoded), android::OK);
    std::vector<PlaneLayout> decoded;
    EXPECT_EQ(decodePlaneLayouts(encoded, &decoded), android::OK);

    // Whatever is cut off, added or counted wrong is noticed, and nothing is written.
    std::vector<uint8_t> const sound = encoded;
    std::vector<std::vector<uint8_t>> broken = {sound, sound};
    broken[0].push_back(0);
    broken[1].at(8) ^= 1;  // a letter of the type's name
    for (size_t size = sound.size(); size-- > 0;) {
        broken.emplace_back(sound.begin(), sound.begin() + static_cast<long>(size));
    }
    for (size_t const countByte : {7, 8 + 53 + 8, 8 + 53 + 8 + 7}) {
        for (uint8_t const count : {0x80, 0x40}) {  // below 0, and far too many
            broken.push_back(sound);
            broken.back().at(countByte) = count;
        }
    }
    for (size_t i = 0; i < broken.size(); ++i) {
        EXPECT_EQ(decodePlaneLayouts(broken[i], &decoded), android::BAD_VALUE) << i;
    }
    EXPECT_EQ(encodePlaneLayouts(decoded, &encoded), android::OK);
    EXPECT_EQ(std::vector<uint8_t>(encoded), sound);
}

}  // namespace
