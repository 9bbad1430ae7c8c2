#pragma once

#include <string.h>

#include <quenOfflineDevice/HalInterface.h>
#include <quenOfflineDevice/quenOfflineDevice.h>

/** The benchmark's way to the device object's internal operations. */
class quenOfflineDevicePeer {
  public:
    static void allocGraphicBuffer(quenOfflineDevice& device,
                                   android::hardware::hidl_handle& handle, void const* source,
                                   int width, int height, int format, unsigned long usage) {
        unsigned int stride = 0;
        device.allocGraphicBuffer(handle, source, width, height, format, usage, stride, 0);
    }
    static void setStage(quenOfflineDevice& device, char const* stage) {
        strncpy(device.mStage, stage, sizeof(device.mStage) - 1);
    }
    static void updateMetaData(quenOfflineDevice& device, NSCam::IMetadata& metadata, int width,
                               int height) {
        device.updateMetaData(&metadata, width, height);
    }
    static void encode(quenOfflineDevice& device, NSCam::IMetadata& metadata,
                       std::vector<unsigned char>& out) {
        device.convertToISPMetadata(&metadata, out);
    }
};

/** The benchmark's way to the request bridge's internal operations. */
class HalInterfacePeer {
  public:
    using ClientCallback = HalInterface::ClientCallback;

    static android::sp<ClientCallback> callback(HalInterface& hal) { return hal.mCallback; }
    static void decode(HalInterface& hal, void const* data, NSCam::IMetadata& out) {
        hal.mCallback->convertToIMetadata(data, out);
    }
};
