#define LOG_TAG "quenOfflineDevice"

#include <nscam/IMetadataTagSet.h>

#include "quenCommon/Hardened.h"
#include "quenCommon/Log.h"
#include "quenOfflineDevice/ClientCallback.h"
#include "quenOfflineDevice/RequestNumbers.h"
#include "quenOfflineDevice/quenOfflineDevice.h"

using android::sp;
using android::hardware::Return;
using vendor::mediatek::hardware::camera::isphal::V1_0::ICallback;
using vendor::mediatek::hardware::camera::isphal::V1_0::IDevice;
using vendor::mediatek::hardware::camera::isphal::V1_0::IISPModule;
using vendor::mediatek::hardware::camera::isphal::V1_0::Status;

namespace {

constexpr char kModuleInstance[] = "internal/0";

}  // namespace

quenOfflineDevice::quenOfflineDevice() : mStage{}, IsNeedRaw14bit(false) {}

/**
 * Does not close the ISP device: a client that skips `destroy` leaves it open until the references
 * are dropped here. The module goes first, the other members in reverse order of their declaration.
 */
quenOfflineDevice::~quenOfflineDevice() {
    mISPModule = nullptr;
}

/**
 * Connects first, whatever the parameters: a device without streams can still be configured by the
 * first request's reconfigure check.
 */
void quenOfflineDevice::create(SessionParams* params) {
    QLOGI("create E");
    init();
    bool const noParams = params == nullptr;
    bool const noInputs = noParams || params->input_streams.empty();
    bool const noOutputs = noParams || params->output_streams.empty();
    if (noInputs || noOutputs) {
        // The two blanks before the third flag are kept on purpose.
        QLOGE("pCreateParams is nullptr %d, input_streams is empty %d, "
              "output_streams is empty  %d, constructISPStream failed",
              noParams, noInputs, noOutputs);
    } else {
        IsNeedRaw14bit = isNeedRaw14bit(params->metadata, params->input_streams[0].format);
        config(params->input_streams, params->output_streams, params->metadata);
    }
    QLOGI("create X");
}

/** Connects to the ISP HAL; every failure aborts. A second call replaces every reference. */
void quenOfflineDevice::init() {
    QLOGI("init E");
    mISPModule = IISPModule::getService(kModuleInstance, false);
    if (mISPModule == nullptr) {
        QFATAL("[Fatal] no ISP module service, instance %s", kModuleInstance);
    }

    Status status = Status::OK;
    sp<IDevice> device;
    Return<void> const opened =
            mISPModule->openISPDevice([&](Status openStatus, sp<IDevice> const& openedDevice) {
                status = openStatus;
                device = openedDevice;
            });
    if (!opened.isOk()) {
        QFATAL("[Fatal] Transaction error in openISPDevice from ISPModule:%s",
               opened.description().c_str());
    }
    if (status != Status::OK) {
        QFATAL("[Fatal] openISPDevice failed:%s", toString(status).c_str());
    }
    if (device == nullptr) {
        QFATAL("[Fatal] invalid ISP device, mDevice is %p",
               static_cast<void const*>(mDevice.get()));
    }
    mDevice = device;
    mMetadataConverter = NSCam::IMetadataConverter::createInstance(
            NSCam::IDefaultMetadataTagSet::singleton()->getTagSet());
    mHalInterface = new HalInterface(mMetadataConverter);
    QLOGI("init X");
}

/**
 * Closes the ISP device and releases what `init` acquired; every failure aborts. Outstanding
 * requests are not waited for. The process-wide request numbers go too, also those of other device
 * objects.
 */
void quenOfflineDevice::uinit() {
    QLOGI("quenOfflineDevice uinit E");
    Return<Status> const closed = mDevice->closeISPDevice();
    if (!closed.isOk()) {
        QFATAL("[Fatal] Transaction error in closeISPDevice from ISPDevice:%s",
               closed.description().c_str());
    }
    Status const status = closed;
    if (status != Status::OK) {
        QFATAL("[Fatal] closeISPDevice failed:%s", toString(status).c_str());
    }
    releaseConnection();
    QLOGI("quenOfflineDevice uinit X");
}

/** Lets go of what `init` acquired, without closing it. */
void quenOfflineDevice::releaseConnection() {
    mDevice = nullptr;
    mISPModule = nullptr;
    mHalInterface = nullptr;
    mMetadataConverter = nullptr;
    forgetRequestNumbers();
}

/**
 * Whether `create` has connected the object and the ISP module still lives; says so in the log when
 * not. The hardened build asks before every operation but `create`.
 */
bool quenOfflineDevice::isConnected(char const* operation) const {
    if (mDevice == nullptr || mHalInterface == nullptr || mMetadataConverter == nullptr) {
        QLOGE("%s: no ISP device is open, call create first", operation);
        return false;
    }
    if (mHalInterface->callback() == nullptr) {
        QLOGE("%s: the ISP module has died, its ISP device can only be released", operation);
        return false;
    }
    return true;
}

void quenOfflineDevice::destroy() {
    if constexpr (quen::kHardened) {
        if (!isConnected("destroy")) {
            if (mDevice != nullptr) {
                releaseConnection();  // a dead module's device cannot be closed
            }
            return;
        }
    }
    uinit();
}

void quenOfflineDevice::flush() {
    if constexpr (quen::kHardened) {
        if (!isConnected("flush")) {
            return;
        }
    }
    // Ignored on purpose, but an outcome that nobody looks at can abort the process.
    (void)mDevice->flush().isOk();
}

/**
 * The callback that the ISP device uses is the one handed over at configuration: `callback` only
 * lives in a local copy of the HalInterface's reserved reference until the call ends.
 */
void quenOfflineDevice::setOfflineCallback(sp<ICallback> const& callback) {
    if constexpr (quen::kHardened) {
        if (!isConnected("setOfflineCallback")) {
            return;
        }
    }
    quen::MutexLock const lock(mLock);
    sp<android::RefBase> held = mHalInterface->mReserved;
    held = callback;
    { sp<android::RefBase> const reserved = mHalInterface->mReserved; }
    mHalInterface->registerRequestCB(&HalInterface::requestCallback);
}
