// The trailer of a JPEG buffer.

#include <numeric>

#include <quenOfflineDevice/jpeg/CameraBlob.h>

#include "support/Require.h"

using quenfuzz::require;

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    int const bytes = static_cast<int>(size);
    quen::CameraBlob const blob = quen::readCameraBlob(data, bytes);
    if (quen::holdsJpeg(blob, bytes)) {
        require(blob.blobSize + sizeof(blob) <= size, "a JPEG ends before its trailer");
        // Every byte that a client would be given is there.
        size_t const sum = std::accumulate(data, data + blob.blobSize, size_t{0});
        require(sum <= size_t{blob.blobSize} * UINT8_MAX, "a sum of bytes");
    }
    require(!quen::holdsJpeg(quen::readCameraBlob(nullptr, bytes), bytes), "no JPEG is at null");
    return 0;
}
