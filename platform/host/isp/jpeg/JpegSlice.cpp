#include "host/isp/jpeg/JpegSlice.h"

#include <stdio.h>

#include <jerror.h>
#include <jpeglib.h>
#include <libyuv.h>

#include <algorithm>
#include <csetjmp>
#include <cstring>

namespace quen::host::isp {

namespace {

constexpr int kChromaRows = kMcuSide / 2;

/** libjpeg's errors, which must not return; C code cannot be unwound, so they jump back. */
struct ErrorManager {
    jpeg_error_mgr base;
    jmp_buf back;
};

/** Jumps back to the encoder. */
void onError(j_common_ptr info) {
    longjmp(reinterpret_cast<ErrorManager*>(info->err)->back, 1);
}

/** Discards warnings. */
void onMessage(j_common_ptr /*info*/) {}

// The whole target is handed over at once: a request for more means it is too small.
void onStart(j_compress_ptr /*info*/) {}

/** Fails: the target is full. */
boolean onFull(j_compress_ptr info) {
    ERREXIT(info, JERR_BUFFER_SIZE);
    return FALSE;
}

/** Nothing is buffered. */
void onEnd(j_compress_ptr /*info*/) {}

/** Repeats the last sample of a row up to the padded width. */
void padRow(uint8_t* row, int width, int paddedWidth) {
    memset(row + width, row[width - 1], static_cast<size_t>(paddedWidth - width));
}

/** Sets the parameters of a file: 4:2:0 from raw planes, a restart marker per MCU row. */
void setUp(jpeg_compress_struct& info, YuvPicture const& picture, int quality) {
    info.image_width = static_cast<JDIMENSION>(picture.width);
    info.image_height = static_cast<JDIMENSION>(picture.height);
    info.input_components = 3;
    info.in_color_space = JCS_YCbCr;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, quality, TRUE);
    info.raw_data_in = TRUE;
    info.write_JFIF_header = FALSE;  // EXIF must be the first segment
    info.comp_info[0].h_samp_factor = 2;
    info.comp_info[0].v_samp_factor = 2;
    info.restart_in_rows = 1;
}

}  // namespace

JpegSliceEncoder::JpegSliceEncoder(int width)
    : mPaddedWidth((width + kMcuSide - 1) / kMcuSide * kMcuSide) {
    size_t const row = static_cast<size_t>(mPaddedWidth);
    mBytes.reset(new uint8_t[row * kMcuSide + row * kChromaRows]);
    for (size_t i = 0; i < kMcuSide; ++i) {
        mLumaRows[i] = mBytes.get() + i * row;
    }
    uint8_t* const chroma = mBytes.get() + row * kMcuSide;
    for (size_t i = 0; i < kChromaRows; ++i) {
        mCbRows[i] = chroma + i * row;
        mCrRows[i] = chroma + i * row + row / 2;
    }
}

/** Reads one MCU row of a picture, repeating its last column and row as padding. */
void JpegSliceEncoder::fillMcuRow(YuvPicture const& picture, int firstRow) {
    bool const whole = picture.width == mPaddedWidth;
    for (int i = 0; i < kMcuSide; ++i) {
        int const row = std::min(firstRow + i, picture.height - 1);
        uint8_t* const source = picture.y + static_cast<size_t>(row) * picture.lumaStride;
        if (whole) {
            mLumaRows[i] = source;
            continue;
        }
        memcpy(mLumaRows[i], source, static_cast<size_t>(picture.width));
        padRow(mLumaRows[i], picture.width, mPaddedWidth);
    }
    int const width = chromaSize(picture.width);
    for (int i = 0; i < kChromaRows; ++i) {
        int const row = std::min(firstRow / 2 + i, chromaSize(picture.height) - 1);
        size_t const offset = static_cast<size_t>(row) * picture.chromaStride;
        if (picture.isPlanar()) {
            memcpy(mCbRows[i], picture.cb + offset, static_cast<size_t>(width));
            memcpy(mCrRows[i], picture.cr + offset, static_cast<size_t>(width));
        } else if (picture.isNv12()) {
            libyuv::SplitUVPlane(picture.cb + offset, 0, mCbRows[i], 0, mCrRows[i], 0, width, 1);
        } else {
            libyuv::SplitUVPlane(picture.cr + offset, 0, mCrRows[i], 0, mCbRows[i], 0, width, 1);
        }
        padRow(mCbRows[i], width, mPaddedWidth / 2);
        padRow(mCrRows[i], width, mPaddedWidth / 2);
    }
}

size_t JpegSliceEncoder::encode(YuvPicture const& picture, int quality,
                                std::vector<uint8_t> const& exif, uint8_t* target,
                                size_t capacity) {
    jpeg_compress_struct info = {};
    ErrorManager errors;
    info.err = jpeg_std_error(&errors.base);
    errors.base.error_exit = onError;
    errors.base.output_message = onMessage;
    // longjmp skips destructors: no object below may have one.
    if (setjmp(errors.back) != 0) {
        jpeg_destroy_compress(&info);
        return 0;
    }
    jpeg_create_compress(&info);
    jpeg_destination_mgr destination = {};
    destination.next_output_byte = target;
    destination.free_in_buffer = capacity;
    destination.init_destination = onStart;
    destination.empty_output_buffer = onFull;
    destination.term_destination = onEnd;
    info.dest = &destination;

    setUp(info, picture, quality);
    jpeg_start_compress(&info, TRUE);
    if (!exif.empty()) {
        jpeg_write_marker(&info, JPEG_APP0 + 1, exif.data(),
                          static_cast<unsigned int>(exif.size()));
    }
    JSAMPIMAGE planes = nullptr;
    JSAMPARRAY rows[] = {mLumaRows, mCbRows, mCrRows};
    planes = rows;
    while (info.next_scanline < info.image_height) {
        fillMcuRow(picture, static_cast<int>(info.next_scanline));
        jpeg_write_raw_data(&info, planes, kMcuSide);
    }
    jpeg_finish_compress(&info);
    size_t const size = capacity - destination.free_in_buffer;
    jpeg_destroy_compress(&info);
    return size;
}

}  // namespace quen::host::isp
