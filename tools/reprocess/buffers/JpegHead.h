#pragma once

#include <cstddef>
#include <cstdint>

#include "inputs/Capture.h"

namespace quen::reprocess {

/** Bytes by which finishJpeg may make a capture's JPEG longer. */
size_t jpegHeadBytes(Capture const& capture);

/**
 * Puts what is known of a capture into the JPEG that came of it: its EXIF, beside what the encoder
 * says of the picture, and the colour profile of its samples.
 *
 * @param file the JPEG, changed in place
 * @param capacity bytes that there is room for
 * @return its size
 * @throws Failure when the EXIF cannot be put together
 */
size_t finishJpeg(uint8_t* file, size_t size, size_t capacity, Capture const& capture);

}  // namespace quen::reprocess
