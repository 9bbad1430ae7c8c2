#include "buffers/JpegHead.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "host/isp/exif/ExifModule.h"
#include "support/Failure.h"

namespace quen::reprocess {
namespace {

constexpr size_t kStartBytes = 2;  // the marker that begins a file
constexpr size_t kMarkerBytes = 2;
constexpr size_t kLengthBytes = 2;
constexpr size_t kMostSegmentBytes = 0xffff - kLengthBytes;
constexpr uint8_t kExifMarker = 0xe1;
constexpr uint8_t kProfileMarker = 0xe2;
constexpr char kExifIdentifier[] = "Exif\0";          // with a second 0, the string's own
constexpr char kProfileIdentifier[] = "ICC_PROFILE";  // with its 0
constexpr size_t kMostProfileBytes = kMostSegmentBytes - sizeof(kProfileIdentifier) - 2;

/** The bytes of a file's EXIF segment, which is its first; 0 when it has none. */
size_t exifSegmentBytes(uint8_t const* file, size_t size) {
    constexpr size_t kIdentifierOffset = kStartBytes + kMarkerBytes + kLengthBytes;
    bool const isThere =
            size > kIdentifierOffset + sizeof(kExifIdentifier) && file[2] == 0xff &&
            file[3] == kExifMarker &&
            std::memcmp(file + kIdentifierOffset, kExifIdentifier, sizeof(kExifIdentifier)) == 0;
    size_t const bytes = isThere ? kMarkerBytes + size_t(file[4] << 8 | file[5]) : 0;
    return bytes <= size - kStartBytes ? bytes : 0;
}

/** Appends a segment of several parts. */
void appendSegment(std::vector<uint8_t>& head, uint8_t marker,
                   std::vector<uint8_t> const& identifier, uint8_t const* data, size_t size) {
    size_t const length = kLengthBytes + identifier.size() + size;
    head.insert(head.end(), {0xff, marker, uint8_t(length >> 8), uint8_t(length)});
    head.insert(head.end(), identifier.begin(), identifier.end());
    head.insert(head.end(), data, data + size);
}

/** Appends a profile, in as many segments as it takes. */
void appendProfile(std::vector<uint8_t>& head, std::vector<uint8_t> const& profile) {
    size_t const count = (profile.size() + kMostProfileBytes - 1) / kMostProfileBytes;
    for (size_t i = 0; i < count; ++i) {
        size_t const offset = i * kMostProfileBytes;
        std::vector<uint8_t> identifier(std::begin(kProfileIdentifier),
                                        std::end(kProfileIdentifier));
        identifier.push_back(uint8_t(i + 1));
        identifier.push_back(uint8_t(count));
        appendSegment(head, kProfileMarker, identifier, profile.data() + offset,
                      std::min(kMostProfileBytes, profile.size() - offset));
    }
}

/** The EXIF of a picture together with that of its capture. */
std::vector<uint8_t> mergedExif(uint8_t const* segment, size_t segmentBytes,
                                Capture const& capture) {
    constexpr size_t kBefore = kMarkerBytes + kLengthBytes + sizeof(kExifIdentifier);
    auto const* const module = host::isp::exifModule();
    std::vector<uint8_t> exif;
    if (module && segmentBytes > kBefore) {
        exif = module->merged(segment + kBefore, segmentBytes - kBefore, capture.exif,
                              capture.mirrored, !capture.colourProfile.empty());
    }
    if (exif.empty()) {
        throw Failure("has EXIF that its JPEG cannot be given");
    }
    return exif;
}

}  // namespace

size_t jpegHeadBytes(Capture const& capture) {
    constexpr size_t kMostProfileOverhead = size_t{256} * 32;
    return capture.exif.size() + capture.colourProfile.size() + kMostProfileOverhead;
}

size_t finishJpeg(uint8_t* file, size_t size, size_t capacity, Capture const& capture) {
    if (capture.exif.empty() && !capture.mirrored && capture.colourProfile.empty()) {
        return size;
    }
    uint8_t const* const segment = file + kStartBytes;
    size_t const segmentBytes = exifSegmentBytes(file, size);
    std::vector<uint8_t> head;
    auto const exif = mergedExif(segment, segmentBytes, capture);
    appendSegment(head, kExifMarker, {std::begin(kExifIdentifier), std::end(kExifIdentifier)},
                  exif.data(), exif.size());
    appendProfile(head, capture.colourProfile);
    size_t const rest = size - kStartBytes - segmentBytes;
    if (kStartBytes + head.size() + rest > capacity) {
        throw Failure("has EXIF and a colour profile that its JPEG has no room for");
    }
    std::memmove(file + kStartBytes + head.size(), segment + segmentBytes, rest);
    std::memcpy(file + kStartBytes, head.data(), head.size());
    return kStartBytes + head.size() + rest;
}

}  // namespace quen::reprocess
