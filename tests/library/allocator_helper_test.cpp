#include <quenGralloc/AllocatorHelper.h>
#include <quenGralloc/MapperHelper.h>
#include <quenGralloc/UsageConversion.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/hidl/ServiceRegistry.h"
#include "support/Buffers.h"
#include "support/Formats.h"
#include "support/Lines.h"

namespace {

using namespace quentest;
using android::hardware::graphics::common::V1_0::PixelFormat;
using testing::ElementsAre;

void allocate(hidl_handle* handle, uint32_t* stride) {
    AllocatorHelper::getInstance().allocateGraphicBuffer(640, 480, 0xFFFFFFFF00020033,
                                                         PixelFormat::YCRCB_420_SP, handle, stride);
}

TEST(AllocatorHelperTest, AsksForOneBufferAndClonesIt) {
    Graphics& graphics = Graphics::fresh();
    MemoryBuffer const memory(16);
    BorrowedHandle const raw({memory.fd()}, {7, 8});
    BorrowedHandle const other({memory.fd()}, {5, 6});
    hidl_vec<uint8_t> const bytes = {9, 8, 7};
    graphics.mapper->onCreateDescriptor = giving(Error::NONE, bytes);
    // Errors are not looked at: what a reply carries is taken.
    for (Error const error : {Error::NONE, Error::NO_RESOURCES}) {
        graphics.allocator->onAllocate = [&](auto const& wanted, auto const& cb) {
            EXPECT_EQ(wanted, bytes);
            return giving(error, 704, hidl_vec<hidl_handle>{raw.get(), other.get()})(cb);
        };
        for (bool const withStride : {true, false}) {
            hidl_handle handle;
            uint32_t stride = 0;
            Transcript transcript;
            allocate(&handle, withStride ? &stride : nullptr);
            EXPECT_EQ(stride, withStride ? 704u : 0u);
            EXPECT_THAT(std::vector<int>(&handle->data[1], &handle->data[3]), ElementsAre(7, 8));
            EXPECT_NE(handle->data[0], memory.fd());
            EXPECT_EQ(Mapping(handle->data[0]).size(), 16u);
            EXPECT_EQ(transcript.linesOfTag("quenGralloc"), linesOf(R"(
                    I MapperHelper createDescriptor is succeeded 1
                    D stride(704)
                    I allocateGraphicBuffer is ok 1)"));
        }
    }
    EXPECT_THAT(graphics.allocator->counts, ElementsAre(1, 1, 1, 1));
    IMapper::BufferDescriptorInfo const& info = graphics.mapper->described;
    EXPECT_TRUE(info.name.empty());
    EXPECT_THAT((std::vector{info.width, info.height, info.layerCount,
                             static_cast<uint32_t>(info.format)}),
                ElementsAre(640, 480, 1, kNv21));
    EXPECT_EQ(info.usage, 0xFFFFFFFF00020033u);
    EXPECT_EQ(info.reservedSize, 0u);
}

TEST(AllocatorHelperTest, LeavesTheHandleAloneWithoutABuffer) {
    Graphics& graphics = Graphics::fresh();
    MemoryBuffer const memory(16);
    hidl_handle handle(memory.handle());
    Transcript transcript;
    graphics.allocator->onAllocate = giving(Error::NONE, 704, hidl_vec<hidl_handle>());
    allocate(&handle, nullptr);
    EXPECT_EQ(handle.getNativeHandle(), memory.handle());
    graphics.allocator->onAllocate = losing();
    allocate(&handle, nullptr);
    EXPECT_EQ(transcript.linesOfTag("quenGralloc").back(), "I allocateGraphicBuffer is ok 0");
}

TEST(AllocatorHelperTest, ServicesAreThoseOfTheFirstUse) {
    Graphics& graphics = Graphics::fresh();
    allocateGraphic(16, 16, kNv21);
    quen::host::unregisterService(graphics.allocator);
    android::sp<HookedMapper> const mapper = new HookedMapper;
    mapper->onFree = [] { return Error::NONE; };
    (void)mapper->registerAsService();
    allocateGraphic(16, 16, kNv21);
    MapperHelper helper = MapperHelper::getInstance();
    helper.init();
    native_handle_t const buffer{};
    helper.freeBuffer(&buffer);
    EXPECT_THAT(mapper->freed, ElementsAre(&buffer));
    (void)graphics.mapper->registerAsService();
    (void)graphics.allocator->registerAsService();
}

// A failed call that nobody looks at ends the process: with the log off too, every one is looked
// at.
TEST(AllocatorHelperTest, LostTransportsEndNothingWithTheLogOff) {
    quen::host::setLogLevel(quen::host::LogLevel::Silent);
    Graphics& graphics = Graphics::fresh();
    graphics.mapper->onCreateDescriptor = losing();
    graphics.mapper->onImport = losing();
    graphics.mapper->onFree = losing();
    graphics.mapper->onLock = losing();
    graphics.mapper->onUnlock = losing();
    graphics.mapper->onGet = losing();
    graphics.allocator->onAllocate = losing();

    native_handle_t handle = {};
    handle.version = sizeof(handle);
    MapperHelper mapper = MapperHelper::getInstance();
    native_handle_t const* imported = &handle;
    mapper.importBuffer(imported);
    void* address = nullptr;
    mapper.lock(&handle, 0x3, {0, 0, 1, 1}, -1, address);
    std::vector<MapperHelper::PlaneLayout> layouts;
    mapper.getPlaneLayouts(&handle, &layouts);
    int fence = 0;
    mapper.unlock(&handle, fence);
    mapper.freeBuffer(&handle);
    hidl_handle allocated;
    allocate(&allocated, nullptr);
    EXPECT_EQ(graphics.mapper->calls.size(), 5u + 3u);
    EXPECT_EQ(graphics.allocator->counts.size(), 1u);
}

TEST(UsageConversionTest, Gralloc0ToGralloc1) {
    struct Case {
        int32_t usage;
        uint64_t producer, consumer;
    };
    for (Case const& c : {Case{0x33, 0x66, 0x6},  // both often
                          {0x1, 0, 0},            // one bit of a mask is not "often"
                          {0x2, 0x2, 0x2},        // the bit that both keep
                          {0x3, 0x6, 0x6},
                          {0x20, 0x20, 0},
                          {0x30, 0x60, 0},
                          {0x00FFFFFF, 0x00C24266, 0x00959906},
                          {-1, 0x00C24266, 0x00959906},  // nothing above bit 23 comes through
                          {INT32_MIN, 0, 0}}) {
        uint64_t producer = 1;
        uint64_t consumer = 1;
        android_convertGralloc0To1Usage(c.usage, &producer, &consumer);
        EXPECT_EQ(producer, c.producer) << std::hex << c.usage;
        EXPECT_EQ(consumer, c.consumer) << std::hex << c.usage;
    }
}

TEST(UsageConversionTest, Gralloc1ToGralloc0) {
    struct Case {
        uint64_t producer, consumer;
        uint32_t usage;
    };
    for (Case const& c : {Case{0x66, 0x6, 0x33},
                          {0x20066, 6, 0x20033},  // every device buffer's
                          {0x4, 0x2, 0x3},        // often, when the two are joined
                          {0x2, 0, 0x2},
                          {0x7, 0, 0x3},
                          {0x70, 0, 0x30},
                          {0x40, 0, 0x40},
                          {0xFFFFFFFF00000100, 0, 0x100},
                          {0, 0x180000060, 0x80000030}}) {
        EXPECT_EQ(static_cast<uint32_t>(android_convertGralloc1To0Usage(c.producer, c.consumer)),
                  c.usage)
                << std::hex << c.producer << " " << c.consumer;
    }
}

}  // namespace
