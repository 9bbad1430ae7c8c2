// The EXIF module: the only code that exiv2 is loaded for.

#include <exiv2/bmffimage.hpp>
#include <exiv2/error.hpp>
#include <exiv2/exif.hpp>
#include <exiv2/image.hpp>
#include <exiv2/tags.hpp>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <mutex>
#include <new>
#include <string>

#include "host/isp/exif/ExifModule.h"

namespace quen::host::isp {

namespace {

using Exiv2::ExifData;
using Exiv2::Exifdatum;
using Exiv2::ExifKey;

// A longer value is no figure of the capture, and an EXIF block has 64 kB at most.
constexpr long kLongestValue = 2048;

// EXIF wants a resolution, and a picture that is not printed has none: 72 stands for that.
Exiv2::URational const kResolution(72, 1);
constexpr uint16_t kInches = 2;

constexpr uint16_t kColourSpace = 0xa001;
constexpr uint16_t kUniqueCameraModel = 0xc614;
constexpr uint16_t kModel = 0x0110;

// Of the first directory: description, maker, model, time of change, artist, host, copyright.
constexpr uint16_t kImageTags[] = {0x010e, 0x010f, kModel, 0x0132, 0x013b, 0x013c, 0x8298};

// Of the EXIF directory, what is about the stored picture and not about the capture: versions, the
// size, components, compression, the maker's notes, the mosaic.
constexpr uint16_t kPictureTags[] = {0x9000, 0x9101, 0x9102, 0x927c, 0xa000, kColourSpace,
                                     0xa002, 0xa003, 0xa004, 0xa005, 0xa20c, 0xa302};

/** A tag that raw files have in the first directory, and its place in the EXIF directory. */
struct Moved {
    uint16_t from;
    uint16_t to;
};

constexpr Moved kMovedTags[] = {
        {0x829a, 0x829a}, {0x829d, 0x829d}, {0x8822, 0x8822}, {0x8827, 0x8827}, {0x9003, 0x9003},
        {0x9201, 0x9201}, {0x9202, 0x9202}, {0x9203, 0x9203}, {0x9204, 0x9204}, {0x9205, 0x9205},
        {0x9206, 0x9206}, {0x9207, 0x9207}, {0x9208, 0x9208}, {0x9209, 0x9209}, {0x920a, 0x920a},
        {0xc62f, 0xa431},  // serial number of the camera
        {0xc630, 0xa432},  // range of the lens
};

template <size_t N>
bool contains(uint16_t const (&tags)[N], uint16_t tag) {
    return std::find(std::begin(tags), std::end(tags), tag) != std::end(tags);
}

/** Whether a block has an entry. */
bool has(ExifData const& data, ExifKey const& key) {
    return data.findKey(key) != data.end();
}

/** Adds a copy of a value under a key that is not taken yet. */
void addUnless(ExifData& data, ExifKey const& key, Exifdatum const& value) {
    if (!has(data, key)) {
        data.add(key, &value.value());
    }
}

/** Whether a value says anything: empty texts and blanks stand for "unknown". */
bool saysSomething(Exifdatum const& datum) {
    if (datum.count() == 0 || datum.size() > kLongestValue) {
        return false;
    }
    return datum.typeId() != Exiv2::asciiString ||
           datum.toString().find_first_not_of(" \0") != std::string::npos;
}

/** Adds what an entry says of the capture, under the key where JPEG has it. */
void addOfCapture(Exifdatum const& datum, bool isJpeg, ExifData& result) {
    std::string const group = datum.groupName();
    uint16_t const tag = datum.tag();
    if (!saysSomething(datum)) {
        return;
    }
    if (group == "Image" && contains(kImageTags, tag)) {
        addUnless(result, ExifKey(tag, "Image"), datum);
    } else if (group == "Image") {
        auto const* const moved =
                std::find_if(std::begin(kMovedTags), std::end(kMovedTags),
                             [&](Moved const& entry) { return entry.from == tag; });
        if (moved != std::end(kMovedTags)) {
            addUnless(result, ExifKey(moved->to, "Photo"), datum);
        }
    } else if (group == "Photo") {
        bool const isKnown = datum.tagName().compare(0, 2, "0x") != 0;
        bool const isOfCapture = !contains(kPictureTags, tag) || (isJpeg && tag == kColourSpace);
        if (isKnown && isOfCapture) {
            addUnless(result, ExifKey(tag, "Photo"), datum);
        }
    } else if (group == "GPSInfo" || (group == "Iop" && isJpeg)) {
        addUnless(result, ExifKey(tag, group), datum);
    }
}

/** Adds a text that is not there yet. */
void addText(ExifData& data, char const* key, std::string const& text) {
    if (!text.empty() && !has(data, ExifKey(key))) {
        data[key] = text;
    }
}

/** Adds a positive number that is not there yet, as a fraction. */
void addNumber(ExifData& data, char const* key, double number) {
    if (!(number >= 1e-6 && number <= 1e6) || has(data, ExifKey(key))) {
        return;
    }
    // Exposures are fractions of a second with 1 above.
    Exiv2::URational const value =
            number < 0.3 ? Exiv2::URational(1, static_cast<uint32_t>(std::lround(1 / number)))
                         : Exiv2::URational(static_cast<uint32_t>(std::lround(number * 100)), 100);
    data[key] = value;
}

/** Adds the facts that the file itself does not state. */
void addFacts(CaptureFacts const& facts, ExifData& data) {
    addText(data, "Exif.Image.Make", facts.maker);
    addText(data, "Exif.Image.Model", facts.model);
    addText(data, "Exif.Photo.LensModel", facts.lens);
    addNumber(data, "Exif.Photo.ExposureTime", facts.exposure);
    addNumber(data, "Exif.Photo.FNumber", facts.aperture);
    addNumber(data, "Exif.Photo.FocalLength", facts.focalLength);
    if (facts.iso > 0 && facts.iso <= 65535 && !has(data, ExifKey("Exif.Photo.ISOSpeedRatings"))) {
        data["Exif.Photo.ISOSpeedRatings"] = static_cast<uint16_t>(std::lround(facts.iso));
    }
    tm local = {};
    char text[20] = "";
    if (facts.time > 0 && localtime_r(&facts.time, &local) != nullptr) {
        strftime(text, sizeof(text), "%Y:%m:%d %H:%M:%S", &local);
    }
    addText(data, "Exif.Photo.DateTimeOriginal", text);
}

/** The orientation in a block; 1 when there is none that is valid. */
int orientationOf(ExifData const& data) {
    auto const found = data.findKey(ExifKey("Exif.Image.Orientation"));
    long const value = found == data.end() || found->count() == 0 ? 1 : found->toLong();
    return value >= 1 && value <= 8 ? static_cast<int>(value) : 1;
}

/** Encodes a block that a JPEG has room for; the thumbnail is what it may do without. */
std::vector<uint8_t> encode(ExifData& data) {
    Exiv2::Blob blob;
    Exiv2::ExifParser::encode(blob, Exiv2::littleEndian, data);
    if (blob.size() > kMostExifBytes) {
        Exiv2::ExifThumb(data).erase();
        blob.clear();
        Exiv2::ExifParser::encode(blob, Exiv2::littleEndian, data);
    }
    return blob.size() > kMostExifBytes ? std::vector<uint8_t>() : blob;
}

/** Decodes a block of EXIF; entries may be missing when it is damaged. */
ExifData decode(uint8_t const* exif, size_t size) {
    ExifData data;
    Exiv2::ExifParser::decode(data, exif, static_cast<uint32_t>(size));
    return data;
}

/** Reads a camera's raw file. */
ExifData readRawFile(uint8_t const* file, size_t size) {
    // Reading XMP, which exiv2 does on the way, is not thread-safe.
    static std::mutex lock;
    std::lock_guard<std::mutex> const guard(lock);
    auto const image = Exiv2::ImageFactory::open(file, static_cast<long>(size));
    image->readMetadata();
    return image->exifData();
}

/** The orientation tag for a clockwise turn. */
uint16_t orientationTag(int degrees) {
    constexpr uint16_t kTags[] = {1, 6, 3, 8};
    return kTags[degrees / 90 % 4];
}

class Exiv2Module : public ExifModule {
  public:
    Exiv2Module() {
        Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
        Exiv2::enableBMFF();  // the container of CR3
    }

