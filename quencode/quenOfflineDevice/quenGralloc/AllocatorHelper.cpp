#define LOG_TAG "quenGralloc"

#include "quenGralloc/AllocatorHelper.h"

#include <android/hardware/graphics/mapper/4.0/IMapper.h>

#include "quenCommon/Log.h"
#include "quenGralloc/MapperHelper.h"

using android::hardware::hidl_handle;
using android::hardware::hidl_vec;
using android::hardware::graphics::allocator::V4_0::IAllocator;
using android::hardware::graphics::common::V1_0::PixelFormat;
using android::hardware::graphics::mapper::V4_0::Error;
using android::hardware::graphics::mapper::V4_0::IMapper;

AllocatorHelper AllocatorHelper::getInstance() {
    static AllocatorHelper const instance = [] {
        AllocatorHelper helper;
        helper.init();
        return helper;
    }();
    return instance;
}

void AllocatorHelper::init() {
    mAllocator = IAllocator::getService("default", false);
}

void AllocatorHelper::allocateGraphicBuffer(uint32_t width, uint32_t height, uint64_t usage,
                                            PixelFormat format, hidl_handle* outHandle,
                                            uint32_t* outStride) const {
    IMapper::BufferDescriptorInfo info;
    info.width = width;
    info.height = height;
    info.layerCount = 1;
    info.format = static_cast<decltype(info.format)>(format);
    info.usage = usage;
    info.reservedSize = 0;

    hidl_vec<uint8_t> descriptor;
    MapperHelper::getInstance().createDescriptor(info, descriptor);

    auto const transport = mAllocator->allocate(
            descriptor, 1,
            [&](Error /*error*/, uint32_t stride, hidl_vec<hidl_handle> const& buffers) {
                QLOGD("stride(%u)", stride);
                if (outStride != nullptr) {
                    *outStride = stride;
                }
                if (buffers.size() > 0) {
                    *outHandle = buffers[0];
                }
            });
    bool const isOk = transport.isOk();
    QLOGI("allocateGraphicBuffer is ok %d", isOk);
}
