#define LOG_TAG "quenOfflineDevice"

#include "quenOfflineDevice/jpeg/JpegCopy.h"

#include <cstdio>
#include <cstring>

#include <system/graphics.h>

#include "quenCommon/Hardened.h"
#include "quenCommon/Log.h"
#include "quenGralloc/ImportedBuffer.h"
#include "quenOfflineDevice/jpeg/CameraBlob.h"
#include "quenOfflineDevice/request/ClientMapping.h"

using android::hardware::hidl_vec;
using vendor::mediatek::hardware::camera::isphal::V1_0::ISPBuffer;

namespace quen {
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

void logTrailer(CameraBlob const& blob) {
    if (!logEnabled(LOG_TAG, kLogDebug)) {
        return;
    }
    char id[8] = "JPEG";
    if (blob.blobId != CameraBlobId::JPEG) {
        snprintf(id, sizeof(id), "0x%x", static_cast<unsigned int>(blob.blobId));
    }
    char text[64];
    snprintf(text, sizeof(text), "{.blobId = %s, .blobSize = %u}", id, blob.blobSize);
    QLOGD("%s", text);
}

/** Reads the JPEG's size from a device buffer, which is imported and locked meanwhile. */
int probeJpegSize(native_handle const* handle, int size) {
    ImportedBuffer buffer(handle);
    void const* const address = buffer.lock(kCpuReadWriteOften, size);
    QLOGI("get data from output buffer address %p", address);
    CameraBlob const blob = readCameraBlob(address, size);
    logTrailer(blob);
    if constexpr (kHardened) {
        if (!holdsJpeg(blob, size)) {
            return kNoJpeg;
        }
    }
    return static_cast<int>(blob.blobSize);
}

/**
 * Copies the first `size` bytes of a device buffer.
 *
 * @param target MAP_FAILED: nothing is copied
 * @return whether the bytes are there
 */
bool copyFromDevice(native_handle const* handle, int size, void* target) {
    ImportedBuffer buffer(handle);
    void const* const source = buffer.lock(kCpuReadWriteOften, size);
    if (size == 0) {
        return true;
    }
    if (source == nullptr || target == MAP_FAILED) {
        return false;
    }
    memcpy(target, source, static_cast<size_t>(size));
    return true;
}

int invalidOutputBuffer() {
    QLOGE("Invalid output buffer");
    return kNoJpeg;
}

}  // namespace

int getJpegSize(native_handle const* handle, int size) {
    QLOGI("get JPEG size from output buffer E");
    int const jpegSize = probeJpegSize(handle, size);
    QLOGI("get JPEG size is %d from output buffer X", jpegSize);
    return jpegSize;
}

int copyJpeg(PostProcessParams const& params, hidl_vec<ISPBuffer> const& outputs) {
    size_t const index = findBlob(params.output_buffers);
    if (index == params.output_buffers.size()) {
        return invalidOutputBuffer();
    }
    ImageBuffer const& client = *params.output_buffers[index];
    native_handle const* const device = outputs[index].buffer.getNativeHandle();
    void* const target = mapClientBuffer(client);
    int const jpegSize = getJpegSize(device, client.size);
    if (device == nullptr) {
        // The mapping is left behind on purpose: see ARCHITECTURE.md.
        if constexpr (kHardened) {
            unmapClientBuffer(target, client);
        }
        return invalidOutputBuffer();
    }
    bool const isCopied =
            jpegSize >= 0 && jpegSize <= client.size && copyFromDevice(device, jpegSize, target);
    unmapClientBuffer(target, client);
    return isCopied ? jpegSize : invalidOutputBuffer();
}

}  // namespace quen
