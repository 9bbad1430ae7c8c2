#define LOG_TAG "quenOfflineDevice"

#include "quenOfflineDevice/quenOfflineDevice.h"

#include <cstring>
#include <iterator>
#include <memory>
#include <optional>
#include <utility>

#include <nscam/IMetadataTagSet.h>
#include <quen/QuenParameterUpdater.h>
#include <system/graphics.h>

#include "quenCommon/Hardened.h"
#include "quenCommon/Log.h"
#include "quenGralloc/MapperHelper.h"
#include "quenOfflineDevice/ProcessState.h"
#include "quenOfflineDevice/bridge/ClientCallback.h"
#include "quenOfflineDevice/jpeg/JpegCopy.h"
#include "quenOfflineDevice/jpeg/JpegHandover.h"
#include "quenOfflineDevice/metadata/IspMetadata.h"
#include "quenOfflineDevice/metadata/RequestMetadata.h"
#include "quenOfflineDevice/request/BufferConversion.h"
#include "quenOfflineDevice/request/DeviceBuffer.h"
#include "quenOfflineDevice/request/RequestNumbers.h"
#include "quenOfflineDevice/request/RequestValidation.h"
#include "quenOfflineDevice/session/IspStreams.h"

using android::sp;
using android::hardware::hidl_handle;
using android::hardware::hidl_vec;
using android::hardware::Return;
using quen::RequestTable;
using vendor::mediatek::hardware::camera::isphal::V1_0::ICallback;
using vendor::mediatek::hardware::camera::isphal::V1_0::IDevice;
using vendor::mediatek::hardware::camera::isphal::V1_0::IISPModule;
using vendor::mediatek::hardware::camera::isphal::V1_0::ISPBuffer;
using vendor::mediatek::hardware::camera::isphal::V1_0::ISPRequest;
using vendor::mediatek::hardware::camera::isphal::V1_0::ISPStream;
using vendor::mediatek::hardware::camera::isphal::V1_0::Status;
using vendor::quen::hardware::camera::quenpostproc::V1_0::IQuenPostProcCallback;

