#define LOG_TAG "quenOfflineDevice"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include <system/camera_metadata.h>

#include "quenCommon/Log.h"
#include "quenGralloc/MapperHelper.h"
#include "quenOfflineDevice/CpuUsage.h"
#include "quenOfflineDevice/HalInterface.h"
#include "quenOfflineDevice/JpegHandover.h"
#include "quenOfflineDevice/MetadataTags.h"
#include "quenOfflineDevice/Stage.h"
#include "quenOfflineDevice/TuningBuffer.h"

using android::sp;
using android::hardware::hidl_handle;
using android::hardware::hidl_vec;
using android::hardware::Return;
using android::hardware::Void;
using NSCam::IMetadata;
using NSCam::Type2Type;

namespace {

/** What the ISP says of the tuning data it wrote. */
struct TuningHeader {
    int32_t requestNo = 0;
    int32_t frameNumber = 0;
    int32_t totalUsedBytes = 0;  // counted from the buffer's start
};

constexpr size_t kRequestNoOffset = 0;
constexpr size_t kFrameNumberOffset = 12;
constexpr size_t kTotalUsedBytesOffset = 32;

/** Reads the header; all zero when the buffer cannot be accessed. */
TuningHeader readTuningHeader(void const* address) {
    TuningHeader header;
    if (address == nullptr || address == MAP_FAILED) {
        return header;
    }
    auto const* const bytes = static_cast<uint8_t const*>(address);
    memcpy(&header.requestNo, bytes + kRequestNoOffset, sizeof(header.requestNo));
    memcpy(&header.frameNumber, bytes + kFrameNumberOffset, sizeof(header.frameNumber));
    memcpy(&header.totalUsedBytes, bytes + kTotalUsedBytesOffset, sizeof(header.totalUsedBytes));
    return header;
}

/** Logs the header of a tuning buffer that lives in a 3A buffer; its data stays there. */
void logExternalTuningData(native_handle const* handle) {
    int const descriptor = handle == nullptr ? -1 : handle->data[kTuningDescriptorSlot];
    void* const address =
            mmap(nullptr, kTuningDataBytes, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    TuningHeader const header = readTuningHeader(address);
    QLOGI("requestNo %d, frameNumber %d, totalUsedBytes %d, bufferFd %d", header.requestNo,
          header.frameNumber, header.totalUsedBytes, descriptor);
    munmap(address, kTuningDataBytes);
}

/** Puts the used bytes of a graphic tuning buffer into the result metadata, as one block. */
void takeTuningData(native_handle const* handle, IMetadata& resultMetadata) {
    MapperHelper mapper = MapperHelper::getInstance();
    mapper.importBuffer(handle);
    void* address = nullptr;
    mapper.lock(handle, kCpuReadOften, {0, 0, static_cast<int32_t>(kTuningDataBytes), 1}, -1,
                address);
    TuningHeader const header = readTuningHeader(address);
    QLOGI("requestNo %d, frameNumber %d, totalUsedBytes %d", header.requestNo, header.frameNumber,
          header.totalUsedBytes);
    // A buffer has no more bytes than its size, whatever its header says.
    int32_t const usedBytes =
            std::clamp(header.totalUsedBytes, 0, static_cast<int32_t>(kTuningDataBytes));
    IMetadata::IEntry entry(tag::kYuvTuningData);
    entry.push_back(static_cast<uint8_t const*>(address), static_cast<size_t>(usedBytes),
                    Type2Type<uint8_t>());
    resultMetadata.update(tag::kYuvTuningData, entry);
    int releaseFence = -1;
    mapper.unlock(handle, releaseFence);
    if (releaseFence >= 0) {
        close(releaseFence);
    }
    mapper.freeBuffer(handle);
}

/** Carries the result's 3A buffer index over into the request's metadata, which wins the merge. */
void carry3ABufferIndex(IMetadata const& resultMetadata, IMetadata& requestMetadata) {
    int32_t value = -1;
    IMetadata::IEntry const resultEntry = resultMetadata.entryFor(tag::k3ABufferIndex);
    if (!resultEntry.isEmpty()) {
        value = resultEntry.itemAt(0, Type2Type<int32_t>());
    }
    if (value == -1) {
        return;
    }
    IMetadata::IEntry entry = requestMetadata.entryFor(tag::k3ABufferIndex);
    if (entry.isEmpty()) {
        entry.push_back(value, Type2Type<int32_t>());
    } else {
        entry.replaceItemAt(0, value, Type2Type<int32_t>());
    }
    requestMetadata.update(tag::k3ABufferIndex, entry);
}

void logCurrentMode(IMetadata const& resultMetadata) {
    IMetadata::IEntry const entry = resultMetadata.entryFor(tag::kCurrentMode);
    if (entry.isEmpty()) {
        QLOGE("get currentMode failed from resultMetadata");
        return;
    }
    QLOGI("resultMetadata currentMode %lld",
          static_cast<long long>(entry.itemAt(0, Type2Type<int64_t>())));
}

/** Releases what a request's tuning handle stands for. */
void releaseTuningBuffer(hidl_handle& handle, bool isExternal, char const* name) {
    native_handle const* const raw = handle.getNativeHandle();
    if (raw == nullptr) {
        return;
    }
    if (isExternal) {
        QLOGD("%s FD %d, %d", name, raw->data[0], raw->data[kTuningDescriptorSlot]);
        handle = nullptr;
        return;
    }
    MapperHelper::getInstance().freeBuffer(raw);
}

void destroyRequest(OfflineRequest* request) {
    if (request == nullptr) {
        return;
    }
    delete request->metadata;
    request->metadata = nullptr;
    releaseTuningBuffer(request->inputTuningBuffer, request->tuningBufferIsExternal,
                        "inputTuningData");
    releaseTuningBuffer(request->outputTuningBuffer, request->tuningBufferIsExternal,
                        "outputTuningData");
    delete request;
}

}  // namespace

/**
 * Client status of an ISP status. The ISP's value 6 has no name and reaches the client as success.
 */
HalInterface::ClientCallback::ClientStatus HalInterface::ClientCallback::convertStatus(
        IspStatus status) {
    static constexpr ClientStatus kClientStatus[] = {
            ClientStatus::ILLEGAL_ARGUMENT,         // 1
            ClientStatus::RESOURCE_ERROR,           // 2
            ClientStatus::REQUEST_ERROR,            // 3
            ClientStatus::REQUEST_STREAM_ID_ERROR,  // 4
            ClientStatus::RESULT_ERROR,             // 5
            ClientStatus::OK,                       // 6
            ClientStatus::INTERNAL_ERROR,           // 7
    };
    uint32_t const index = static_cast<uint32_t>(status) - 1;
    bool const known = index < sizeof(kClientStatus) / sizeof(kClientStatus[0]);
    return known ? kClientStatus[index] : ClientStatus::OK;
}

/** The text is the final result's on purpose: log readers look for one text. */
Return<void> HalInterface::ClientCallback::processEarlyResult(ISPResult const& result) {
    if (result.status != IspStatus::OK) {
        QLOGE("processResult %u failed", result.reqNumber);
    }
    return Void();
}

/**
 * Delivers a final result to whoever waits for it, destroys the request and wakes a drained wait
 * when it was the last one. A failed result is delivered like a good one, with its status.
 *
 * The table is used without a lock, see the class; the entry is copied, because a drained wait that
 * gives up empties the table meanwhile.
 */
Return<void> HalInterface::ClientCallback::processResult(ISPResult const& result) {
    auto const found = mOfflineRequestCallback.find(result.reqNumber);
    if (found == mOfflineRequestCallback.end()) {
        QLOGE("cannot find capture request %u", result.reqNumber);
        return Void();
    }
    offlineRequestCallback entry = found->second;
    // The device's text may be another's before the last line, or gone: its client reconfigures or
    // destroys it when a waiting call was released, a drained wait gave up or the callback
    // returned.
    char stage[kStageBytes] = {};
    strncpy(stage, entry.request->stage, kStageBytes - 1);
    bool const isOk = result.status == IspStatus::OK;
    QLOGI("reprocess result stage %s number %d Result callback, result.status is OK %d E", stage,
          result.reqNumber, isOk);
    if (!isOk) {
        QLOGE("processResult %u failed", result.reqNumber);
    }
    if (entry.callback == nullptr) {
        QLOGI("JPEG callback");
        signalJpegResult(static_cast<int32_t>(convertStatus(result.status)));
    } else {
        deliverToClient(result, entry, stage);
    }
    destroyRequest(entry.request);
    mOfflineRequestCallback.erase(result.reqNumber);
    entry.callback = nullptr;

    pthread_mutex_lock(&mDrainLock);
    if (mOfflineRequestCallback.empty()) {
        QLOGI("all result process done, single waitForRequestDrained");
        pthread_cond_signal(&mDrainCond);
    }
    pthread_mutex_unlock(&mDrainLock);
    QLOGI("reprocess result stage %s number %d Result callback, result.status is OK %d X", stage,
          result.reqNumber, isOk);
    return Void();
}

/** Gives a result's metadata, then the end of the request, to the client. */
void HalInterface::ClientCallback::deliverToClient(ISPResult const& result,
                                                   offlineRequestCallback const& entry,
                                                   char const* stage) {
    QLOGD("callback request");
    OfflineRequest const& request = *entry.request;
    IMetadata resultMetadata;
    convertToIMetadata(result.resultMetadata.data(), resultMetadata);
    carry3ABufferIndex(resultMetadata, *request.metadata);
    resultMetadata += *request.metadata;
    logCurrentMode(resultMetadata);
    if (strcmp(stage, kStageRawToYuv) == 0) {
        native_handle const* const tuningData = request.outputTuningBuffer.getNativeHandle();
        if (request.tuningBufferIsExternal) {
            logExternalTuningData(tuningData);
        } else {
            takeTuningData(tuningData, resultMetadata);
        }
    }
    hidl_vec<uint8_t> clientMetadata;  // points at the converter's buffer without owning it
    mMetadataConverter->convert(resultMetadata, clientMetadata);
    ClientStatus const status = convertStatus(result.status);
    // Ignored on purpose, but an outcome that nobody looks at can abort the process.
    (void)entry.callback->notifyResultMetadata(result.reqNumber, clientMetadata, status).isOk();
    (void)entry.callback->notifyRequestResult(result.reqNumber, status).isOk();
    free_camera_metadata(reinterpret_cast<camera_metadata*>(clientMetadata.data()));
}
