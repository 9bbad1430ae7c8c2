#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include <hidl/HidlSupport.h>
#include <nscam/IMetadata.h>
#include <nscam/IMetadataConverter.h>
#include <system/camera_metadata.h>
#include <utils/StrongPointer.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/ICallback.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/IDevice.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/IISPModule.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/types.h>
#include <vendor/quen/hardware/camera/quenpostproc/1.0/IQuenPostProcCallback.h>

#include "quenCommon/Export.h"
#include "quenCommon/Mutex.h"
#include "quenOfflineDevice/ClientRecords.h"
#include "quenOfflineDevice/Stage.h"
#include "quenOfflineDevice/bridge/HalInterface.h"

namespace quen {
class JpegHandover;
class TuningHandles;
}  // namespace quen

/**
 * One offline session: adapts frames that were captured already to the chip's offline ISP.
 *
 * Calling order: constructor, `create`, any number of `process` calls, optionally `flush`,
 * `destroy`, destructor. All calls come from one client thread at a time; results arrive on the ISP
 * HAL's threads, at the HalInterface::ClientCallback handed over at configuration. Every failure of
 * the ISP HAL while connecting, configuring and closing aborts the process.
 *
 * After `destroy` the device object must not be used again.
 */
class quenOfflineDevice {
  public:
    QUEN_EXPORT quenOfflineDevice();

    /** Releases what is still held. Does not close the ISP device: `destroy` does that. */
    QUEN_EXPORT ~quenOfflineDevice();

    quenOfflineDevice(quenOfflineDevice const&) = delete;
    quenOfflineDevice& operator=(quenOfflineDevice const&) = delete;

    /**
     * Connects to the ISP HAL and configures the session's streams.
     *
     * @param params null, or without inputs or outputs: connects only, and says so in the log
     */
    QUEN_EXPORT void create(SessionParams* params);

    /**
     * Sends a stream configuration to the ISP device and remembers it.
     *
     * @param out at least one stream; the first one's format decides the stage
     * @param meta session metadata, may be null
     */
    QUEN_EXPORT void config(std::vector<StreamConfig> const& in,
                            std::vector<StreamConfig> const& out, camera_metadata const* meta);

    /**
     * Submits one request.
     *
     * With a callback the call does not wait for the result, which goes to the callback. Without
     * one it blocks until the result is there, for "vendor.debug.camera.jpeg.timeout" seconds at
     * most (4 by default); in the default build a result that comes before the wait begins does not
     * end it. A JPEG is then copied into the client's first BLOB buffer. Either way the call blocks
     * for outstanding requests first when it has to configure anew.
     *
     * The hardened build answers -19 without a connected ISP device, -22 for a request that cannot
     * be served and -110 when no result came in time.
     *
     * @param params read during the call only
     * @param callback may be null
     * @return -22 for null params; the JPEG's size for a JPEG request without callback, -1 when it
     *         has no usable BLOB output or a size that its buffer cannot hold; 0 otherwise, also
     *         when the ISP device refused the request or the latest result is no success
     */
    QUEN_EXPORT int process(
            PostProcessParams const* params,
            android::sp<vendor::quen::hardware::camera::quenpostproc::V1_0::IQuenPostProcCallback>
                    callback);

    /** Asks the ISP device to flush; the outcome is ignored. */
    QUEN_EXPORT void flush();

    /**
     * Closes the ISP device and releases every reference. Outstanding requests are not waited for;
     * the fast-display bookkeeping, which the process's device objects share, is emptied.
     */
    QUEN_EXPORT void destroy();

    /**
     * Installs HalInterface::requestCallback as the HalInterface's request hook.
     *
     * @param callback held during the call only: results keep going to the ClientCallback that the
     *                 configuration handed over
     */
    QUEN_EXPORT void setOfflineCallback(
            android::sp<vendor::mediatek::hardware::camera::isphal::V1_0::ICallback> const&
                    callback);

  private:
    using Direction = quen::Direction;
    using ISPBuffer = vendor::mediatek::hardware::camera::isphal::V1_0::ISPBuffer;
    using ISPRequest = vendor::mediatek::hardware::camera::isphal::V1_0::ISPRequest;
    using ISPStream = vendor::mediatek::hardware::camera::isphal::V1_0::ISPStream;
    using ISPStreamConfiguration =
            vendor::mediatek::hardware::camera::isphal::V1_0::ISPStreamConfiguration;
    using IQuenPostProcCallback =
            vendor::quen::hardware::camera::quenpostproc::V1_0::IQuenPostProcCallback;

    void init();
    void uinit();
    void releaseConnection();
    bool isConnected(char const* operation) const;
    void rememberStreams(ISPStreamConfiguration const& configuration);
    void checkReconfigure(ImageBuffer const* input, std::vector<ImageBuffer*> const& outputs,
                          camera_metadata const* settings);

    int submitRequest(PostProcessParams const& params, android::sp<IQuenPostProcCallback> callback);
    int recordAndSubmit(PostProcessParams const& params,
                        android::hardware::hidl_vec<ISPRequest> const& requests,
                        OfflineRequest* record, android::sp<IQuenPostProcCallback> callback);
    int waitForResult(PostProcessParams const& params, ISPRequest const& request,
                      quen::JpegHandover& handover);

    // These forward to the free functions of their modules, which document them. The modules call
    // each other directly.
    static bool isNeedRaw14bit(camera_metadata const* meta, int inputFormat);
    void convertToISPBuffer(ImageBuffer const* imageBuffer, camera_metadata const* settings,
                            ISPBuffer* ispBuffer, bool* used3ADebugInfo,
                            android::hardware::hidl_handle& tuningData, Direction direction,
                            quen::TuningHandles& tuningHandles);
    static void allocGraphicBuffer(android::hardware::hidl_handle& handle, void const* source,
                                   int width, int height, int format, unsigned long usage,
                                   unsigned int& stride, int unused);
    static int getJpegSize(native_handle const* handle, int size);
    void updateMetaData(NSCam::IMetadata* meta, int width, int height);
    static void convertToISPMetadata(NSCam::IMetadata* meta, std::vector<unsigned char>& out);

    android::sp<vendor::mediatek::hardware::camera::isphal::V1_0::IDevice> mDevice;
    android::sp<vendor::mediatek::hardware::camera::isphal::V1_0::IISPModule> mISPModule;
    android::sp<HalInterface> mHalInterface;

    // The last configuration. Keys are positions, not stream ids: inputs 0..n-1, outputs n..n+m-1.
    std::map<uint64_t, ISPStream> mInputStreams;
    std::map<uint64_t, ISPStream> mOutputStreams;

    android::sp<NSCam::IMetadataConverter> mMetadataConverter;  // shared with the HalInterface

    quen::Mutex mLock;  // taken by setOfflineCallback only, before the HalInterface's own

    // "RAW2YUV" or "YUV2JPEG", of the last configuration. Every OfflineRequest points at it.
    char mStage[quen::kStageBytes];

    bool IsNeedRaw14bit;  // raw input is processed at 14 bits
};
