#include "inputs/RawFile.h"

#include <cstring>
#include <fstream>
#include <memory>

#include "support/Failure.h"
#include "support/Text.h"

namespace quen::reprocess {
namespace {

constexpr unsigned kUncompressed = 1;
constexpr char kTiff[] = "a TIFF";
constexpr char kHeaderlessAdvice[] = "a headerless frame needs --size, and --bayer or --yuv";

/** A file that seems to be a byte longer than it is. */
class LongerFile : public LibRaw_bigfile_datastream {
  public:
    using LibRaw_bigfile_datastream::LibRaw_bigfile_datastream;

    INT64 tell() override {
        INT64 const at = LibRaw_bigfile_datastream::tell();
        return at == LibRaw_bigfile_datastream::size() ? at + 1 : at;
    }
};

/** What a file is that begins as a picture's of another format; null for all others. */
char const* pictureKind(std::string const& path) {
    struct {
        char const* kind;
        std::string start;
    } const kinds[] = {{"a PNG", "\x89PNG"}, {kTiff, {"II*\0", 4}}, {kTiff, {"MM\0*", 4}}};
    std::string start(4, ' ');
    std::ifstream(path, std::ios::binary).read(start.data(), 4);
    for (auto const& known : kinds) {
        if (start == known.start) {
            return known.kind;
        }
    }
    return nullptr;
}

/** Whether a TIFF's first directory lies beyond its end: many are written behind the samples. */
bool endsBeforeDirectory(std::string const& path) {
    std::ifstream file(path, std::ios::binary);
    uint8_t head[8] = {};
    file.read(reinterpret_cast<char*>(head), sizeof(head));
    bool const isBig = head[0] == 'M';
    uint32_t offset = 0;
    for (size_t i = 0; i < 4; ++i) {
        offset = offset << 8 | head[isBig ? 4 + i : 7 - i];
    }
    file.seekg(0, std::ios::end);
    return file.good() && file.tellg() <= std::streamoff{offset};
}

}  // namespace

RawFile::RawFile(std::string const& path) {
    int const result = open_file(path.c_str());
    if (result != LIBRAW_SUCCESS) {
        throwUnknown(result, path);
    }
    if (isGuessed(path)) {
        throw Failure("is no raw file that LibRaw knows: only its size is that of some camera's",
                      kHeaderlessAdvice);
    }
}

void RawFile::throwUnknown(int result, std::string const& path) const {
    if (result == LIBRAW_IO_ERROR) {
        throw Failure("ends before the picture does: there is not even all of its header");
    }
    unsigned const compression = libraw_internal_data.unpacker_data.tiff_compress;
    if (result == LIBRAW_FILE_UNSUPPORTED && imgdata.idata.dng_version != 0 &&
        compression != kUncompressed) {
        throw Failure(format("is compressed in a way that LibRaw cannot undo (%u)", compression),
                      "convert it to an uncompressed DNG first");
    }
    if (result == LIBRAW_FILE_UNSUPPORTED) {
        if (char const* const picture = pictureKind(path)) {
            if (std::strcmp(picture, kTiff) == 0 && endsBeforeDirectory(path)) {
                throw Failure("ends before the picture does: its directory is missing");
            }
            throw Failure(std::string("is ") + picture + ", and no raw file that LibRaw knows",
                          "developed pictures are taken as JPEG, NV21 or I420 only");
        }
        throw Failure("is no raw file that LibRaw knows", kHeaderlessAdvice);
    }
    throw Failure(std::string("cannot be read: ") + libraw_strerror(result));
}

/**
 * Whether LibRaw took the file for a camera's by nothing but its size, as it does where it finds no
 * header: whether it no longer does when the file is a byte longer.
 */
bool RawFile::isGuessed(std::string const& path) const {
    if (libraw_internal_data.identify_data.tiff_nifds != 0) {
        return false;
    }
    LongerFile longer(path.c_str());
    return std::make_unique<LibRaw>()->open_datastream(&longer) == LIBRAW_FILE_UNSUPPORTED;
}

/** The default crop of a DNG, where it lies in the visible area, which is its active one. */
std::optional<VisiblePart> RawFile::defaultCrop() const {
    constexpr unsigned kBoth = LIBRAW_DNGFM_CROPORIGIN | LIBRAW_DNGFM_CROPSIZE;
    auto const& sizes = imgdata.sizes;
    for (unsigned i = 0; i < libraw_internal_data.identify_data.tiff_nifds; ++i) {
        auto const& levels = tiff_ifd[i].dng_levels;
        auto const [left, top, width, height] = levels.default_crop;
        bool const isOfPicture =
                tiff_ifd[i].offset == libraw_internal_data.unpacker_data.data_offset;
        bool const fits = width >= 2 && height >= 2 && left < sizes.width && top < sizes.height &&
                          width <= sizes.width - left && height <= sizes.height - top;
        if (imgdata.idata.dng_version != 0 && isOfPicture && fits &&
            (levels.parsedfields & kBoth) == kBoth) {
            return VisiblePart{left, top, width, height};
        }
    }
    return std::nullopt;
}

VisiblePart RawFile::shownPart() const {
    auto const& sizes = imgdata.sizes;
    if (sizes.width < 2 || sizes.height < 2 || sizes.left_margin + sizes.width > sizes.raw_width ||
        sizes.top_margin + sizes.height > sizes.raw_height) {
        throw Failure("has no visible area of 2x2 pixels or more");
    }
    return defaultCrop().value_or(VisiblePart{0, 0, sizes.width, sizes.height});
}

}  // namespace quen::reprocess
