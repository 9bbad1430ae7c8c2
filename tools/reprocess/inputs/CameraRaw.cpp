#include "inputs/CameraRaw.h"

#include <algorithm>
#include <cmath>

#include "host/isp/exif/ExifModule.h"
#include "inputs/BitsUsed.h"
#include "inputs/CompressedSize.h"
#include "inputs/Corrections.h"
#include "inputs/EvenSize.h"
#include "inputs/MappedFile.h"
#include "inputs/RawFile.h"
#include "inputs/RawSamples.h"
#include "support/Failure.h"

namespace quen::reprocess {
namespace {

/** LibRaw's colour index of a pixel of the visible area: 0 red, 2 blue, green 1 and 3 or both 1. */
int colourAt(LibRaw& raw, int row, int column) {
    return raw.COLOR(row, column);
}

/** The Bayer order of a part of the visible area. @throws Failure when the mosaic has none */
BayerOrder bayerOrder(LibRaw& raw, VisiblePart const& part) {
    auto const& info = raw.imgdata.idata;
    bool const mosaic = info.colors == 3 && info.filters > 1000;
    if (!mosaic || raw.is_fuji_rotated()) {
        throw Failure("is no 2 x 2 Bayer mosaic", "convert it with other means first");
    }
    for (int order = 0; order < 4; ++order) {
        bool matches = true;
        // Eight rows: the period of the patterns that LibRaw describes.
        for (int row = 0; row < 8; ++row) {
            for (int column = 0; column < 2; ++column) {
                BayerChannel const channel = kBayerChannels[order][(row & 1) * 2 + column];
                int const wanted = channel == kRed ? 0 : channel == kBlue ? 2 : 1;
                int const colour = colourAt(raw, row + int(part.top), column + int(part.left));
                matches = matches && (colour == 3 ? 1 : colour) == wanted;
            }
        }
        if (matches) {
            return static_cast<BayerOrder>(order);
        }
    }
    throw Failure("has a mosaic of red, green and blue in no Bayer order",
                  "convert it with other means first");
}

/** Reads the black level of each channel: LibRaw's common one plus its own. */
void readBlackLevels(LibRaw& raw, VisiblePart const& part, SensorCalibration& calibration) {
    auto const& colour = raw.imgdata.color;
    unsigned const rows = colour.cblack[4];
    unsigned const columns = colour.cblack[5];
    for (unsigned position = 0; position < 4; ++position) {
        unsigned const row = part.top + position / 2;
        unsigned const column = part.left + position % 2;
        unsigned level = colour.black + colour.cblack[colourAt(raw, int(row), int(column))];
        if (rows && columns) {
            level += colour.cblack[6 + row % rows * columns + column % columns];
        }
        BayerChannel const channel = kBayerChannels[int(calibration.bayerOrder)][position];
        calibration.blackLevel[channel] = static_cast<float>(level);
    }
}

/** Whether the gains of red, green and blue are positive. */
bool usableGains(float const* gains) {
    return std::all_of(gains, gains + 3,
                       [](float gain) { return std::isfinite(gain) && gain > 0; });
}

/** The white balance as shot when the file has it, else daylight; green is 1. */
void readWhiteBalance(libraw_colordata_t const& colour, Capture& capture) {
    float const* gains = colour.cam_mul;
    if (!usableGains(gains)) {
        gains = colour.pre_mul;
        capture.notes.emplace_back(
                "has no white balance of its own, so daylight's is used; --wb sets another");
    }
    if (usableGains(gains)) {
        capture.calibration.wbGains[kRed] = gains[0] / gains[1];
        capture.calibration.wbGains[kBlue] = gains[2] / gains[1];
    }
}

/** Reads the matrix to sRGB, or notes that the camera is unknown. */
void readColourMatrix(libraw_colordata_t const& colour, Capture& capture) {
    float matrix[9];
    bool usable = true;
    for (int row = 0; row < 3; ++row) {
        float sum = 0;
        for (int column = 0; column < 3; ++column) {
            matrix[row * 3 + column] = colour.rgb_cam[row][column];
            sum += colour.rgb_cam[row][column];
        }
        usable = usable && std::isfinite(sum) && sum > 0;
    }
    if (!usable) {
        capture.notes.emplace_back(
                "is of a camera whose colours are not known, so they stay its own");
        return;
    }
    std::copy(std::begin(matrix), std::end(matrix), capture.calibration.colorMatrix);
}

/**
 * The default calibration is that of a sensor at ISO 100. With the gain, shot noise grows in
 * proportion and read noise with its square.
 */
void scaleNoise(float iso, SensorCalibration& calibration) {
    if (iso > 0) {
        float const gain = std::clamp(iso / 100, 0.5f, 256.0f);
        calibration.noiseShot *= gain;
        calibration.noiseRead *= gain * gain;
    }
}

/** The depth of the samples: bits for the white level and the largest sample, at least 8. */
int depthOf(BayerImage const& image, uint32_t width, uint32_t height, float white) {
    unsigned const used =
            static_cast<unsigned>(std::min(white, 65535.0f)) | bitsUsed(image, width, height);
    int bits = 8;
    while (used >> bits) {
        ++bits;
    }
    return bits;
}

/**
 * Sets the turn for LibRaw's flip, a set of bits: 1 mirrors left to right, 2 top to bottom, 4
 * exchanges rows and columns before that.
 */
void readOrientation(int flip, Capture& capture) {
    constexpr int kDegrees[] = {0, 0, 180, 180, 90, 270, 90, 270};
    constexpr bool kMirrored[] = {false, true, true, false, true, false, false, true};
    if (flip >= 0 && flip < 8) {
        capture.orientation = kDegrees[flip];
        capture.mirrored = kMirrored[flip];
    }
}

/** What LibRaw knows of the capture. */
host::isp::CaptureFacts factsOf(libraw_data_t const& data) {
    host::isp::CaptureFacts facts;
    // Of a DNG that states neither, LibRaw guesses both from the words of its unique camera model.
    if (data.idata.dng_version == 0) {
        facts.maker = data.idata.make;
        facts.model = data.idata.model;
    }
    facts.lens = data.lens.Lens;
    facts.time = data.other.timestamp;
    facts.exposure = static_cast<double>(data.other.shutter);
    facts.aperture = static_cast<double>(data.other.aperture);
    facts.iso = static_cast<double>(data.other.iso_speed);
    facts.focalLength = static_cast<double>(data.other.focal_len);
    return facts;
}

/** Reads what the file says of the capture. */
void readExif(RawFile const& raw, MappedFile const& file, Capture& capture) {
    auto const* const module = host::isp::exifModule();
    if (!module) {
        throw Failure("has EXIF, and what reads it is not there",
                      "libquen_exif.so belongs beside libquen_isp.so");
    }
    capture.exif = module->ofCapture(file.data(), file.size(), false, factsOf(raw.imgdata));
}

}  // namespace

Capture readCameraRaw(std::string const& path, InputOptions const& options) {
    // MappedFile reports an unreadable file better than LibRaw.
    auto const file = MappedFile::open(path);
    auto const raw = std::make_shared<RawFile>(path);
    auto const& sizes = raw->imgdata.sizes;
    checkCompressedSize(file->size(), sizes.raw_width, sizes.raw_height);
    RawSamples const samples = readRawSamples(raw, path);
    if (!samples.first) {
        throw Failure("is no 2 x 2 Bayer mosaic", "convert it with other means first");
    }

    Capture capture;
    VisiblePart const part = raw->shownPart();
    setEvenSize(part.width, part.height, capture);
    capture.calibration.bayerOrder = bayerOrder(*raw, part);
    auto const& colour = raw->imgdata.color;
    BayerImage image;
    image.stride = samples.stride;
    image.samples = samples.first + (sizes.top_margin + part.top) * image.stride +
                    sizes.left_margin + part.left;
    capture.image = image;
    SensorCalibration& calibration = capture.calibration;
    calibration.whiteLevel = options.white.value_or(static_cast<float>(colour.maximum));
    calibration.levelBits = depthOf(image, capture.width, capture.height, calibration.whiteLevel);
    readBlackLevels(*raw, part, calibration);
    if (!options.matrix) {
        readColourMatrix(colour, capture);
    }
    scaleNoise(raw->imgdata.other.iso_speed, calibration);
    if (!options.wb) {
        readWhiteBalance(colour, capture);
    }
    applyCorrections(options, calibration);
    readOrientation(sizes.flip, capture);
    readExif(*raw, *file, capture);
    capture.memory = samples.memory;
    return capture;
}

}  // namespace quen::reprocess