    std::vector<uint8_t> ofPicture(PictureFacts const& facts) const override {
        return guarded([&] {
            ExifData data;
            data["Exif.Image.Orientation"] = orientationTag(facts.orientationDegrees);
            data["Exif.Image.XResolution"] = kResolution;
            data["Exif.Image.YResolution"] = kResolution;
            data["Exif.Image.ResolutionUnit"] = kInches;
            data["Exif.Image.Software"] = facts.software;
            data["Exif.Image.YCbCrPositioning"] = uint16_t{1};  // centred
            data["Exif.Photo.ExifVersion"] = "48 50 51 50";
            data["Exif.Photo.ComponentsConfiguration"] = "1 2 3 0";
            data["Exif.Photo.FlashpixVersion"] = "48 49 48 48";
            data["Exif.Photo.ColorSpace"] = uint16_t{1};  // sRGB
            data["Exif.Photo.PixelXDimension"] = static_cast<uint32_t>(facts.width);
            data["Exif.Photo.PixelYDimension"] = static_cast<uint32_t>(facts.height);
            if (!facts.thumbnail.empty()) {
                Exiv2::ExifThumb(data).setJpegThumbnail(facts.thumbnail.data(),
                                                        static_cast<long>(facts.thumbnail.size()),
                                                        kResolution, kResolution, kInches);
            }
            return encode(data);
        });
    }

