// The trailer of a JPEG buffer.

#include <quenOfflineDevice/CameraBlob.h>

#include "support/Require.h"

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    int const bytes = static_cast<int>(size);
    quen::CameraBlob const blob = quen::readCameraBlob(data, bytes);
    if (quen::holdsJpeg(blob, bytes)) {
        quenfuzz::require(blob.blobSize <= size, "a JPEG ends within its buffer");
        // Every byte that a client would be given.
        int sum = 0;
        for (size_t i = 0; i < blob.blobSize; ++i) {
            sum += data[i];
        }
        quenfuzz::require(sum >= 0, "a sum of bytes");
    }
    quenfuzz::require(!quen::holdsJpeg(quen::readCameraBlob(nullptr, bytes), bytes),
                      "there is no JPEG at null");
    return 0;
}
