#pragma once

#include <algorithm>
#include <utility>
#include <vector>

#include <quenCommon/Hardened.h>
#include <quenOfflineDevice/ClientCallback.h>
#include <quenOfflineDevice/HalInterface.h>
#include <quenOfflineDevice/quenOfflineDevice.h>

/** The tests' and the benchmark's way to the device object's internal operations and state. */
class quenOfflineDevicePeer {
  public:
    using Device = quenOfflineDevice;
    using ISPBuffer = Device::ISPBuffer;
    using ISPStream = Device::ISPStream;

    explicit quenOfflineDevicePeer(Device& device) : mDevice(device) {}

    void init() { mDevice.init(); }
    void uinit() { mDevice.uinit(); }
    bool isNeedRaw14bit(camera_metadata const* meta, int inputFormat) {
        return mDevice.isNeedRaw14bit(meta, inputFormat);
    }
    void checkReconfigure(ImageBuffer const* input, std::vector<ImageBuffer*> outputs,
                          camera_metadata const* settings) {
        mDevice.checkReconfigure(input, std::move(outputs), settings);
    }
    void convertToISPBuffer(ImageBuffer const* imageBuffer, camera_metadata const* settings,
                            ISPBuffer* ispBuffer, bool* used,
                            android::hardware::hidl_handle& tuningData, Direction direction) {
        mDevice.convertToISPBuffer(imageBuffer, settings, ispBuffer, used, tuningData, direction);
    }
    void allocGraphicBuffer(android::hardware::hidl_handle& handle, void const* source, int width,
                            int height, int format, unsigned long usage, unsigned int& stride) {
        mDevice.allocGraphicBuffer(handle, source, width, height, format, usage, stride, 0);
    }
    void updateMetaData(NSCam::IMetadata* meta, int width, int height) {
        mDevice.updateMetaData(meta, width, height);
    }
    void convertToISPMetadata(NSCam::IMetadata* meta, std::vector<unsigned char>& out) {
        mDevice.convertToISPMetadata(meta, out);
    }
    int getJpegSize(native_handle const* handle, int size) {
        return mDevice.getJpegSize(handle, size);
    }

    std::map<uint64_t, ISPStream>& inputStreams() { return mDevice.mInputStreams; }
    std::map<uint64_t, ISPStream>& outputStreams() { return mDevice.mOutputStreams; }
    android::sp<HalInterface>& halInterface() { return mDevice.mHalInterface; }
    android::sp<NSCam::IMetadataConverter>& converter() { return mDevice.mMetadataConverter; }
    quen::Mutex& lock() { return mDevice.mLock; }
    bool connected() const { return mDevice.mDevice != nullptr; }
    std::string stage() const { return mDevice.mStage; }
    void setStage(char const* stage) {
        snprintf(mDevice.mStage, sizeof(mDevice.mStage), "%s", stage);
    }
    bool raw14bit() const { return mDevice.IsNeedRaw14bit; }
    void setRaw14bit(bool raw14bit) { mDevice.IsNeedRaw14bit = raw14bit; }

  private:
    Device& mDevice;
};

/** The same to the HalInterface's members and its callback's internal operations. */
class HalInterfacePeer {
  public:
    using ClientCallback = HalInterface::ClientCallback;
    using IspStatus = ClientCallback::IspStatus;

    static android::sp<ClientCallback> callback(HalInterface& hal) { return hal.callback(); }
    static bool hasHook(HalInterface& hal) {
        quen::MutexLock const lock(hal.mLock);
        return hal.mRequestCB == &HalInterface::requestCallback;
    }
    static bool reservedIsNull(HalInterface& hal) { return hal.mReserved == nullptr; }
    static quen::RequestTable& table(HalInterface& hal) {
        return hal.callback()->mOfflineRequestCallback;
    }
    static size_t outstanding(HalInterface& hal) { return table(hal).size(); }
    static bool isOutstanding(HalInterface& hal, uint32_t number) {
        std::vector<uint32_t> const numbers = table(hal).numbers();
        return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
    }
    /** Wakes a drained wait up. Returns its latest cycle's start and deadline, in microseconds. */
    static std::pair<long, long> wakeDrainedWait(HalInterface& hal) {
        ClientCallback& callback = *hal.callback();
        quen::MutexLock const lock(callback.mDrainLock);
        callback.mDrainCond.signal();
        return {callback.mDrainStart.tv_sec * 1000000 + callback.mDrainStart.tv_usec,
                callback.mDrainDeadline.tv_sec * 1000000 + callback.mDrainDeadline.tv_nsec / 1000};
    }
    static uint32_t convertStatus(uint32_t status) {
        return static_cast<uint32_t>(ClientCallback::convertStatus(static_cast<IspStatus>(status)));
    }
    static bool convertToIMetadata(HalInterface& hal, void const* data, NSCam::IMetadata& out) {
        return hal.callback()->convertToIMetadata(data, out);
    }
};
