// quen-reprocess: what the file of a picture says beside the picture.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdio.h>

#include <jpeglib.h>

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "support/Cli.h"

namespace {

using namespace quentest;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

// A JPEG of one grey, in RGB, with a colour profile.
std::string jpegWithProfile(std::string const& profile) {
    jpeg_compress_struct info = {};
    jpeg_error_mgr errors;
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    uint8_t* bytes = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&info, &bytes, &size);
    info.image_width = kWidth;
    info.image_height = kHeight;
    info.input_components = 3;
    info.in_color_space = JCS_RGB;
    jpeg_set_defaults(&info);
    jpeg_start_compress(&info, TRUE);
    jpeg_write_icc_profile(&info, reinterpret_cast<JOCTET const*>(profile.data()),
                           static_cast<unsigned>(profile.size()));
    std::vector<uint8_t> row(3 * kWidth, 118);
    for (JSAMPROW rows = row.data(); info.next_scanline < kHeight;) {
        jpeg_write_scanlines(&info, &rows, 1);
    }
    jpeg_finish_compress(&info);
    std::string const file(reinterpret_cast<char*>(bytes), size);
    jpeg_destroy_compress(&info);
    free(bytes);
    return file;
}

std::string profileOf(std::string const& file) {
    jpeg_decompress_struct info = {};
    jpeg_error_mgr errors;
    info.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&info);
    jpeg_save_markers(&info, JPEG_APP0 + 2, 0xffff);
    jpeg_mem_src(&info, reinterpret_cast<uint8_t const*>(file.data()), file.size());
    jpeg_read_header(&info, TRUE);
    JOCTET* bytes = nullptr;
    unsigned size = 0;
    std::string profile;
    if (jpeg_read_icc_profile(&info, &bytes, &size)) {
        profile.assign(reinterpret_cast<char*>(bytes), size);
        free(bytes);
    }
    jpeg_destroy_decompress(&info);
    return profile;
}

// An entry of a directory: one value of 16 or 32 bits, little-endian.
std::string entry(uint16_t tag, uint16_t type, uint32_t value) {
    return bytesOf(std::vector<DngField>{{tag, type, 1, value}});
}

// How an entry begins that is a text.
std::string textEntry(uint16_t tag) {
    uint16_t const begin[] = {tag, 2};
    return bytesOf(begin);
}

using CliExifTest = CliTest;

TEST_F(CliExifTest, WhatIsSaidOfACaptureStandsInEachOfItsJpegs) {
    put("shot.dng", asDng(kBrick, "rggb"));
    ASSERT_EQ(0, run("shot.dng -o shot.jpg").exitCode);
    ASSERT_EQ(0, run("shot.jpg -o again.jpg").exitCode);
    std::vector<uint32_t> const exposure = {1, 250};
    std::vector<uint32_t> const latitude = {48, 1, 8, 1, 30, 1};
    for (char const* const name : {"shot.jpg", "again.jpg"}) {
        std::string const file = get(name);
        EXPECT_THAT(file, AllOf(HasSubstr("2024:05:06 07:08:09"), HasSubstr("Lens9"),
                                HasSubstr(bytesOf(exposure)), HasSubstr(bytesOf(latitude))));
        EXPECT_THAT(file, AllOf(HasSubstr(textEntry(271)), HasSubstr(textEntry(272)),
                                HasSubstr(entry(34855, 3, 400)), Not(HasSubstr("SECRETS!"))));
        // The picture's own: size, sRGB, software, a thumbnail.
        EXPECT_THAT(file,
                    AllOf(HasSubstr(entry(40962, 4, kWidth)), HasSubstr(entry(40963, 4, kHeight)),
                          HasSubstr(entry(40961, 3, 1)), HasSubstr("quenOfflineDevice ")));
        EXPECT_NE(std::string::npos, file.substr(2, 60000).find("\xff\xd8\xff"));
    }

    // Nothing is said where nothing is known.
    put("in.raw", bytesOf(mosaic(kGrey, "rggb", 10, 64)));
    ASSERT_EQ(0, run("in.raw -o bare.jpg --size 64x48 --bayer rggb --rotate 270").exitCode);
    std::string const bare = get("bare.jpg");
    for (uint16_t const tag : {271, 272, 306, 36867, 36868}) {
        EXPECT_THAT(bare, Not(HasSubstr(textEntry(tag)))) << tag;
    }
    EXPECT_THAT(bare, HasSubstr(entry(274, 3, 8)));
    EXPECT_THAT(bare, HasSubstr("quenOfflineDevice "));
}

// The stored rows stay as they are, so size and orientation have to fit them after any number of
// encodings.
TEST_F(CliExifTest, AllEightOrientationsStandInEachOutput) {
    for (uint32_t orientation = 1; orientation <= 8; ++orientation) {
        SCOPED_TRACE(orientation);
        put("shot.dng", asDng(kGrey, "rggb", {{274, 3, 1, orientation}}));
        ASSERT_EQ(0, run("shot.dng -o shot.jpg").exitCode);
        ASSERT_EQ(0, run("shot.jpg -o again.jpg").exitCode);
        for (char const* const name : {"shot.jpg", "again.jpg"}) {
            EXPECT_THAT(get(name), AllOf(HasSubstr(entry(274, 3, orientation)),
                                         HasSubstr(entry(40962, 4, kWidth)),
                                         HasSubstr(std::string("\0\x11\x08\0\x30\0\x40", 7))))
                    << name;
        }
        Outcome const outcome = run("shot.dng -o shot.yuv");
        EXPECT_EQ(orientation != 1, outcome.err.find("YUV cannot say") != std::string::npos);
        bool const isMirrored =
                orientation == 2 || orientation == 4 || orientation == 5 || orientation == 7;
        EXPECT_EQ(isMirrored, outcome.err.find("mirrored") != std::string::npos);
    }
    // What the request says instead of the file counts.
    ASSERT_EQ(0, run("shot.dng -o set.jpg --set android.jpeg.orientation=180").exitCode);
    EXPECT_THAT(get("set.jpg"), HasSubstr(entry(274, 3, 3)));
}

TEST_F(CliExifTest, APictureKeepsItsColourProfile) {
    std::string profile(70000, 'p');  // more than a segment holds
    profile.replace(16, 4, "RGB ");
    put("wide.jpg", jpegWithProfile(profile));
    ASSERT_EQ(0, run("wide.jpg -o out.jpg").exitCode);
    EXPECT_TRUE(profileOf(get("out.jpg")) == profile);
    ASSERT_EQ(0, run("out.jpg -o again.jpg").exitCode);
    EXPECT_TRUE(profileOf(get("again.jpg")) == profile);

    profile.replace(16, 4, "GRAY");
    put("grey.jpg", jpegWithProfile(profile));
    Outcome const grey = run("grey.jpg -o out.jpg");
    EXPECT_EQ(0, grey.exitCode);
    EXPECT_THAT(grey.err, HasSubstr("colour profile"));
    EXPECT_EQ("", profileOf(get("out.jpg")));
}

}  // namespace
