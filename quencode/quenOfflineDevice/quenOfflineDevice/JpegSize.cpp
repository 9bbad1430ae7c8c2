#define LOG_TAG "quenOfflineDevice"

#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "quenCommon/Log.h"
#include "quenGralloc/MapperHelper.h"
#include "quenOfflineDevice/CpuUsage.h"
#include "quenOfflineDevice/quenOfflineDevice.h"

namespace {

constexpr uint16_t kJpegBlobId = 0x00FF;

/** The camera blob trailer: the last eight bytes of a JPEG buffer, little-endian. */
struct CameraBlob {
    uint16_t blobId;
    uint16_t padding;
    uint32_t blobSize;  // JPEG bytes at the start of the buffer
};

static_assert(sizeof(CameraBlob) == 8, "the trailer is eight bytes");

/** Reads the trailer; what lies outside the buffer is 0. */
CameraBlob readTrailer(void const* address, int size) {
    CameraBlob blob = {};
    if (address == nullptr) {
        return blob;
    }
    auto const* const end = static_cast<uint8_t const*>(address) + size;
    if (size >= static_cast<int>(sizeof(blob))) {
        memcpy(&blob.blobId, end - sizeof(blob), sizeof(blob.blobId));
    }
    if (size >= static_cast<int>(sizeof(blob.blobSize))) {
        memcpy(&blob.blobSize, end - sizeof(blob.blobSize), sizeof(blob.blobSize));
    }
    return blob;
}

void logTrailer(CameraBlob const& blob) {
    if (!quen::logEnabled(LOG_TAG, quen::kLogDebug)) {
        return;  // the text is not built for nobody
    }
    char id[8] = "JPEG";
    if (blob.blobId != kJpegBlobId) {
        snprintf(id, sizeof(id), "0x%x", blob.blobId);
    }
    char text[64];
    snprintf(text, sizeof(text), "{.blobId = %s, .blobSize = %u}", id, blob.blobSize);
    QLOGD("%s", text);
}

}  // namespace

/**
 * Reads how many bytes of JPEG the ISP device left in a BLOB buffer. The trailer's id is printed,
 * not checked, and its size is not compared with the buffer's.
 *
 * @param handle the device's buffer, raw
 * @param size bytes of the buffer
 * @return the JPEG's size in bytes; 0 when the trailer cannot be read
 */
int quenOfflineDevice::getJpegSize(native_handle const* handle, int size) {
    QLOGI("get JPEG size from output buffer E");
    MapperHelper mapper = MapperHelper::getInstance();
    mapper.importBuffer(handle);
    void* address = nullptr;
    mapper.lock(handle, kCpuReadWriteOften, {0, 0, size, 1}, -1, address);
    QLOGI("get data from output buffer address %p", address);
    CameraBlob const blob = readTrailer(address, size);
    logTrailer(blob);
    int const jpegSize = static_cast<int>(blob.blobSize);
    int releaseFence = -1;
    mapper.unlock(handle, releaseFence);
    if (releaseFence >= 0) {
        close(releaseFence);
    }
    mapper.freeBuffer(handle);
    QLOGI("get JPEG size is %d from output buffer X", jpegSize);
    return jpegSize;
}
