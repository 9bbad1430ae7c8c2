// EXIF of a picture, of a capture, and of both, as exiv2 reads it. golden/exif.txt was looked
// through beside the EXIF standard (tags, types) and ExifModule.h (what is of the capture, whose
// word counts).

#include <gtest/gtest.h>

#include <ctime>
#include <exiv2/exiv2.hpp>
#include <string>
#include <vector>

#include "host/isp/exif/ExifModule.h"
#include "host/isp/jpeg/Exif.h"
#include "support/Golden.h"

namespace {

using namespace quen::host::isp;

using Lines = std::vector<std::string>;
using Block = std::vector<uint8_t>;

// A block that states "key value" each; "*" stands for a group.
Block blockOf(Lines const& lines, std::string const& group = "") {
    Exiv2::ExifData data;
    for (std::string line : lines) {
        line.replace(0, line[0] == '*' ? 1 : 0, line[0] == '*' ? group : "");
        data["Exif." + line.substr(0, line.find(' '))] = line.substr(line.find(' ') + 1);
    }
    Block block;
    Exiv2::ExifParser::encode(block, Exiv2::littleEndian, data);
    return block;
}

// Appends what a block states.
void note(Lines& lines, std::string const& title, Block const& block) {
    lines.push_back("== " + title);
    Exiv2::ExifData data;
    Exiv2::ExifParser::decode(data, block.data(), static_cast<uint32_t>(block.size()));
    for (Exiv2::Exifdatum const& datum : data) {
        lines.push_back(datum.key() + ' ' + datum.typeName() + ' ' + datum.toString());
    }
}

TEST(Exif, SaysWhatIsKnownOfAPictureAndItsCapture) {
    ExifModule const& module = *exifModule();
    Lines lines;
    Block const picture = module.ofPicture({17, 9, 0, "ours 1", {0xff, 0xd8, 0xff, 0xd9}});
    note(lines, "a picture", picture);
    for (int const degrees : {90, 180, 270}) {
        note(lines, "turned", module.ofPicture({1, 1, degrees, "", {}}));
    }
    Lines capture = quentest::goldenLines("capture");
    capture.push_back("Photo.UserComment " + std::string(3000, 'x'));  // no figure is as long
    CaptureFacts facts = {"M", "N", "L", 0, 0.1, 2.8, 65535, 35.124};
    Block const ofJpeg = blockOf(capture, "Photo");
    Block const ofRaw = blockOf(capture, "Image");
    Block const names =
            blockOf({"Image.UniqueCameraModel Unique", "Image.CameraSerialNumber serial",
                     "Image.LensInfo 24/1 70/1 28/10 4/1"});
    note(lines, "a JPEG's capture", module.ofCapture(ofJpeg.data(), ofJpeg.size(), true, {}));
    note(lines, "a raw file's", module.ofCapture(ofRaw.data(), ofRaw.size(), false, facts));
    note(lines, "raw files' names", module.ofCapture(names.data(), names.size(), false, facts));
    tm local = {};
    local.tm_year = 124;
    local.tm_mday = 29;
    local.tm_hour = 13;
    local.tm_isdst = -1;
    facts = {"", "Camera", "", mktime(&local), 0.3, 1e7, 65536, 1e-7};
    note(lines, "facts alone", module.ofCapture(nullptr, 0, false, facts));
    EXPECT_TRUE(module.ofCapture(nullptr, 0, false, {}).empty());
    note(lines, "merged", module.merged(picture.data(), picture.size(), ofJpeg, false, true));
    for (int orientation = 0; orientation < 10; ++orientation) {
        Block const block = blockOf({"Image.Orientation " + std::to_string(orientation)});
        note(lines, "read as " + std::to_string(module.orientation(block.data(), block.size())),
             block);
        note(lines, "mirrored", module.merged(block.data(), block.size(), {}, true, false));
    }
    quentest::expectGolden("exif", lines);
    EXPECT_EQ(module.orientation(nullptr, 0), 1);
}

TEST(Exif, LeavesOutWhatItHasNoRoomFor) {
    PictureFacts facts;
    facts.thumbnail.assign(70000, 0xff);
    Block const exif = buildExif(facts);
    EXPECT_TRUE(!exif.empty() && exif.size() < 1000) << exif.size();
    std::string const text(exif.begin(), exif.end());
    EXPECT_EQ(text.substr(0, 10), std::string("Exif\0\0II*\0", 10));
    EXPECT_NE(text.find("quenOfflineDevice "), std::string::npos);
    facts.thumbnail.resize(60000);
    EXPECT_GT(buildExif(facts).size(), 60000u);
}

}  // namespace
