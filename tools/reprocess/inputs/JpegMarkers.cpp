#include "inputs/JpegMarkers.h"

#include <cstdio>

#include <jpeglib.h>

#include <csetjmp>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace quen::reprocess {
namespace {

constexpr int kExifMarker = JPEG_APP0 + 1;
constexpr int kProfileMarker = JPEG_APP0 + 2;
constexpr unsigned kLongest = 0xffff;
constexpr uint8_t kMarkerStart = 0xff;
constexpr uint8_t kStartOfImage = 0xd8;
constexpr uint8_t kEndOfImage = 0xd9;
constexpr uint8_t kStartOfScan = 0xda;
constexpr char kExifIdentifier[] = "Exif\0";  // with a second 0, the string's own

/** libjpeg's errors, which must not return; C code cannot be unwound, so they jump back. */
struct ErrorManager {
    jpeg_error_mgr base;
    jmp_buf back;
};

/** Jumps back to the reader. */
void onError(j_common_ptr info) {
    longjmp(reinterpret_cast<ErrorManager*>(info->err)->back, 1);
}

/** Discards warnings. */
void onMessage(j_common_ptr /*info*/, int /*level*/) {}

/** Reads everything before the picture, keeping the markers; stops where it is damaged. */
void readHeader(jpeg_decompress_struct& info, ErrorManager& errors, uint8_t const* file,
                size_t size) {
    // longjmp skips destructors: no object below may have one.
    if (setjmp(errors.back) != 0) {
        return;
    }
    jpeg_save_markers(&info, kExifMarker, kLongest);
    jpeg_save_markers(&info, kProfileMarker, kLongest);
    jpeg_mem_src(&info, file, size);
    jpeg_read_header(&info, TRUE);
}

/** The profile, put together from its markers. @return false when there is none, or it is damaged
 */
bool readProfile(jpeg_decompress_struct& info, ErrorManager& errors, JOCTET** data,
                 unsigned* size) {
    if (setjmp(errors.back) != 0) {
        return false;
    }
    return jpeg_read_icc_profile(&info, data, size) == TRUE;
}

/** Whether nothing follows a marker: TEM, RST0 to RST7. */
bool hasNoLength(uint8_t marker) {
    return marker == 0x01 || (marker >= JPEG_RST0 && marker <= JPEG_RST0 + 7);
}

/** The block of EXIF in the markers. */
std::vector<uint8_t> findExif(jpeg_saved_marker_ptr markers) {
    size_t const identifier = sizeof(kExifIdentifier);
    for (auto const* marker = markers; marker; marker = marker->next) {
        if (marker->marker == kExifMarker && marker->data_length > identifier &&
            std::memcmp(marker->data, kExifIdentifier, identifier) == 0) {
            return {marker->data + identifier, marker->data + marker->data_length};
        }
    }
    return {};
}

}  // namespace

bool endsBeforeScan(uint8_t const* file, size_t size) {
    if (size < 2 || file[0] != kMarkerStart || file[1] != kStartOfImage) {
        return false;
    }
    for (size_t at = 2; at + 4 <= size;) {
        uint8_t const marker = file[at + 1];
        if (file[at] != kMarkerStart || marker == kEndOfImage) {
            return false;
        }
        if (marker == kMarkerStart || hasNoLength(marker)) {
            at += marker == kMarkerStart ? 1 : 2;  // a byte of padding
            continue;
        }
        at += 2 + (size_t{file[at + 2]} << 8 | file[at + 3]);
        if (marker == kStartOfScan) {
            return at > size;
        }
    }
    return true;
}

JpegMarkers readJpegMarkers(uint8_t const* file, size_t size) {
    jpeg_decompress_struct info = {};
    ErrorManager errors;
    info.err = jpeg_std_error(&errors.base);
    errors.base.error_exit = onError;
    errors.base.emit_message = onMessage;
    jpeg_create_decompress(&info);
    std::unique_ptr<jpeg_decompress_struct, decltype(&jpeg_destroy_decompress)> const owner(
            &info, &jpeg_destroy_decompress);
    readHeader(info, errors, file, size);
    JpegMarkers result;
    result.exif = findExif(info.marker_list);
    JOCTET* profile = nullptr;
    unsigned profileBytes = 0;
    if (readProfile(info, errors, &profile, &profileBytes)) {
        std::unique_ptr<JOCTET, decltype(&std::free)> const profileOwner(profile, &std::free);
        result.colourProfile.assign(profile, profile + profileBytes);
    }
    return result;
}

}  // namespace quen::reprocess
