#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace quen::reprocess {

/** What a JPEG says beside its picture. */
struct JpegMarkers {
    std::vector<uint8_t> exif;           ///< a block of EXIF; empty when there is none
    std::vector<uint8_t> colourProfile;  ///< ICC; empty when there is none
};

/**
 * Whether a file that begins as a JPEG ends before its first scan begins. Decoders make up an end
 * there, and complain about something else. False where the file is damaged otherwise.
 */
bool endsBeforeScan(uint8_t const* file, size_t size);

/** Reads the markers of a JPEG; those of a damaged one may be missing. */
JpegMarkers readJpegMarkers(uint8_t const* file, size_t size);

}  // namespace quen::reprocess