    std::vector<uint8_t> ofCapture(uint8_t const* file, size_t size, bool isJpeg,
                                   CaptureFacts const& facts) const override {
        ExifData data;
        guarded([&] {  // a file that exiv2 cannot read may still be known by its facts
            data = isJpeg ? decode(file, size) : readRawFile(file, size);
            return std::vector<uint8_t>();
        });
        return guarded([&] {
            ExifData result;
            for (Exifdatum const& datum : data) {
                addOfCapture(datum, isJpeg, result);
            }
            auto const unique = data.findKey(ExifKey(kUniqueCameraModel, "Image"));
            if (unique != data.end() && saysSomething(*unique)) {
                addText(result, "Exif.Image.Model", unique->toString());
            }
            addFacts(facts, result);
            return result.empty() ? std::vector<uint8_t>() : encode(result);
        });
    }

    int orientation(uint8_t const* exif, size_t size) const override {
        int result = 1;
        guarded([&] {
            result = orientationOf(decode(exif, size));
            return std::vector<uint8_t>();
        });
        return result;
    }

    std::vector<uint8_t> merged(uint8_t const* picture, size_t size,
                                std::vector<uint8_t> const& capture, bool isMirrored,
                                bool hasProfile) const override {
        return guarded([&] {
            ExifData data = decode(picture, size);
            if (hasProfile) {
                data["Exif.Photo.ColorSpace"] = uint16_t{0xffff};  // uncalibrated
            }
            for (Exifdatum const& datum :
                 capture.empty() ? ExifData() : decode(capture.data(), capture.size())) {
                ExifKey const key(datum.key());
                if (key.tag() == kColourSpace) {
                    data[datum.key()] = datum.value();
                } else {
                    addUnless(data, key, datum);
                }
            }
            if (isMirrored) {
                // By the turn that goes before: 1, 3, 6 and 8 are none, two, one and three
                // quarters.
                constexpr uint16_t kMirrored[] = {0, 2, 1, 4, 3, 6, 5, 8, 7};
                data["Exif.Image.Orientation"] = kMirrored[orientationOf(data)];
            }
            return encode(data);
        });
    }

  private:
    /** Runs a piece of work; empty when exiv2 throws. */
    template <typename Work>
    static std::vector<uint8_t> guarded(Work const& work) {
        try {
            return work();
        } catch (std::bad_alloc const&) {
            throw;
        } catch (std::exception const&) {
            return {};
        }
    }
};

}  // namespace

extern "C" ExifModule const* quenExifModule() {
    static Exiv2Module const module;
    return &module;
}

}  // namespace quen::host::isp