namespace {

constexpr char kModuleInstance[] = "internal/0";

constexpr int kInvalidArgument = -22;
constexpr int kNoDevice = -19;
constexpr int kTimedOut = -110;

StreamConfig describe(ImageBuffer const& buffer, bool isOutput) {
    return {buffer.streamId, buffer.format, static_cast<uint32_t>(buffer.width),
            static_cast<uint32_t>(buffer.height), isOutput};
}

std::vector<StreamConfig> describeOutputs(std::vector<ImageBuffer*> const& outputs) {
    std::vector<StreamConfig> streams;
    streams.reserve(outputs.size());
    for (ImageBuffer const* const output : outputs) {
        streams.push_back(describe(*output, true));
    }
    return streams;
}

bool matches(ISPStream const& configured, StreamConfig const& wanted) {
    return configured.width == wanted.width && configured.height == wanted.height &&
           configured.format == wanted.format;
}

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

/** Frees the buffer behind an image handle, the client's own included. */
void freeImage(ISPBuffer const& buffer) {
    native_handle const* const handle = buffer.buffer.getNativeHandle();
    if (handle != nullptr) {
        MapperHelper::getInstance().freeBuffer(handle);
    }
}

/**
 * Frees the device buffers of a synchronous request: the input's and the last output's. The
 * hardened build frees the other outputs' device buffers too.
 */
void freeImages(ISPRequest const& request, PostProcessParams const& params) {
    freeImage(request.inputBuffers[0]);
    hidl_vec<ISPBuffer> const& outputs = request.outputBuffers;
    if constexpr (quen::kHardened) {
        for (size_t i = 0; i + 1 < outputs.size(); ++i) {
            if (params.output_buffers[i]->format == HAL_PIXEL_FORMAT_BLOB) {
                freeImage(outputs[i]);
            }
        }
    }
    if (outputs.size() != 0) {
        freeImage(outputs[outputs.size() - 1]);
    }
}

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
 * Reads IsNeedRaw14bit, which the caller has set; sets the stage and both stream tables. Entries
 * are added or replaced by key, never removed. A failure of the ISP device aborts.
 */
void quenOfflineDevice::config(std::vector<StreamConfig> const& in,
                               std::vector<StreamConfig> const& out, camera_metadata const* meta) {
    if constexpr (quen::kHardened) {
        if (!isConnected("config")) {
            return;
        }
        if (out.empty()) {
            QLOGE("config: there are no output streams; the first one decides the stage");
            return;
        }
    }
    QLOGI("config stage E");
    NSCam::IMetadata metadata;
    mMetadataConverter->convert(meta, metadata);
    std::vector<unsigned char> settings;
    convertToISPMetadata(&metadata, settings);
    quen::appendSessionSettings(settings, meta, IsNeedRaw14bit);
    QLOGI("config stage init metadata");

    memset(mStage, 0, sizeof(mStage));
    strcpy(mStage, quen::stageOf(out[0].format));

    ISPStreamConfiguration configuration;
    configuration.inputStreams = quen::buildIspStreams(Direction::Input, in, out);
    configuration.outputStreams = quen::buildIspStreams(Direction::Output, out, out);
    quen::clearPadding(configuration.inputStreams);
    quen::clearPadding(configuration.outputStreams);
    configuration.sessionSettings = settings;
    QLOGI("config stage %s InputStreams size is %d, OutputStreams size is %d", mStage,
          static_cast<int>(configuration.inputStreams.size()),
          static_cast<int>(configuration.outputStreams.size()));

    rememberStreams(configuration);
    sp<ICallback> const callback = mHalInterface->callback();
    Return<Status> const configured = mDevice->configureISPDevice(configuration, callback);
    if (!configured.isOk()) {
        QFATAL("[Fatal] Transaction error in configureISPDevice from ISPDevice:%s",
               configured.description().c_str());
    }
    Status const status = configured;
    if (status != Status::OK) {
        QFATAL("[Fatal] configureISPDevice failed:%s", toString(status).c_str());
    }
    QLOGI("config stage X");
}

/** Adds a configuration's streams to the tables, by position, or replaces what stood there. */
void quenOfflineDevice::rememberStreams(ISPStreamConfiguration const& configuration) {
    for (size_t i = 0; i < configuration.inputStreams.size(); ++i) {
        mInputStreams[i] = configuration.inputStreams[i];
        ISPStream const& entry =
                std::next(mInputStreams.begin(), static_cast<ptrdiff_t>(i))->second;
        QLOGI("config input streamIndex = %d, width = %d, height = %d, format = %d",
              static_cast<int>(i), entry.width, entry.height, entry.format);
    }
    for (size_t j = 0; j < configuration.outputStreams.size(); ++j) {
        mOutputStreams[configuration.inputStreams.size() + j] = configuration.outputStreams[j];
        // By position: entries of an earlier configuration may stand before it.
        ISPStream const& entry =
                std::next(mOutputStreams.begin(), static_cast<ptrdiff_t>(j))->second;
        QLOGI("config output streamIndex = %d, width = %d, height = %d format = %d",
              static_cast<int>(j), entry.width, entry.height, entry.format);
    }
}

/**
 * The entry line logs the previous request's stage, the exit line this request's.
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
 * Configures the ISP device anew when the request's buffers or its raw depth are not those of the
 * last configuration, after the outstanding requests have drained or were given up. Blocks
 * meanwhile. An object that is not connected only notes the raw depth.
 *
 * Compares with the streams as configured: an RGB reprocess input is configured as a BLOB of a
 * third of its width, so it never matches the client's buffer and is configured for every request.
 * Outputs are compared by size and format, whatever their number and ids; none at all configured
 * forces a configuration, no input configured does not.
 *
 * @param outputs not empty: a configuration takes its stage from the first
 */
void quenOfflineDevice::checkReconfigure(ImageBuffer const* input,
                                         std::vector<ImageBuffer*> const& outputs,
                                         camera_metadata const* settings) {
    QLOGI("process request %s stage checkReconfigure E", mStage);
    StreamConfig const inputStream = describe(*input, false);
    bool needReconfigure = false;
    if (!mInputStreams.empty()) {
        ISPStream const& last = mInputStreams.begin()->second;
        QLOGI("last config input stream info width = %d, height = %d, format is equal %d",
              last.width, last.height, last.format == inputStream.format);
        needReconfigure = !matches(last, inputStream);
    }
    for (ImageBuffer const* const output : outputs) {
        StreamConfig const outputStream = describe(*output, true);
        bool matched = false;
        int index = 0;
        for (auto const& [key, last] : mOutputStreams) {
            QLOGI("last config output stream info streamIndex %d, width = %d, height = %d, "
                  "format is equal %d",
                  index, last.width, last.height, last.format == outputStream.format);
            matched = matches(last, outputStream);
            if (matched) {
                break;
            }
            ++index;
        }
        needReconfigure = needReconfigure || !matched;
    }

    bool const raw14bit = isNeedRaw14bit(settings, input->format);
    QLOGI("current snapshot IsNeedRaw14bit %d, last snapshot IsNeedRaw14bit %d", raw14bit,
          IsNeedRaw14bit);
    if (raw14bit != IsNeedRaw14bit) {
        needReconfigure = true;
        IsNeedRaw14bit = raw14bit;
    }
    QLOGI("needReconfigure %d", needReconfigure);
    if (needReconfigure && mHalInterface != nullptr) {
        // Taken before the wait: the client may change its records meanwhile.
        std::vector<StreamConfig> const outputStreams = describeOutputs(outputs);
        mHalInterface->waitForRequestDrained();
        mInputStreams.clear();
        mOutputStreams.clear();
        config({inputStream}, outputStreams, settings);
    }
    QLOGI("process request %s stage checkReconfigure X", mStage);
}

/**
 * Converts, records and submits one request, and waits for its result when there is no client
 * callback.
 *
 * The record goes into the request table before the ISP device sees the request, so no result can
 * arrive for an unknown request; in the default build it stays there when the ISP device refuses.
 *
 * @return what `process` returns
 */
int quenOfflineDevice::submitRequest(PostProcessParams const& params,
                                     sp<IQuenPostProcCallback> callback) {
    bool const waits = callback == nullptr;
    quen::TuningHandles tuningHandles;
    hidl_handle inputTuning;
    hidl_handle outputTuning;
    bool used3ADebugInfo = false;

    hidl_vec<ISPRequest> requests;
    requests.resize(1);
    ISPRequest& request = requests[0];
    request.inputBuffers.resize(1);
    request.outputBuffers.resize(params.output_buffers.size());
    // Filled in place: a copy of a record would duplicate the descriptors of its handles.
    convertToISPBuffer(params.input_buffer, params.settings, &request.inputBuffers[0],
                       &used3ADebugInfo, inputTuning, Direction::Input, tuningHandles);
    for (size_t i = 0; i < params.output_buffers.size(); ++i) {
        convertToISPBuffer(params.output_buffers[i], params.settings, &request.outputBuffers[i],
                           &used3ADebugInfo, outputTuning, Direction::Output, tuningHandles);
    }

    auto metadata = std::make_unique<NSCam::IMetadata>();
    mMetadataConverter->convert(params.settings, *metadata);
    request.requestNumber = quen::assignRequestNumber(*metadata, mStage, params.frame_number);

    ImageBuffer const* const firstOutput = params.output_buffers[0];
    ImageBuffer const* const picture =
            firstOutput->format == HAL_PIXEL_FORMAT_BLOB ? firstOutput : params.input_buffer;
    updateMetaData(metadata.get(), picture->width, picture->height);
    std::vector<unsigned char> settings;
    convertToISPMetadata(metadata.get(), settings);
    // The bytes outlive the submission, so they are not copied again.
    request.settings.setToExternal(settings.data(), settings.size());

    auto* const record = new OfflineRequest{request.requestNumber, metadata.release(), inputTuning,
                                            outputTuning,          used3ADebugInfo,    mStage};
    int const result = recordAndSubmit(params, requests, record, std::move(callback));
    if (waits) {
        freeImages(request, params);
    }
    return result;
}

/**
 * Records a request, submits it and, without a client callback, waits for its result.
 *
 * @param requests the one request
 * @param record owned by the request table once recorded
 * @return what `process` returns
 */
int quenOfflineDevice::recordAndSubmit(PostProcessParams const& params,
                                       hidl_vec<ISPRequest> const& requests, OfflineRequest* record,
                                       sp<IQuenPostProcCallback> callback) {
    ISPRequest const& request = requests[0];
    std::optional<quen::JpegHandover> handover;
    if (callback == nullptr) {
        handover.emplace(mHalInterface->callback().get(), request.requestNumber);
    }
    RequestTable::Insertion const insertion = mHalInterface->record(record, std::move(callback));
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
 * default build a time-out is handled like a result, with the status that the latest result left.
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
    } else if (handover.status() == 0 && quen::isYuvToJpeg(mStage)) {
        result = quen::copyJpeg(params, request.outputBuffers);
    }
    QLOGI("jpegSize is %d", result);
    return result;
}

