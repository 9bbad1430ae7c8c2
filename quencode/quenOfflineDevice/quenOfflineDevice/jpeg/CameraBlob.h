#pragma once

#include <cstdint>

namespace quen {

/** What a BLOB buffer holds. */
enum class CameraBlobId : uint16_t { JPEG = 0x00FF };

/**
 * The camera blob trailer: the last eight bytes of a JPEG buffer, little-endian. It holds
 * how many bytes of JPEG the ISP wrote at the start of the buffer.
 */
struct CameraBlob {
    CameraBlobId blobId;
    uint16_t padding;
    uint32_t blobSize;  ///< bytes of JPEG
};

/**
 * Reads the trailer of a buffer; what lies outside the buffer is 0.
 *
 * @param address the buffer's start, may be null
 * @param size bytes of the buffer
 */
CameraBlob readCameraBlob(void const* address, int size);

/** Whether a trailer describes a JPEG that fits in front of it in a buffer of `size` bytes. */
bool holdsJpeg(CameraBlob const& blob, int size);

}  // namespace quen
