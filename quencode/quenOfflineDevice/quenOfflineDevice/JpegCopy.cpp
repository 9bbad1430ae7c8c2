#define LOG_TAG "quenOfflineDevice"

#include <unistd.h>

#include <cstring>

#include <system/graphics.h>

#include "quenCommon/Log.h"
#include "quenGralloc/MapperHelper.h"
#include "quenOfflineDevice/ClientMapping.h"
#include "quenOfflineDevice/CpuUsage.h"
#include "quenOfflineDevice/JpegHandover.h"
#include "quenOfflineDevice/Stage.h"
#include "quenOfflineDevice/quenOfflineDevice.h"

using android::hardware::hidl_vec;

namespace {

constexpr int kNoJpeg = -1;

/** Position of the first BLOB output; the number of outputs when there is none. */
size_t findBlob(std::vector<ImageBuffer*> const& outputs) {
    size_t index = 0;
    while (index < outputs.size() && outputs[index]->format != HAL_PIXEL_FORMAT_BLOB) {
        ++index;
    }
    return index;
}

/** Copies the first `size` bytes of a device buffer; left out when one side cannot be accessed. */
void copyFromDevice(native_handle const* handle, int size, void* target) {
    MapperHelper mapper = MapperHelper::getInstance();
    mapper.importBuffer(handle);
    void* source = nullptr;
    mapper.lock(handle, kCpuReadWriteOften, {0, 0, size, 1}, -1, source);
    if (source != nullptr && target != MAP_FAILED) {
        memcpy(target, source, static_cast<size_t>(size));
    }
    int releaseFence = -1;
    mapper.unlock(handle, releaseFence);
    if (releaseFence >= 0) {
        close(releaseFence);
    }
    mapper.freeBuffer(handle);
}

}  // namespace

/**
 * Waits for the result of the request just submitted and, when encoding, copies the JPEG. A
 * time-out goes on like a result, with the status that the latest result left.
 *
 * gJpegMutex is held from the wait until the copy is done.
 *
 * @param outputs the ISP's buffers, in the order of the client's
 * @return the JPEG's size; -1 without a usable BLOB output or when it cannot hold the JPEG; 0 when
 * there is nothing to copy
 */
int quenOfflineDevice::waitForResult(PostProcessParams const& params,
                                     hidl_vec<ISPBuffer> const& outputs) {
    waitForJpegResultLocking();
    int result = 0;
    if (gJpegResultStatus == 0 && strcmp(mStage, kStageYuvToJpeg) == 0) {
        result = copyJpeg(params, outputs);
    }
    QLOGI("jpegSize is %d", result);
    pthread_mutex_unlock(&gJpegMutex);
    return result;
}

/** Copies the finished JPEG from the ISP's buffer into the client's first BLOB buffer. */
int quenOfflineDevice::copyJpeg(PostProcessParams const& params,
                                hidl_vec<ISPBuffer> const& outputs) {
    size_t const index = findBlob(params.output_buffers);
    if (index == params.output_buffers.size()) {
        QLOGE("Invalid output buffer");
        return kNoJpeg;
    }
    ImageBuffer const& client = *params.output_buffers[index];
    native_handle const* const device = outputs[index].buffer.getNativeHandle();
    void* const target = mapClientBuffer(client);
    int const jpegSize = getJpegSize(device, client.size);
    if (device == nullptr) {
        // The mapping is left behind on purpose: see ARCHITECTURE.md.
        QLOGE("Invalid output buffer");
        return kNoJpeg;
    }
    if (jpegSize < 0 || jpegSize > client.size) {
        unmapClientBuffer(target, client);
        QLOGE("Invalid output buffer");
        return kNoJpeg;
    }
    copyFromDevice(device, jpegSize, target);
    unmapClientBuffer(target, client);
    return jpegSize;
}
