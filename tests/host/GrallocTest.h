#pragma once

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include <gralloctypes/Gralloc4.h>
#include <gtest/gtest.h>
#include <hidl/HidlSupport.h>
#include <utils/StrongPointer.h>

#include "host/gralloc/MemfdAllocator.h"
#include "host/gralloc/MemfdMapper.h"
#include "support/Graphics.h"

namespace quentest {

// A mapper and an allocator of their own; their calls, with the outcome that is expected.
class GrallocTest : public testing::Test {
  protected:
    using PixelFormat = android::hardware::graphics::common::V1_2::PixelFormat;
    using MemfdMapper = quen::host::MemfdMapper;

    static constexpr IMapper::Rect kWhole = {0, 0, 0, 0};

    // Calls the mapper, expects an outcome and gives what comes with it.
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
    // Each plane: "type:offset+bits ... @offset/stride widthxheight increment =size 1:x:y".
    std::vector<std::string> planes(void* buffer) {
        std::vector<std::string> texts;
        for (auto const& plane : get(buffer, android::gralloc4::MetadataType_PlaneLayouts,
                                     android::gralloc4::decodePlaneLayouts)) {
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

}  // namespace quentest
