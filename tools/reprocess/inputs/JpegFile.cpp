#include "inputs/JpegFile.h"

#include <libyuv.h>
#include <turbojpeg.h>

#include <array>
#include <cstring>
#include <utility>

#include "host/isp/exif/ExifModule.h"
#include "inputs/CompressedSize.h"
#include "inputs/EvenSize.h"
#include "inputs/JpegMarkers.h"
#include "inputs/MappedFile.h"
#include "support/Failure.h"

namespace quen::reprocess {
namespace {

using Decoder = std::unique_ptr<void, decltype(&tjDestroy)>;

/** A decoded picture: luma and two chroma planes of the sampling of the file. */
struct Planes {
    std::vector<uint8_t> bytes;
    std::array<uint8_t*, 3> data{};
    std::array<int, 3> stride{};
};

// Converts between chroma samplings without a detour through RGB.
using PlaneConversion = int (*)(uint8_t const*, int, uint8_t const*, int, uint8_t const*, int,
                                uint8_t*, int, uint8_t*, int, int, int);

/** The conversion from a chroma sampling to NV21; null when there is none. */
PlaneConversion planeConversion(int sampling) {
    switch (sampling) {
        case TJSAMP_420:
            return libyuv::I420ToNV21;
        case TJSAMP_422:
            return libyuv::I422ToNV21;
        case TJSAMP_444:
            return libyuv::I444ToNV21;
        default:
            return nullptr;
    }
}

/** Throws the error of the decoder. */
[[noreturn]] void throwDecoding(tjhandle decoder) {
    std::string const error = tjGetErrorStr2(decoder);
    if (error.find("Premature end") != std::string::npos) {
        throw Failure("ends before the picture does");
    }
    if (error.find("Not a JPEG") != std::string::npos) {
        throw Failure("is no JPEG, though its name says so");
    }
    throw Failure("is no JPEG that can be decoded: " + error);
}

// A warning (a stray byte, an early end) counts as a failure: the picture is not the stored one.
// The number of scans is limited: a file may hold hundreds of one picture, to keep decoders busy.
constexpr int kStrict = TJFLAG_STOPONWARNING | TJFLAG_LIMITSCANS;

/** Throws when a call failed. */
void check(tjhandle decoder, int result) {
    if (result != 0) {
        throwDecoding(decoder);
    }
}

/** Decodes to planes of the sampling of the file. */
Planes decodePlanes(tjhandle decoder, MappedFile const& file, int width, int height, int sampling) {
    Planes planes;
    size_t total = 0;
    int const count = sampling == TJSAMP_GRAY ? 1 : 3;
    std::array<size_t, 3> offsets{};
    for (int i = 0; i < count; ++i) {
        planes.stride[i] = tjPlaneWidth(i, width, sampling);
        offsets[i] = total;
        total += tjPlaneSizeYUV(i, width, 0, height, sampling);
    }
    planes.bytes.resize(total);
    for (int i = 0; i < count; ++i) {
        planes.data[i] = planes.bytes.data() + offsets[i];
    }
    check(decoder, tjDecompressToYUVPlanes(decoder, file.data(), file.size(), planes.data.data(),
                                           width, planes.stride.data(), height, kStrict));
    return planes;
}

/** Decodes to packed NV21, from the planes where possible, else through RGB. */
void decodeToNv21(tjhandle decoder, MappedFile const& file, int width, int height, int sampling,
                  Capture const& capture, uint8_t* out) {
    int const evenWidth = static_cast<int>(capture.width);
    int const evenHeight = static_cast<int>(capture.height);
    uint8_t* const chroma = out + size_t(evenWidth) * evenHeight;
    PlaneConversion const convert = planeConversion(sampling);
    if (convert) {
        Planes const planes = decodePlanes(decoder, file, width, height, sampling);
        convert(planes.data[0], planes.stride[0], planes.data[1], planes.stride[1], planes.data[2],
                planes.stride[2], out, evenWidth, chroma, evenWidth, evenWidth, evenHeight);
        return;
    }
    std::vector<uint8_t> rgb(size_t(width) * height * 3);
    check(decoder, tjDecompress2(decoder, file.data(), file.size(), rgb.data(), width, 0, height,
                                 TJPF_RGB, kStrict));
    libyuv::RAWToJNV21(rgb.data(), width * 3, out, evenWidth, chroma, evenWidth, evenWidth,
                       evenHeight);
}

/** Sets the turn that an orientation tag asks for. */
void setOrientation(int tag, Capture& capture) {
    constexpr int kDegrees[] = {0, 0, 0, 180, 180, 90, 90, 270, 270};  // by the tag's value
    constexpr bool kMirrored[] = {false, false, true, false, true, true, false, true, false};
    capture.orientation = kDegrees[tag];
    capture.mirrored = kMirrored[tag];
}

/** Reads EXIF and colour profile. */
void readMarkers(MappedFile const& file, Capture& capture) {
    JpegMarkers markers = readJpegMarkers(file.data(), file.size());
    if (!markers.exif.empty()) {
        auto const* const module = host::isp::exifModule();
        if (!module) {
            throw Failure("has EXIF, and what reads it is not there",
                          "libquen_exif.so belongs beside libquen_isp.so");
        }
        auto const& exif = markers.exif;
        setOrientation(module->orientation(exif.data(), exif.size()), capture);
        capture.exif = module->ofCapture(exif.data(), exif.size(), true, {});
    }
    // Where the header of a profile names its colours.
    constexpr size_t kColours = 16;
    auto const& profile = markers.colourProfile;
    if (profile.size() < 128) {
        return;
    }
    if (std::memcmp(profile.data() + kColours, "RGB ", 4) == 0) {
        capture.colourProfile = std::move(markers.colourProfile);
    } else {
        capture.notes.emplace_back("has a colour profile that is none of RGB, so it is left out");
    }
}

}  // namespace

Capture readJpeg(std::string const& path) {
    auto const file = MappedFile::open(path);
    if (endsBeforeScan(file->data(), file->size())) {
        throw Failure("ends before the picture does");
    }
    Decoder const decoder(tjInitDecompress(), &tjDestroy);
    if (!decoder) {
        throw Failure("cannot be decoded: the JPEG decoder does not start");
    }
    int width = 0;
    int height = 0;
    int sampling = 0;
    int colour = 0;
    check(decoder.get(), tjDecompressHeader3(decoder.get(), file->data(), file->size(), &width,
                                             &height, &sampling, &colour));
    if (width < 2 || height < 2) {
        throw Failure("is smaller than 2x2 pixels");
    }
    checkCompressedSize(file->size(), static_cast<size_t>(width), static_cast<size_t>(height));
    if (colour == TJCS_CMYK || colour == TJCS_YCCK) {
        throw Failure("is a CMYK JPEG", "convert it to RGB or YUV first");
    }

    Capture capture;
    setEvenSize(static_cast<uint32_t>(width), static_cast<uint32_t>(height), capture);
    // A file of RGB components has no chroma planes.
    int const usable = colour == TJCS_YCbCr ? sampling : -1;
    auto const packed =
            std::make_shared<std::vector<uint8_t>>(nv21Size(capture.width, capture.height));
    decodeToNv21(decoder.get(), *file, width, height, usable, capture, packed->data());
    capture.image = Nv21Image{packed->data()};
    capture.memory = packed;
    readMarkers(*file, capture);
    return capture;
}

}  // namespace quen::reprocess