/** Forwards to quen::isNeedRaw14bit. */
bool quenOfflineDevice::isNeedRaw14bit(camera_metadata const* meta, int inputFormat) {
    return quen::isNeedRaw14bit(meta, inputFormat);
}

/** Forwards to quen::convertToISPBuffer, with the device's stage. */
void quenOfflineDevice::convertToISPBuffer(ImageBuffer const* imageBuffer,
                                           camera_metadata const* settings, ISPBuffer* ispBuffer,
                                           bool* used3ADebugInfo, hidl_handle& tuningData,
                                           Direction direction,
                                           quen::TuningHandles& tuningHandles) {
    quen::convertToISPBuffer(imageBuffer, {mStage, settings, tuningHandles}, ispBuffer,
                             used3ADebugInfo, tuningData, direction);
}

/** Forwards to quen::allocGraphicBuffer. */
void quenOfflineDevice::allocGraphicBuffer(hidl_handle& handle, void const* source, int width,
                                           int height, int format, unsigned long usage,
                                           unsigned int& stride, int /*unused*/) {
    quen::allocGraphicBuffer(handle, source, width, height, format, usage, stride);
}

/** Forwards to quen::getJpegSize. */
int quenOfflineDevice::getJpegSize(native_handle const* handle, int size) {
    return quen::getJpegSize(handle, size);
}

