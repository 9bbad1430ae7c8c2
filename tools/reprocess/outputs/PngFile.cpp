#include "outputs/PngFile.h"

#include <png.h>

#include <csetjmp>
#include <new>
#include <utility>

namespace quen::reprocess {
namespace {

// Photographs shrink by a few percent more with higher levels, and take several times as long.
constexpr int kCompressionLevel = 2;

/** What libpng's callbacks reach. */
struct Writing {
    std::vector<uint8_t> file;
    std::vector<uint8_t> row;
    std::string* problem = nullptr;
};

void onError(png_structp png, png_const_charp message) {
    static_cast<Writing*>(png_get_error_ptr(png))->problem->assign(message);
    png_longjmp(png, 1);
}

void onWarning(png_structp /*png*/, png_const_charp /*message*/) {}

/** Appends bytes to the file. No exception passes libpng. */
void append(png_structp png, png_bytep bytes, size_t size) {
    auto& file = static_cast<Writing*>(png_get_io_ptr(png))->file;
    bool isAppended = true;
    try {
        file.insert(file.end(), bytes, bytes + size);
    } catch (std::bad_alloc const&) {
        isAppended = false;
    }
    if (!isAppended) {
        png_error(png, "memory has run out");
    }
}

/** @return whether the file is whole. longjmp skips destructors: no object here may have one. */
bool writeWhole(png_structp png, png_infop info, PixelRows& rows, std::vector<uint8_t> const& exif,
                Writing& writing) {
    if (setjmp(png_jmpbuf(png)) != 0) {
        return false;
    }
    png_set_write_fn(png, &writing, append, nullptr);
    png_set_user_limits(png, 0x7fffffff, 0x7fffffff);
    png_set_IHDR(png, info, rows.width(), rows.height(), rows.bits(), PNG_COLOR_TYPE_RGB,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_sRGB(png, info, PNG_sRGB_INTENT_PERCEPTUAL);
    if (!exif.empty()) {
        png_set_eXIf_1(png, info, static_cast<png_uint_32>(exif.size()),
                       const_cast<png_bytep>(exif.data()));
    }
    png_set_compression_level(png, kCompressionLevel);
    png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_UP);
    png_write_info(png, info);
    if (rows.bits() == 16 && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__) {
        png_set_swap(png);
    }
    for (uint32_t row = 0; row < rows.height(); ++row) {
        rows.read(row, writing.row.data());
        png_write_row(png, writing.row.data());
    }
    png_write_end(png, nullptr);
    return true;
}

}  // namespace

std::vector<uint8_t> writePng(PixelRows& rows, std::vector<uint8_t> const& exif,
                              std::string& problem) {
    Writing writing;
    writing.row.resize(rows.rowBytes());
    writing.problem = &problem;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &writing, onError, onWarning);
    png_infop info = png != nullptr ? png_create_info_struct(png) : nullptr;
    bool const isWhole = info != nullptr && writeWhole(png, info, rows, exif, writing);
    png_destroy_write_struct(&png, &info);
    if (!isWhole) {
        problem = problem.empty() ? "libpng does not start" : problem;
        return {};
    }
    return std::move(writing.file);
}

}  // namespace quen::reprocess
