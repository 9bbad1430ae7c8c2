// quen-reprocess: what the file of a picture says beside the picture.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "support/Cli.h"

namespace {

using namespace quentest;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

// A colour profile as a JPEG's segments, each as full as can be.
std::string profileSegments(std::string const& profile) {
    constexpr size_t kMost = 65519;
    size_t const count = (profile.size() + kMost - 1) / kMost;
    std::string segments;
    for (size_t i = 0; i < count; ++i) {
        std::string const part = profile.substr(i * kMost, kMost);
        size_t const length = part.size() + 16;
        segments += std::string("\xff\xe2") + static_cast<char>(length >> 8) +
                    static_cast<char>(length) + std::string("ICC_PROFILE", 12) +
                    static_cast<char>(i + 1) + static_cast<char>(count) + part;
    }
    return segments;
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

constexpr char kSoftware[] = "quenOfflineDevice ";

using CliExifTest = CliTest;

// The stored rows stay as they are, so size and orientation have to fit them after any number of
// encodings.
TEST_F(CliExifTest, WhatIsSaidOfACaptureStandsInEachOfItsJpegs) {
    std::vector<uint32_t> const exposure = {1, 250};
    std::vector<uint32_t> const latitude = {48, 1, 8, 1, 30, 1};
    for (uint32_t orientation = 1; orientation <= 8; ++orientation) {
        SCOPED_TRACE(orientation);
        put("shot.dng", asDng(kBrick, "rggb", {{274, 3, 1, orientation}}));
        ASSERT_EQ(0, run("shot.dng -o shot.jpg").exitCode);
        ASSERT_EQ(0, run("shot.jpg -o again.jpg").exitCode);
        for (char const* const name : {"shot.jpg", "again.jpg"}) {
            std::string const file = get(name);
            EXPECT_THAT(file, AllOf(HasSubstr("2024:05:06 07:08:09"), HasSubstr("Lens9"),
                                    HasSubstr(bytesOf(exposure)), HasSubstr(bytesOf(latitude))));
            EXPECT_THAT(file, AllOf(HasSubstr(textEntry(271)), HasSubstr(textEntry(272)),
                                    HasSubstr(entry(34855, 3, 400)), Not(HasSubstr("SECRETS!"))));
            // The picture's own: size, orientation, sRGB, software, a thumbnail.
            EXPECT_THAT(file, AllOf(HasSubstr(entry(40962, 4, kWidth)),
                                    HasSubstr(entry(40963, 4, kHeight)),
                                    HasSubstr(std::string("\0\x11\x08\0\x30\0\x40", 7)),
                                    HasSubstr(entry(274, 3, orientation)),
                                    HasSubstr(entry(40961, 3, 1)), HasSubstr(kSoftware)));
            EXPECT_NE(std::string::npos, file.substr(2, 60000).find("\xff\xd8\xff"));
        }
        Outcome const outcome = run("shot.dng -o shot.yuv");
        EXPECT_EQ(orientation != 1,
                  outcome.err.find("shot.yuv: is as the sensor saw it") != std::string::npos);
        bool const isMirrored =
                orientation == 2 || orientation == 4 || orientation == 5 || orientation == 7;
        EXPECT_EQ(isMirrored, outcome.err.find("mirrored") != std::string::npos);
    }
    // What the request says instead of the file counts.
    ASSERT_EQ(0, run("shot.dng -o set.jpg --set android.jpeg.orientation=180").exitCode);
    EXPECT_THAT(get("set.jpg"), HasSubstr(entry(274, 3, 3)));

    put("shot.dng", asDng(kBrick, "rggb", {{274, 3, 1, 2}}));
    ASSERT_EQ(0, run("shot.dng -o turned.jpg --rotate 90").exitCode);
    EXPECT_THAT(get("turned.jpg"), HasSubstr(entry(274, 3, 6))) << "and not mirrored any more";

    // Nothing is said where nothing is known.
    put("in.raw", bytesOf(mosaic(kGrey, "rggb", 10, 64)));
    ASSERT_EQ(0, run("in.raw -o bare.jpg --size 64x48 --bayer rggb --rotate 270").exitCode);
    std::string const bare = get("bare.jpg");
    for (uint16_t const tag : {271, 272, 306, 36867, 36868}) {
        EXPECT_THAT(bare, Not(HasSubstr(textEntry(tag)))) << tag;
    }
    EXPECT_THAT(bare, AllOf(HasSubstr(entry(274, 3, 8)), HasSubstr(kSoftware)));
    std::string const mirrored = std::string(
                                         "\xff\xe1\0\x22"
                                         "Exif\0\0II*\0\x8\0\0\0\1\0",
                                         20) +
                                 entry(274, 3, 2) + std::string(4, '\0');
    put("mirrored.jpg", bare.substr(0, 2) + mirrored + bare.substr(bare.find("\xff\xdb")));
    ASSERT_EQ(0, run("mirrored.jpg -o again.jpg").exitCode);
    EXPECT_THAT(get("again.jpg"), HasSubstr(entry(274, 3, 2)));
}

TEST_F(CliExifTest, APictureKeepsItsColourProfile) {
    put("shot.dng", asDng(kGrey, "rggb"));
    ASSERT_EQ(0, run("shot.dng -o shot.jpg").exitCode);
    std::string profile(70000, 'p');  // more than a segment holds
    for (auto const& [space, hasExif] :
         {std::pair("RGB ", true), {"RGB ", false}, {"GRAY", true}}) {
        std::string plain = get("shot.jpg");
        if (!hasExif) {
            plain.erase(2, 2 + (uint8_t(plain[4]) << 8 | uint8_t(plain[5])));
        }
        bool const fits = space[0] == 'R';
        std::string const segments = profileSegments(profile.replace(16, 4, space));
        put("with.jpg", plain.substr(0, 2) + segments + plain.substr(2));
        Outcome const outcome = run("with.jpg -o out.jpg");
        EXPECT_EQ(0, outcome.exitCode);
        EXPECT_EQ(!fits, outcome.err.find("colour profile") != std::string::npos);
        ASSERT_EQ(0, run("out.jpg -o again.jpg").exitCode);
        for (char const* const name : {"out.jpg", "again.jpg"}) {
            EXPECT_EQ(fits, get(name).find(segments) != std::string::npos) << name;
            EXPECT_EQ(fits, get(name).find("ICC_PROFILE") != std::string::npos) << name;
            EXPECT_THAT(get(name), HasSubstr(kSoftware)) << name;
        }
    }
}

}  // namespace