/** Forwards to quen::updateMetaData, with the device's stage and raw depth. */
void quenOfflineDevice::updateMetaData(NSCam::IMetadata* meta, int width, int height) {
    quen::updateMetaData(meta, width, height, mStage, IsNeedRaw14bit);
}

/** Forwards to quen::convertToISPMetadata. */
void quenOfflineDevice::convertToISPMetadata(NSCam::IMetadata* meta,
                                             std::vector<unsigned char>& out) {
    quen::convertToISPMetadata(meta, out);
}

void quenOfflineDevice::flush() {
    if constexpr (quen::kHardened) {
        if (!isConnected("flush")) {
            return;
        }
    }
    // The outcome is ignored on purpose, but a Return that is never checked can abort the process.
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
    sp<android::RefBase> held = mHalInterface->reserved();
    held = callback;
    { sp<android::RefBase> const reserved = mHalInterface->reserved(); }
    mHalInterface->registerRequestCB(&HalInterface::requestCallback);
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

/**
 * Closes the ISP device and releases what `init` acquired; every failure aborts. Outstanding
 * requests are not waited for. The process-wide request numbers are cleared too, those of other
 * device objects included.
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

/** Releases what `init` acquired, without closing the ISP device. */
void quenOfflineDevice::releaseConnection() {
    mDevice = nullptr;
    mISPModule = nullptr;
    mHalInterface = nullptr;
    mMetadataConverter = nullptr;
    quen::forgetRequestNumbers();
}

/**
 * Whether `create` has connected the object and the ISP module is alive; logs the reason when
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
