#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

namespace quen::host::isp {

/** What the encoder of a picture knows of it. */
struct PictureFacts {
    int width = 0;
    int height = 0;
    int orientationDegrees = 0;  ///< clockwise turn that shows the picture upright: 0, 90, 180, 270
    std::string software;        ///< name and version
    std::vector<uint8_t> thumbnail;  ///< a small JPEG of the picture; may be empty
};

/** What is known of a capture from elsewhere than its EXIF; empty or 0 where nothing is. */
struct CaptureFacts {
    std::string maker;
    std::string model;
    std::string lens;
    std::time_t time = 0;  ///< local time of the camera, as mktime makes it of that
    double exposure = 0;   ///< seconds
    double aperture = 0;   ///< f-number
    double iso = 0;
    double focalLength = 0;  ///< millimetres
};

/**
 * EXIF, read and written by exiv2. Blocks of EXIF are TIFF structures, as JPEG has them behind the
 * "Exif" of an APP1 segment. Thread-safe; throws std::bad_alloc only.
 *
 * It lies in a library of its own, which is loaded at the first use: exiv2 takes a while to load.
 */
class ExifModule {
  public:
    virtual ~ExifModule() = default;

    /** The EXIF of a picture; empty when it cannot be built. */
    virtual std::vector<uint8_t> ofPicture(PictureFacts const& facts) const = 0;

    /**
     * What a file says of its capture, without what it says of its own picture, notes of the maker
     * and XMP.
     *
     * @param file a camera's raw file, or the EXIF of a JPEG
     * @param isJpeg whether it is the latter; the colour space is then the picture's
     * @param facts stand in for what the file does not say
     * @return empty when nothing is said
     */
    virtual std::vector<uint8_t> ofCapture(uint8_t const* file, size_t size, bool isJpeg,
                                           CaptureFacts const& facts) const = 0;

    /** The orientation that a block of EXIF states, 1 to 8; 1 when it states none. */
    virtual int orientation(uint8_t const* exif, size_t size) const = 0;

    /**
     * Adds what is known of a capture to the EXIF of its picture, which stands where both say
     * something.
     *
     * @param isMirrored whether the picture is to be mirrored, after its turn
     * @param hasProfile whether it gets a colour profile: it is then sRGB only if the capture says
     *     so
     * @return empty when it cannot be built
     */
    virtual std::vector<uint8_t> merged(uint8_t const* picture, size_t size,
                                        std::vector<uint8_t> const& capture, bool isMirrored,
                                        bool hasProfile) const = 0;
};

/** The most bytes that a block of EXIF has in a JPEG. */
constexpr size_t kMostExifBytes = 0xffff - 2 - 6;

/** The module, loaded by the first call; null when it cannot be. Thread-safe. */
ExifModule const* exifModule();

}  // namespace quen::host::isp
