#include "outputs/TiffFile.h"

#include <tiffio.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <memory>
#include <new>
#include <utility>

#include "outputs/ExifDirectory.h"

namespace quen::reprocess {
namespace {

constexpr int kCompressionLevel = 2;  // as that of a PNG

/** A file in memory, as libtiff's callbacks see it. */
struct MemoryFile {
    std::vector<uint8_t> bytes;
    size_t at = 0;
};

MemoryFile& fileOf(thandle_t handle) {
    return *static_cast<MemoryFile*>(handle);
}

/** libtiff reads back what it has written of the directory. */
tmsize_t read(thandle_t handle, void* out, tmsize_t size) {
    MemoryFile& file = fileOf(handle);
    size_t const rest = file.bytes.size() - std::min(file.at, file.bytes.size());
    size_t const count = std::min(static_cast<size_t>(size), rest);
    std::copy_n(file.bytes.data() + file.at, count, static_cast<uint8_t*>(out));
    file.at += count;
    return static_cast<tmsize_t>(count);
}

/** No exception passes libtiff. */
tmsize_t write(thandle_t handle, void* bytes, tmsize_t size) {
    MemoryFile& file = fileOf(handle);
    size_t const count = static_cast<size_t>(size);
    try {
        file.bytes.resize(std::max(file.bytes.size(), file.at + count));
    } catch (std::bad_alloc const&) {
        return 0;
    }
    std::copy_n(static_cast<uint8_t const*>(bytes), count, file.bytes.data() + file.at);
    file.at += count;
    return size;
}

toff_t seek(thandle_t handle, toff_t offset, int from) {
    MemoryFile& file = fileOf(handle);
    size_t const base = from == SEEK_CUR ? file.at : from == SEEK_END ? file.bytes.size() : 0;
    file.at = base + static_cast<size_t>(offset);
    return file.at;
}

int close(thandle_t /*handle*/) {
    return 0;
}

toff_t sizeOf(thandle_t handle) {
    return fileOf(handle).bytes.size();
}

/** Keeps the first problem that libtiff tells. @return 1: it is handled */
int onError(TIFF* /*tiff*/, void* problem, char const* /*module*/, char const* pattern,
            va_list arguments) {
    auto& text = *static_cast<std::string*>(problem);
    if (text.empty()) {
        char buffer[200];
        std::vsnprintf(buffer, sizeof(buffer), pattern, arguments);
        text = buffer;
    }
    return 1;
}

int onWarning(TIFF* /*tiff*/, void* /*problem*/, char const* /*module*/, char const* /*pattern*/,
              va_list /*arguments*/) {
    return 1;
}

struct Closer {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
    void operator()(TIFFOpenOptions* options) const { TIFFOpenOptionsFree(options); }
};

using Tiff = std::unique_ptr<TIFF, Closer>;

Tiff open(MemoryFile& file, std::string& problem) {
    std::unique_ptr<TIFFOpenOptions, Closer> const options(TIFFOpenOptionsAlloc());
    if (!options) {
        return nullptr;
    }
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), onError, &problem);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), onWarning, &problem);
    // Little-endian, as blocks of EXIF are.
    return Tiff(TIFFClientOpenExt("picture", "wl", &file, read, write, seek, close, sizeOf, nullptr,
                                  nullptr, options.get()));
}

void setFields(TIFF* tiff, PixelRows const& rows) {
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, rows.width());
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, rows.height());
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 3);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, rows.bits());
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
    TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    TIFFSetField(tiff, TIFFTAG_ZIPQUALITY, kCompressionLevel);
    // Strips of some 256 kB.
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP,
                 std::max(uint32_t{1}, static_cast<uint32_t>((1 << 18) / rows.rowBytes())));
}

/** Says what is known of the capture. @param exif the block that stands at the file's begin */
void setExif(TIFF* tiff, std::vector<uint8_t> const& exif) {
    ExifDirectory const directory = readExifDirectory(exif);
    for (auto const& [tag, text] : directory.texts) {
        TIFFSetField(tiff, tag, text.c_str());
    }
    if (directory.exifOffset != 0) {
        TIFFSetField(tiff, TIFFTAG_EXIFIFD, uint64_t{directory.exifOffset});
    }
    if (directory.gpsOffset != 0) {
        TIFFSetField(tiff, TIFFTAG_GPSIFD, uint64_t{directory.gpsOffset});
    }
}

/**
 * Writes behind the EXIF that the file begins with: a block of EXIF is a TIFF without a picture, of
 * which libtiff replaces the header. So its directories are the file's without a change.
 *
 * @return whether the file is whole
 */
bool writeWhole(MemoryFile& file, PixelRows& rows, std::vector<uint8_t> const& exif,
                std::string& problem) {
    file.bytes = exif;
    Tiff const tiff = open(file, problem);
    if (!tiff) {
        return false;
    }
    setFields(tiff.get(), rows);
    setExif(tiff.get(), exif);
    std::vector<uint8_t> bytes(rows.rowBytes());
    for (uint32_t row = 0; row < rows.height(); ++row) {
        rows.read(row, bytes.data());
        if (TIFFWriteScanline(tiff.get(), bytes.data(), row, 0) != 1) {
            return false;
        }
    }
    return TIFFFlush(tiff.get()) == 1;
}

}  // namespace

std::vector<uint8_t> writeTiff(PixelRows& rows, std::vector<uint8_t> const& exif,
                               std::string& problem) {
    MemoryFile file;
    if (!writeWhole(file, rows, exif, problem)) {
        problem = problem.empty() ? "memory has run out" : problem;
        return {};
    }
    return std::move(file.bytes);
}

}  // namespace quen::reprocess
