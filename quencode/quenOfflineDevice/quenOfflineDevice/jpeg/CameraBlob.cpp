#include "quenOfflineDevice/jpeg/CameraBlob.h"

#include <cstring>

namespace quen {

static_assert(sizeof(CameraBlob) == 8, "the trailer is eight bytes");

CameraBlob readCameraBlob(void const* address, int size) {
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

bool holdsJpeg(CameraBlob const& blob, int size) {
    return blob.blobId == CameraBlobId::JPEG &&
           int64_t{blob.blobSize} + static_cast<int64_t>(sizeof(blob)) <= size;
}

}  // namespace quen
