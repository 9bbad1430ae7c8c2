#define LOG_TAG "quenOfflineDevice"

#include <memory>
#include <utility>

#include <quen/QuenParameterUpdater.h>
#include <system/graphics.h>

#include "quenCommon/Log.h"
#include "quenGralloc/MapperHelper.h"
#include "quenOfflineDevice/RequestNumbers.h"
#include "quenOfflineDevice/TuningHandle.h"
#include "quenOfflineDevice/quenOfflineDevice.h"

using android::sp;
using android::hardware::hidl_handle;
using android::hardware::hidl_vec;
using android::hardware::Return;
using vendor::mediatek::hardware::camera::isphal::V1_0::ISPBuffer;
using vendor::mediatek::hardware::camera::isphal::V1_0::ISPRequest;
using vendor::mediatek::hardware::camera::isphal::V1_0::Status;
using vendor::quen::hardware::camera::quenpostproc::V1_0::IQuenPostProcCallback;

namespace {

constexpr int kInvalidArgument = -22;

void logBuffers(PostProcessParams const& params) {
    ImageBuffer const& input = *params.input_buffer;
    QLOGI("reprocess request session %p, frame_number %d input_buffer info : streamId = %d, "
          "width = %d, height = %d, size %d, format = %d",
          params.session, params.frame_number, input.streamId, input.width, input.height,
          input.size, input.format);
    for (ImageBuffer const* const output : params.output_buffers) {
        QLOGI("reprocess request session %p, frame_number %d output_buffer info : streamId = %d, "
              "width = %d, height = %d, size %d, format = %d",
              params.session, params.frame_number, output->streamId, output->width, output->height,
              output->size, output->format);
    }
}

/** Frees what a scratch record's image handle stands for, whosever buffer it is. */
void freeImage(ISPBuffer const& scratch) {
    native_handle const* const handle = scratch.buffer.getNativeHandle();
    if (handle != nullptr) {
        MapperHelper::getInstance().freeBuffer(handle);
    }
}

}  // namespace

/**
 * The lines that frame a request name the device's stage: at entry the previous request's, at exit
 * this one's.
 */
int quenOfflineDevice::process(PostProcessParams const* params,
                               sp<IQuenPostProcCallback> callback) {
    QLOGI("reprocess request stage %s E", mStage);
    if (params == nullptr) {
        QLOGE("PostProcessParams is nullptr, process request failed");
        return kInvalidArgument;
    }
    logBuffers(*params);
    QuenParameterUpdater::dumpMetadata(params->settings, mStage, params->frame_number);
    checkReconfigure(params->input_buffer, params->output_buffers, params->settings);
    int const result = submitRequest(*params, std::move(callback));
    QLOGI("reprocess request stage %s X", mStage);
    return result;
}

/**
 * Converts, records and submits one request, and waits for its result when nobody else will be
 * told.
 *
 * The record goes into the request table before the ISP device sees the request, so no result can
 * come too early; it stays there when the ISP device refuses.
 *
 * @return what `process` returns
 */
int quenOfflineDevice::submitRequest(PostProcessParams const& params,
                                     sp<IQuenPostProcCallback> callback) {
    TuningHandleScope const tuningHandles;
    ISPBuffer inputScratch = {};
    ISPBuffer outputScratch = {};
    hidl_handle inputTuning;
    hidl_handle outputTuning;
    bool used3ADebugInfo = false;

    hidl_vec<ISPRequest> requests;
    requests.resize(1);
    ISPRequest& request = requests[0];
    request.inputBuffers.resize(1);
    request.outputBuffers.resize(params.output_buffers.size());
    convertToISPBuffer(params.input_buffer, params.settings, &inputScratch, &used3ADebugInfo,
                       inputTuning, Direction::Input);
    request.inputBuffers[0] = inputScratch;
    for (size_t i = 0; i < params.output_buffers.size(); ++i) {
        convertToISPBuffer(params.output_buffers[i], params.settings, &outputScratch,
                           &used3ADebugInfo, outputTuning, Direction::Output);
        request.outputBuffers[i] = outputScratch;
    }

    auto metadata = std::make_unique<NSCam::IMetadata>();
    mMetadataConverter->convert(params.settings, *metadata);
    request.requestNumber = assignRequestNumber(*metadata, mStage, params.frame_number);

    ImageBuffer const* const firstOutput = params.output_buffers[0];
    ImageBuffer const* const picture =
            firstOutput->format == HAL_PIXEL_FORMAT_BLOB ? firstOutput : params.input_buffer;
    updateMetaData(metadata.get(), picture->width, picture->height);
    std::vector<unsigned char> settings;
    convertToISPMetadata(metadata.get(), settings);
    // The bytes outlive the request's submission: no second copy is made of them.
    request.settings.setToExternal(settings.data(), settings.size());

    auto* const offlineRequest =
            new OfflineRequest{request.requestNumber, metadata.release(), inputTuning,
                               outputTuning,          used3ADebugInfo,    mStage};
    mHalInterface->recordISPRequest(offlineRequest, callback);

    Return<Status> const submitted = mDevice->processISPRequest(requests);
    bool const accepted = submitted.isOk() && static_cast<Status>(submitted) == Status::OK;
    if (callback != nullptr) {
        return 0;
    }
    int result = 0;
    if (accepted) {
        result = waitForResult(params, request.outputBuffers);
    } else {
        QLOGE("ISPDevice process failed result");
    }
    freeImage(inputScratch);
    freeImage(outputScratch);
    return result;
}
