#include "host/isp/jpeg/Exif.h"

#include <libexif/exif-data.h>

#include <cstdlib>
#include <cstring>
#include <memory>

namespace quen::host::isp {

namespace {

constexpr ExifByteOrder kByteOrder = EXIF_BYTE_ORDER_INTEL;
constexpr char kMaker[] = "quen";
constexpr size_t kTimeBytes = 20;  // "2026:01:31 12:00:00" and the terminator

struct DataDeleter {
    void operator()(ExifData* data) const { exif_data_unref(data); }
};

struct EntryDeleter {
    void operator()(ExifEntry* entry) const { exif_entry_unref(entry); }
};

/** Adds an entry of the tag's own format and size; null when it has none or memory runs out. */
ExifEntry* addEntry(ExifData* data, ExifIfd directory, ExifTag tag) {
    std::unique_ptr<ExifEntry, EntryDeleter> const entry(exif_entry_new());
    if (!entry) {
        return nullptr;
    }
    entry->tag = tag;
    exif_content_add_entry(data->ifd[directory], entry.get());
    exif_entry_initialize(entry.get(), tag);
    // From here on the directory holds it.
    return entry->data == nullptr ? nullptr : exif_content_get_entry(data->ifd[directory], tag);
}

/** Adds an entry of one SHORT. */
void addShort(ExifData* data, ExifIfd directory, ExifTag tag, int value) {
    ExifEntry* const entry = addEntry(data, directory, tag);
    if (entry != nullptr && entry->format == EXIF_FORMAT_SHORT) {
        exif_set_short(entry->data, kByteOrder, static_cast<ExifShort>(value));
    }
}

/** Adds a dimension of the picture as LONG; EXIF allows SHORT as well. */
void addSize(ExifData* data, ExifTag tag, int value) {
    std::unique_ptr<ExifEntry, EntryDeleter> const entry(exif_entry_new());
    if (!entry) {
        return;
    }
    // The entry owns the memory and frees it with free().
    entry->data = static_cast<unsigned char*>(malloc(sizeof(ExifLong)));
    if (entry->data == nullptr) {
        return;
    }
    entry->tag = tag;
    entry->format = EXIF_FORMAT_LONG;
    entry->components = 1;
    entry->size = sizeof(ExifLong);
    exif_set_long(entry->data, kByteOrder, static_cast<ExifLong>(value));
    exif_content_add_entry(data->ifd[EXIF_IFD_EXIF], entry.get());
}

/** Adds an entry of ASCII text. */
void addText(ExifData* data, ExifIfd directory, ExifTag tag, char const* text) {
    std::unique_ptr<ExifEntry, EntryDeleter> const entry(exif_entry_new());
    if (!entry) {
        return;
    }
    size_t const size = strlen(text) + 1;
    entry->data = static_cast<unsigned char*>(malloc(size));
    if (entry->data == nullptr) {
        return;
    }
    memcpy(entry->data, text, size);
    entry->tag = tag;
    entry->format = EXIF_FORMAT_ASCII;
    entry->components = size;
    entry->size = static_cast<unsigned int>(size);
    exif_content_add_entry(data->ifd[directory], entry.get());
}

/** The orientation tag for a clockwise turn. */
int exifOrientation(int degrees) {
    switch (degrees) {
        case 90:
            return 6;
        case 180:
            return 3;
        case 270:
            return 8;
        default:
            return 1;
    }
}

}  // namespace

std::vector<uint8_t> buildExif(ExifFields const& fields) {
    std::unique_ptr<ExifData, DataDeleter> const data(exif_data_new());
    if (!data) {
        return {};
    }
    exif_data_set_byte_order(data.get(), kByteOrder);
    char time[kTimeBytes] = "";
    tm local = {};
    if (localtime_r(&fields.time, &local) != nullptr) {
        strftime(time, sizeof(time), "%Y:%m:%d %H:%M:%S", &local);
    }
    addText(data.get(), EXIF_IFD_0, EXIF_TAG_MAKE, kMaker);
    addText(data.get(), EXIF_IFD_0, EXIF_TAG_MODEL, kMaker);
    addShort(data.get(), EXIF_IFD_0, EXIF_TAG_ORIENTATION,
             exifOrientation(fields.orientationDegrees));
    addText(data.get(), EXIF_IFD_0, EXIF_TAG_DATE_TIME, time);
    addEntry(data.get(), EXIF_IFD_EXIF, EXIF_TAG_EXIF_VERSION);
    addText(data.get(), EXIF_IFD_EXIF, EXIF_TAG_DATE_TIME_ORIGINAL, time);
    addShort(data.get(), EXIF_IFD_EXIF, EXIF_TAG_COLOR_SPACE, 1);  // sRGB
    addSize(data.get(), EXIF_TAG_PIXEL_X_DIMENSION, fields.width);
    addSize(data.get(), EXIF_TAG_PIXEL_Y_DIMENSION, fields.height);

    unsigned char* bytes = nullptr;
    unsigned int size = 0;
    exif_data_save_data(data.get(), &bytes, &size);
    std::unique_ptr<unsigned char, decltype(&free)> const owner(bytes, &free);
    return bytes == nullptr ? std::vector<uint8_t>() : std::vector<uint8_t>(bytes, bytes + size);
}

}  // namespace quen::host::isp
