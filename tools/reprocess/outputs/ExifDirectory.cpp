#include "outputs/ExifDirectory.h"

#include <cstddef>
#include <cstring>

namespace quen::reprocess {
namespace {

constexpr char kHead[] = {'I', 'I', '*', '\0'};
constexpr size_t kFirstDirectory = 4;  // where its offset lies
constexpr size_t kEntryBytes = 12;     // tag, type, count, value or its offset
constexpr size_t kInlineBytes = 4;
constexpr uint32_t kAscii = 2;
constexpr uint32_t kExifPointer = 0x8769;
constexpr uint32_t kGpsPointer = 0x8825;

/** The little-endian number of some bytes; 0 beyond the end of the block. */
uint32_t numberAt(std::vector<uint8_t> const& exif, size_t offset, size_t bytes) {
    uint32_t number = 0;
    for (size_t i = 0; i < bytes && offset + bytes <= exif.size(); ++i) {
        number |= uint32_t{exif[offset + i]} << 8 * i;
    }
    return number;
}

/** The text of an entry, without the zeros at its end. */
std::string textOf(std::vector<uint8_t> const& exif, size_t entry) {
    size_t const size = numberAt(exif, entry + 4, 4);
    size_t const value = entry + kEntryBytes - kInlineBytes;
    size_t const begin = size <= kInlineBytes ? value : numberAt(exif, value, 4);
    if (begin > exif.size() || size > exif.size() - begin) {
        return {};
    }
    auto const* const bytes = reinterpret_cast<char const*>(exif.data() + begin);
    return std::string(bytes, strnlen(bytes, size));
}

}  // namespace

ExifDirectory readExifDirectory(std::vector<uint8_t> const& exif) {
    ExifDirectory directory;
    if (exif.size() < sizeof(kHead) || std::memcmp(exif.data(), kHead, sizeof(kHead)) != 0) {
        return directory;
    }
    size_t const begin = numberAt(exif, kFirstDirectory, 4);
    size_t const count = numberAt(exif, begin, 2);
    for (size_t i = 0; i < count; ++i) {
        size_t const entry = begin + 2 + i * kEntryBytes;
        uint32_t const tag = numberAt(exif, entry, 2);
        uint32_t const value = numberAt(exif, entry + kEntryBytes - kInlineBytes, 4);
        if (tag == kExifPointer) {
            directory.exifOffset = value;
        } else if (tag == kGpsPointer) {
            directory.gpsOffset = value;
        } else if (numberAt(exif, entry + 2, 2) == kAscii) {
            directory.texts[static_cast<uint16_t>(tag)] = textOf(exif, entry);
        }
    }
    return directory;
}

}  // namespace quen::reprocess
