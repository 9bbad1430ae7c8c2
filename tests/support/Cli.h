#pragma once

// quen-reprocess as its user meets it: files in, files and words out, an exit code.

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quentest {

namespace fs = std::filesystem;
struct Outcome {
    int exitCode;
    std::string out;
    std::string err;
};

// A colour in linear light, and as full-range YUV of its sRGB; how it grows from left to right and
// from top to bottom.
struct Colour {
    double linear[3];
    int y, cb, cr;
    double across[3] = {};
    double down[3] = {};
};

constexpr Colour kGrey = {{0.18, 0.18, 0.18}, 118, 128, 128};
constexpr Colour kBrick = {{0.5, 0.05, 0.05}, 100, 107, 190};
// Looks different however it is turned.
constexpr Colour kScene = {{0.1, 0.1, 0.1}, 0, 0, 0, {4, 0.5, 0.3}, {0.5, 2, 6}};
constexpr double kGains[3] = {2.0, 1.0, 1.5};
constexpr uint32_t kWidth = 64;
constexpr uint32_t kHeight = 48;

inline uint32_t channelOf(std::string const& order, uint32_t x, uint32_t y) {
    return static_cast<uint32_t>(std::string("rgb").find(order[(y & 1) * 2 + (x & 1)]));
}

// An evenly lit surface as an unbalanced sensor sees it.
inline std::vector<uint16_t> mosaic(Colour const& colour, std::string const& order, int bits,
                                    int black) {
    std::vector<uint16_t> samples;
    double const range = (1 << bits) - 1 - black;
    for (uint32_t i = 0; i < kWidth * kHeight; ++i) {
        uint32_t const channel = channelOf(order, i % kWidth, i / kWidth);
        double const growth = 1 + colour.across[channel] * (i % kWidth) / kWidth +
                              colour.down[channel] * (i / kWidth) / kHeight;
        double const light = colour.linear[channel] * growth / kGains[channel];
        samples.push_back(static_cast<uint16_t>(std::lround(black + range * light)));
    }
    return samples;
}

template <typename Items>
std::string bytesOf(Items const& items) {
    return {reinterpret_cast<char const*>(std::data(items)), std::size(items) * sizeof(items[0])};
}

// Groups of samples whose upper eight bits lie in bytes of their own, before the lower ones of all.
inline std::string packed(std::vector<uint16_t> const& samples, size_t group, int bits) {
    std::string bytes;
    int const lowBits = bits - 8;
    for (size_t i = 0; i < samples.size(); i += group) {
        uint32_t low = 0;
        for (size_t k = 0; k < group; ++k) {
            bytes.push_back(static_cast<char>(samples[i + k] >> lowBits));
            low |= (samples[i + k] & ((1u << lowBits) - 1)) << lowBits * static_cast<int>(k);
        }
        for (size_t byte = 0; byte < group * static_cast<size_t>(lowBits) / 8; ++byte) {
            bytes.push_back(static_cast<char>(low >> 8 * byte));
        }
    }
    return bytes;
}

struct DngField {
    uint16_t tag, type;
    uint32_t count, value;
};

// The smallest DNG there is: one strip of 14-bit samples, with the calibration and the EXIF that a
// camera would give. Further fields replace those of the same tag; those of no type take them out.
inline std::string asDng(Colour const& colour, std::string const& order,
                         std::vector<DngField> const& further = {}) {
    // From XYZ to sRGB, and white.
    constexpr double kMatrixAndNeutral[12] = {3.2406, -1.5372, -0.4986, -0.9689, 1.8758, 0.0415,
                                              0.0557, -0.2040, 1.0570,  1,       1,      1};
    std::vector<uint32_t> fractions;
    for (uint32_t i = 0; i < 12; ++i) {
        double const value = kMatrixAndNeutral[i] / kGains[i < 9 ? i / 3 : i - 9];
        fractions.push_back(static_cast<uint32_t>(std::lround(value * 10000)));
        fractions.push_back(10000);
    }
    uint32_t pattern = 0;
    for (uint32_t i = 0; i < 4; ++i) {
        pattern |= channelOf(order, i & 1, i >> 1) << 8 * i;
    }
    std::map<uint16_t, DngField> fields;
    for (DngField const& field : std::initializer_list<DngField>{
                 {256, 4, 1, kWidth},    {257, 4, 1, kHeight},   {258, 3, 1, 16},
                 {259, 3, 1, 1},         {262, 3, 1, 32803},     {271, 2, 2, 'Q'},
                 {272, 2, 2, 'T'},       {273, 4, 1, 1024},      {274, 3, 1, 6},
                 {277, 3, 1, 1},         {278, 4, 1, kHeight},   {279, 4, 1, kWidth * kHeight * 2},
                 {33421, 3, 2, 0x20002}, {33422, 1, 4, pattern}, {34665, 4, 1, 640},
                 {34853, 4, 1, 832},     {50706, 1, 4, 0x401},   {50708, 2, 2, 'Q'},
                 {50714, 3, 1, 512},     {50717, 4, 1, 16383},   {50721, 10, 9, 512},
                 {50728, 5, 3, 584},     {50778, 3, 1, 21}}) {
        fields[field.tag] = field;
    }
    for (DngField const& field : further) {
        fields[field.tag] = field;
        if (field.type == 0) {
            fields.erase(field.tag);
        }
    }
    std::string file("II*\0\10\0\0\0", 8);
    auto const at = [&file](size_t offset, std::string const& bytes) {
        file.resize(std::max(file.size(), offset + bytes.size()));
        file.replace(offset, bytes.size(), bytes);
    };
    file.push_back(static_cast<char>(fields.size()));
    file.push_back(0);
    for (auto const& [tag, field] : fields) {
        file += bytesOf(std::vector<DngField>{field});
    }
    at(512, bytesOf(fractions));
    // Exposure 1/250, f/2.8, ISO 400, time, 35 mm, the maker's notes, lens; latitude.
    DngField const exif[] = {{33434, 5, 1, 736},  {33437, 5, 1, 744}, {34855, 3, 1, 400},
                             {36867, 2, 20, 752}, {37386, 5, 1, 772}, {37500, 7, 8, 780},
                             {42036, 2, 6, 788}};
    at(640, std::string("\7\0", 2) + bytesOf(exif));
    at(736, bytesOf(std::vector<uint32_t>{1, 250, 28, 10}));
    at(752, std::string("2024:05:06 07:08:09\0", 20) + bytesOf(std::vector<uint32_t>{35, 1}) +
                    "SECRETS!Lens9");
    DngField const gps[] = {{1, 2, 2, 'N'}, {2, 5, 3, 880}};
    at(832, std::string("\2\0", 2) + bytesOf(gps));
    at(880, bytesOf(std::vector<uint32_t>{48, 1, 8, 1, 30, 1}));
    at(1024, bytesOf(mosaic(colour, order, 14, 512)));
    return file;
}

class CliTest : public testing::Test {
  protected:
    void SetUp() override {
        fs::remove_all(mFolder);
        ASSERT_TRUE(fs::create_directory(mFolder));
    }
    void TearDown() override { fs::remove_all(mFolder); }

    std::string path(std::string const& name) const { return (mFolder / name).string(); }

    void put(std::string const& name, std::string const& bytes) const {
        std::ofstream(path(name), std::ios::binary) << bytes;
    }

    std::string get(std::string const& name) const {
        std::ifstream file(path(name), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    }

    // Everything in the folder but what the runs print, hidden files included.
    std::set<std::string> names() const {
        std::set<std::string> found;
        for (auto const& entry : fs::recursive_directory_iterator(mFolder)) {
            if (entry.is_regular_file() && entry.path().extension() != ".txt") {
                found.insert(fs::relative(entry.path(), mFolder).string());
            }
        }
        return found;
    }

    // Runs words of the shell in the folder. @return the exit code
    int shell(std::string const& words) const {
        int const status = std::system(("cd '" + mFolder.string() + "' && " + words).c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    Outcome run(std::string const& arguments) const {
        int const exitCode = shell(QUEN_REPROCESS " " + arguments + " >out.txt 2>err.txt");
        return {exitCode, get("out.txt"), get("err.txt")};
    }

    fs::path const mFolder = fs::temp_directory_path() / ("quen-cli-" + std::to_string(::getpid()));
};

}  // namespace quentest
