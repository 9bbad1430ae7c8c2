#include <gtest/gtest.h>

#include <vector>

#include <quenGralloc/AllocatorHelper.h>
#include <quenGralloc/MapperHelper.h>

#include "host/log/LogControl.h"
#include "support/Graphics.h"

using namespace quentest;

namespace {

// A failed call that nobody looks at ends the process: with the log off too, every one is looked
// at.
TEST(LostTransportTest, EndsNothingWithTheLogOff) {
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
    AllocatorHelper::getInstance().allocateGraphicBuffer(
            16, 16, 0x33, android::hardware::graphics::common::V1_0::PixelFormat::BLOB, &allocated,
            nullptr);
    EXPECT_EQ(graphics.mapper->calls.size(), 5u + 3u);
    EXPECT_EQ(graphics.allocator->counts.size(), 1u);
}

}  // namespace
