#pragma once

// A device of the software ISP as its client has it, with buffers and a receiver of results.

#include <sys/mman.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include <cutils/native_handle.h>
#include <gtest/gtest.h>
#include <system/graphics.h>

#include "host/gralloc/GraphicsServices.h"
#include "host/isp/device/SoftwareIspModule.h"
#include "support/Graphics.h"

namespace quentest {

using namespace quen::host::isp;
using namespace vendor::mediatek::hardware::camera::isphal::V1_0;
using android::sp;

constexpr uint32_t kWidth = 64;
constexpr uint32_t kHeight = 48;
constexpr uint64_t kInput = 3;
constexpr uint64_t kOutput = 7;

constexpr int32_t kRaw16 = HAL_PIXEL_FORMAT_RAW16;
constexpr int32_t kNv12 = HAL_PIXEL_FORMAT_IMPLEMENTATION_DEFINED;
constexpr int32_t kBlob = HAL_PIXEL_FORMAT_BLOB;

// A graphic buffer, mapped for the test.
struct Buffer {
    Buffer(uint32_t width, uint32_t height, int32_t format) : bytes(width * height * 2) {
        IMapper::BufferDescriptorInfo info{};
        info.width = width;
        info.height = height;
        info.layerCount = 1;
        info.format = static_cast<decltype(info.format)>(format);
        info.usage = 0x33;
        hidl_vec<uint8_t> descriptor;
        (void)IMapper::getService()->createDescriptor(
                info, [&](auto, auto& described) { descriptor = described; });
        (void)IAllocator::getService()->allocate(
                descriptor, 1, [&](auto, uint32_t, auto& buffers) { raw = buffers[0]; });
        data = static_cast<uint8_t*>(
                mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, raw->data[0], 0));
        EXPECT_NE(data, MAP_FAILED);
    }
    ~Buffer() { munmap(data, bytes); }
    Buffer(Buffer const&) = delete;
    Buffer& operator=(Buffer const&) = delete;

    size_t const bytes;  // or fewer
    hidl_handle raw;
    uint8_t* data = nullptr;
};

// Records results, and runs an action within each.
class Results : public ICallback {
  public:
    Return<void> processResult(ISPResult const& result) override {
        onResult(result);
        std::lock_guard<std::mutex> const guard(mLock);
        mTold += std::to_string(result.reqNumber) + ' ' + toString(result.status) + ' ';
        ++mCount;
        mArrived.notify_all();
        return android::hardware::Void();
    }
    Return<void> processEarlyResult(ISPResult const&) override { return android::hardware::Void(); }

    // Number and status of every result, once exactly that many have arrived.
    std::string told(size_t count) {
        std::unique_lock<std::mutex> guard(mLock);
        mArrived.wait_for(guard, std::chrono::seconds(20), [&] { return mCount >= count; });
        EXPECT_EQ(mCount, count);
        return mTold;
    }

    std::function<void(ISPResult const&)> onResult = [](auto&) {};

  private:
    std::mutex mLock;
    std::condition_variable mArrived;
    size_t mCount = 0;  // guarded by mLock, as the next
    std::string mTold;
};

inline ISPStream stream(uint64_t id, int32_t format, uint32_t width = kWidth,
                        uint32_t height = kHeight) {
    ISPStream result{};
    result.id = id;
    result.format = format;
    result.width = width;
    result.height = height;
    return result;
}

inline ISPRequest request(uint32_t number, hidl_handle const& input,
                          std::vector<hidl_handle> const& outputs) {
    ISPRequest result{};
    result.requestNumber = number;
    result.inputBuffers.resize(1);
    result.inputBuffers[0].streamId = kInput;
    result.inputBuffers[0].buffer = input;
    result.outputBuffers.resize(outputs.size());
    for (size_t i = 0; i < outputs.size(); ++i) {
        result.outputBuffers[i].streamId = kOutput + i;
        result.outputBuffers[i].buffer = outputs[i];
    }
    return result;
}

// A fresh platform, a device of the ISP, and the receiver of its results.
class SoftwareIsp : public testing::Test {
  protected:
    explicit SoftwareIsp(std::shared_ptr<IspObserver> observer = nullptr) {
        SoftwareIspOptions options;
        options.observer = std::move(observer);
        EXPECT_EQ(registerSoftwareIsp(options), android::OK);
        (void)IISPModule::getService("internal/0")
                ->openISPDevice([&](Status, sp<IDevice> const& opened) { device = opened; });
    }

    Status configure(ISPStream const& input, std::vector<ISPStream> const& outputs) {
        ISPStreamConfiguration config;
        config.inputStreams = hidl_vec<ISPStream>{input};
        config.outputStreams = outputs;
        return device->configureISPDevice(config, results);
    }

    Status submit(ISPRequest const& wanted) {
        return device->processISPRequest(hidl_vec<ISPRequest>{wanted});
    }
    void submitSome(uint32_t first, uint32_t last) {
        for (uint32_t number = first; number <= last; ++number) {
            ASSERT_EQ(submit(request(number, raw.raw, {yuv.raw})), Status::OK);
        }
    }

    quen::host::GraphicsServices graphics = quen::host::registerGraphicsServices();
    sp<Results> results = new Results;
    sp<IDevice> device;
    Buffer raw{kWidth, kHeight, kRaw16};
    Buffer yuv{kWidth, kHeight, kNv12};
    ISPStream const rawStream = stream(kInput, kRaw16);
    ISPStream const yuvStream = stream(kOutput, kNv12);
};

}  // namespace quentest
