#define LOG_TAG "quenOfflineDevice"

#include <cstring>
#include <memory>
#include <optional>
#include <utility>

#include <quen/QuenParameterUpdater.h>
#include <system/graphics.h>

#include "quenCommon/Hardened.h"
#include "quenCommon/Log.h"
#include "quenGralloc/MapperHelper.h"
#include "quenOfflineDevice/ClientCallback.h"
#include "quenOfflineDevice/JpegCopy.h"
#include "quenOfflineDevice/JpegHandover.h"
#include "quenOfflineDevice/RequestNumbers.h"
#include "quenOfflineDevice/RequestValidation.h"
#include "quenOfflineDevice/TuningHandle.h"
#include "quenOfflineDevice/quenOfflineDevice.h"

using android::sp;
using android::hardware::hidl_handle;
using android::hardware::hidl_vec;
using android::hardware::Return;
using quen::RequestTable;
using vendor::mediatek::hardware::camera::isphal::V1_0::ISPBuffer;
using vendor::mediatek::hardware::camera::isphal::V1_0::ISPRequest;
using vendor::mediatek::hardware::camera::isphal::V1_0::Status;
using vendor::quen::hardware::camera::quenpostproc::V1_0::IQuenPostProcCallback;

namespace {

constexpr int kInvalidArgument = -22;
constexpr int kNoDevice = -19;
constexpr int kTimedOut = -110;

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

/**
 * Frees the device buffers of a synchronous request: the input's and, of several outputs, the last
 * one's. The hardened build frees the other outputs' device buffers too.
 */
void freeImages(ISPBuffer const& inputScratch, ISPBuffer const& outputScratch,
                hidl_vec<ISPBuffer> const& outputs, PostProcessParams const& params) {
    freeImage(inputScratch);
    if constexpr (quen::kHardened) {
        for (size_t i = 0; i + 1 < outputs.size(); ++i) {
            if (params.output_buffers[i]->format == HAL_PIXEL_FORMAT_BLOB) {
                freeImage(outputs[i]);
            }
        }
    }
    freeImage(outputScratch);
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
    if constexpr (quen::kHardened) {
        if (!isConnected("process")) {
            return kNoDevice;
        }
        char const* const fault = quen::findRequestFault(*params, callback == nullptr);
        if (fault != nullptr) {
            QLOGE("process request failed: %s", fault);
            return kInvalidArgument;
        }
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
 * come too early; in the default build it stays there when the ISP device refuses.
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

    auto* const record = new OfflineRequest{request.requestNumber, metadata.release(), inputTuning,
                                            outputTuning,          used3ADebugInfo,    mStage};
    int const result = recordAndSubmit(params, requests, record, callback);
    if (callback == nullptr) {
        freeImages(inputScratch, outputScratch, request.outputBuffers, params);
    }
    return result;
}

/**
 * Records a request, submits it and, without a client callback, waits for its result.
 *
 * @param requests the one request
 * @param record the table's once recorded
 * @return what `process` returns
 */
int quenOfflineDevice::recordAndSubmit(PostProcessParams const& params,
                                       hidl_vec<ISPRequest> const& requests, OfflineRequest* record,
                                       sp<IQuenPostProcCallback> const& callback) {
    ISPRequest const& request = requests[0];
    std::optional<quen::JpegHandover> handover;
    if (callback == nullptr) {
        handover.emplace(mHalInterface->callback().get(), request.requestNumber);
    }
    RequestTable::Insertion const insertion = mHalInterface->record(record, callback);
    if constexpr (quen::kHardened) {
        if (insertion == RequestTable::Insertion::Closed) {
            quen::destroyOfflineRequest(record);
            return kNoDevice;
        }
    }
    Return<Status> const submitted = mDevice->processISPRequest(requests);
    bool const accepted = submitted.isOk() && static_cast<Status>(submitted) == Status::OK;
    int result = 0;
    if (handover && accepted) {
        result = waitForResult(params, request, *handover);
    } else if (handover) {
        QLOGE("ISPDevice process failed result");
    }
    if constexpr (quen::kHardened) {
        if (insertion == RequestTable::Insertion::NumberTaken) {
            quen::destroyOfflineRequest(record);
        } else if (!accepted) {
            mHalInterface->withdraw(request.requestNumber, record);
        }
    }
    return result;
}

/**
 * Waits for the result of the request just submitted and, when encoding, copies the JPEG. In the
 * default build a time-out goes on like a result, with the status that the latest result left.
 *
 * gJpegMutex is held from the wait until the size is logged.
 *
 * @return the JPEG's size; -1 without a usable BLOB output or when it cannot hold the JPEG; 0 when
 * there is nothing to copy; -110 when the hardened build's wait timed out
 */
int quenOfflineDevice::waitForResult(PostProcessParams const& params, ISPRequest const& request,
                                     quen::JpegHandover& handover) {
    QLOGI("wait JPEG process");
    handover.startTimeout();
    quen::MutexLock const lock(quen::gJpegMutex);
    bool const hasResult = handover.wait();
    QLOGI("JPEG process done");
    int result = 0;
    if (!hasResult) {
        QLOGE("wait JPEG process timed out, request number %u has no result",
              request.requestNumber);
        result = kTimedOut;
    } else if (handover.status() == 0 && strcmp(mStage, kStageYuvToJpeg) == 0) {
        result = quen::copyJpeg(params, request.outputBuffers);
    }
    QLOGI("jpegSize is %d", result);
    return result;
}

/** See quen::getJpegSize. */
int quenOfflineDevice::getJpegSize(native_handle const* handle, int size) {
    return quen::getJpegSize(handle, size);
}
