#pragma once

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <quenCommon/Hardened.h>
#include <quenOfflineDevice/bridge/ClientCallback.h>
#include <quenOfflineDevice/bridge/HalInterface.h>
#include <quenOfflineDevice/quenOfflineDevice.h>

namespace quentest {

/**
 * Gives tests the few private members whose state shows nowhere outside. The language lets an
 * explicit instantiation name a private member: the library's headers need no friend for it.
 */
template <typename Key, typename Key::Member member>
struct Expose {
    friend typename Key::Member memberOf(Key) { return member; }
};

#define QUEN_TEST_EXPOSE(Key, Class, Type, name) \
    struct Key {                                 \
        using Member = Type Class::*;            \
        friend Member memberOf(Key);             \
    };                                           \
    template struct Expose<Key, &Class::name>

using StreamTable = std::map<uint64_t, vendor::mediatek::hardware::camera::isphal::V1_0::ISPStream>;
using StageText = char[quen::kStageBytes];
using CheckReconfigure = void(ImageBuffer const*, std::vector<ImageBuffer*> const&,
                              camera_metadata const*);
using RequestHook = bool (*)();
using HalReference = android::sp<HalInterface>;
using ConverterReference = android::sp<NSCam::IMetadataConverter>;
using DeviceReference = android::sp<vendor::mediatek::hardware::camera::isphal::V1_0::IDevice>;

QUEN_TEST_EXPOSE(DeviceOf, quenOfflineDevice, DeviceReference, mDevice);
QUEN_TEST_EXPOSE(HalOf, quenOfflineDevice, HalReference, mHalInterface);
QUEN_TEST_EXPOSE(ConverterOf, quenOfflineDevice, ConverterReference, mMetadataConverter);
QUEN_TEST_EXPOSE(InputsOf, quenOfflineDevice, StreamTable, mInputStreams);
QUEN_TEST_EXPOSE(OutputsOf, quenOfflineDevice, StreamTable, mOutputStreams);
QUEN_TEST_EXPOSE(DeviceLockOf, quenOfflineDevice, quen::Mutex, mLock);
QUEN_TEST_EXPOSE(StageOf, quenOfflineDevice, StageText, mStage);
QUEN_TEST_EXPOSE(RawDepthOf, quenOfflineDevice, bool, IsNeedRaw14bit);
QUEN_TEST_EXPOSE(CheckReconfigureOf, quenOfflineDevice, CheckReconfigure, checkReconfigure);
QUEN_TEST_EXPOSE(HookOf, HalInterface, RequestHook, mRequestCB);
QUEN_TEST_EXPOSE(HookLockOf, HalInterface, quen::Mutex, mLock);
QUEN_TEST_EXPOSE(TableOf, HalInterface::ClientCallback, quen::RequestTable,
                 mOfflineRequestCallback);
QUEN_TEST_EXPOSE(CallbackLockOf, HalInterface, quen::Mutex, mCallbackLock);
QUEN_TEST_EXPOSE(TableLockOf, quen::RequestTable, quen::Mutex, mLock);
QUEN_TEST_EXPOSE(DrainLockOf, HalInterface::ClientCallback, quen::Mutex, mDrainLock);
QUEN_TEST_EXPOSE(DrainCondOf, HalInterface::ClientCallback, quen::Condition, mDrainCond);
QUEN_TEST_EXPOSE(DrainStartOf, HalInterface::ClientCallback, timeval, mDrainStart);
QUEN_TEST_EXPOSE(DrainDeadlineOf, HalInterface::ClientCallback, timespec, mDrainDeadline);

#undef QUEN_TEST_EXPOSE

/** What a device object remembers of its connection and configuration. */
class DeviceInternals {
  public:
    explicit DeviceInternals(quenOfflineDevice& device) : mDevice(device) {}

    StreamTable& inputStreams() { return mDevice.*memberOf(InputsOf()); }
    StreamTable& outputStreams() { return mDevice.*memberOf(OutputsOf()); }
    android::sp<HalInterface>& halInterface() { return mDevice.*memberOf(HalOf()); }
    void checkReconfigure(ImageBuffer const* input, std::vector<ImageBuffer*> const& outputs,
                          camera_metadata const* settings) {
        (mDevice.*memberOf(CheckReconfigureOf()))(input, outputs, settings);
    }
    quen::Mutex& lock() { return mDevice.*memberOf(DeviceLockOf()); }
    bool isConnected() const { return mDevice.*memberOf(DeviceOf()) != nullptr; }
    bool hasConverter() const { return mDevice.*memberOf(ConverterOf()) != nullptr; }
    std::string stage() const { return mDevice.*memberOf(StageOf()); }
    bool& isNeedRaw14bit() { return mDevice.*memberOf(RawDepthOf()); }

  private:
    quenOfflineDevice& mDevice;
};

/** The same of a HalInterface and its callback. */
namespace bridge {

inline bool hasHook(HalInterface& hal) {
    quen::MutexLock const lock(hal.*memberOf(HookLockOf()));
    return hal.*memberOf(HookOf()) == &HalInterface::requestCallback;
}

inline quen::RequestTable& table(HalInterface& hal) {
    return (*hal.callback()).*memberOf(TableOf());
}

inline size_t outstanding(HalInterface& hal) {
    return table(hal).size();
}

inline bool isOutstanding(HalInterface& hal, uint32_t number) {
    std::vector<uint32_t> const numbers = table(hal).numbers();
    return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
}

/** Wakes a drained wait up. Returns its latest cycle's start and deadline, in microseconds. */
inline std::pair<long, long> wakeDrainedWait(HalInterface& hal) {
    HalInterface::ClientCallback& callback = *hal.callback();
    quen::MutexLock const lock(callback.*memberOf(DrainLockOf()));
    (callback.*memberOf(DrainCondOf())).signal();
    timeval const start = callback.*memberOf(DrainStartOf());
    timespec const deadline = callback.*memberOf(DrainDeadlineOf());
    return {start.tv_sec * 1000000 + start.tv_usec,
            deadline.tv_sec * 1000000 + deadline.tv_nsec / 1000};
}

}  // namespace bridge

}  // namespace quentest
