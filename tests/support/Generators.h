#pragma once

// Files that a transcript of commands asks for by a few words.

#include <turbojpeg.h>

#include <cstdint>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "support/Cli.h"

namespace quentest {

inline std::string swapped(std::string bytes, size_t size = 2) {
    for (size_t i = 0; i + size <= bytes.size(); i += size) {
        std::reverse(bytes.begin() + static_cast<ptrdiff_t>(i),
                     bytes.begin() + static_cast<ptrdiff_t>(i + size));
    }
    return bytes;
}

// A DNG as asDng makes it, with all its numbers big-endian.
inline std::string bigEndian(std::string file) {
    auto const swap = [&file](size_t at, size_t count, size_t size) {
        file.replace(at, count * size, swapped(file.substr(at, count * size), size));
    };
    auto const little = [&file](size_t at) {
        return static_cast<size_t>(static_cast<uint8_t>(file[at])) |
               static_cast<size_t>(static_cast<uint8_t>(file[at + 1])) << 8;
    };
    constexpr size_t kParts[] = {1, 1, 1, 2, 4, 4, 1, 1, 2, 4, 4};
    for (size_t const directory : {size_t{8}, size_t{640}, size_t{832}}) {
        size_t const count = little(directory);
        for (size_t entry = directory + 2; entry < directory + 2 + 12 * count; entry += 12) {
            size_t const part = kParts[little(entry + 2)];
            bool const isFraction = little(entry + 2) == 5 || little(entry + 2) == 10;
            size_t const parts = little(entry + 4) * (isFraction ? 2 : 1);
            bool const isHere = part * parts <= 4;
            swap(isHere ? entry + 8 : little(entry + 8), parts, part);
            swap(entry, 2, 2);
            swap(entry + 4, isHere ? 1 : 2, 4);
        }
        swap(directory, 1, 2);
    }
    swap(4, 1, 4);
    swap(1024, kWidth * kHeight, 2);
    return file.replace(0, 4, std::string("MM\0*", 4));
}

inline std::string mosaicFile(std::vector<uint16_t> const& samples, std::string const& layout) {
    if (layout == "words-be") {
        return swapped(bytesOf(samples));
    }
    static std::map<std::string, std::pair<size_t, int>> const groups = {
            {"raw10", {4, 10}}, {"raw12", {2, 12}}, {"raw14", {4, 14}}};
    auto const group = groups.find(layout);
    return group == groups.end() ? bytesOf(samples)
                                 : packed(samples, group->second.first, group->second.second);
}

// Samples that have nothing to do with their neighbours.
inline std::vector<uint16_t> noise(int bits) {
    std::vector<uint16_t> samples;
    for (uint32_t i = 0; i < kWidth * kHeight; ++i) {
        samples.push_back(static_cast<uint16_t>(i * 2654435761u >> (32 - bits)));
    }
    return samples;
}

// A JPEG whose colours differ from place to place.
inline std::string jpegFile(int width, int height, std::string const& sampling) {
    static std::map<std::string, int> const samplings = {
            {"444", TJSAMP_444}, {"422", TJSAMP_422}, {"420", TJSAMP_420}, {"grey", TJSAMP_GRAY},
            {"440", TJSAMP_440}, {"411", TJSAMP_411}, {"inks", TJSAMP_444}};
    int const format = sampling == "inks" ? TJPF_CMYK : TJPF_RGB;
    std::vector<uint8_t> pixels;
    for (int i = 0; i < width * height; ++i) {
        int const x = i % width * 200 / width;
        int const y = i / width * 200 / height;
        for (int const value : {x + 20, y + 20, 220 - x, 0}) {
            pixels.push_back(static_cast<uint8_t>(value));
        }
        pixels.resize(static_cast<size_t>((i + 1) * tjPixelSize[format]));
    }
    tjhandle const encoder = tjInitCompress();
    uint8_t* bytes = nullptr;
    unsigned long size = 0;
    tjCompress2(encoder, pixels.data(), width, 0, height, format, &bytes, &size,
                samplings.at(sampling), 95, TJFLAG_ACCURATEDCT);
    std::string const file(reinterpret_cast<char*>(bytes), size);
    tjFree(bytes);
    tjDestroy(encoder);
    return file;
}

/**
 * The file of a few words:
 *   mosaic COLOUR ORDER BITS BLACK LAYOUT    headerless, 64x48
 *   noise BITS LAYOUT                        the same, of no colour
 *   dng COLOUR ORDER [big] [TAG:TYPE:COUNT:VALUE...]
 *   jpeg WIDTH HEIGHT SAMPLING
 */
inline std::string generated(std::string const& words) {
    static std::map<std::string, Colour> const colours = {
            {"grey", kGrey}, {"brick", kBrick}, {"scene", kScene}};
    std::istringstream from(words);
    std::string kind, first, second;
    from >> kind >> first;
    int one = 0, two = 0;
    if (kind == "mosaic") {
        std::string layout;
        from >> second >> one >> two >> layout;
        return mosaicFile(mosaic(colours.at(first), second, one, two), layout);
    }
    if (kind == "noise") {
        from >> second;
        return mosaicFile(noise(std::stoi(first)), second);
    }
    if (kind == "jpeg") {
        from >> one >> second;
        return jpegFile(std::stoi(first), one, second);
    }
    from >> second;
    bool isBig = false;
    std::vector<DngField> fields;
    for (std::string word; from >> word;) {
        unsigned tag = 0, type = 0, count = 0, value = 0;
        isBig = isBig || word == "big";
        if (std::sscanf(word.c_str(), "%u:%u:%u:%u", &tag, &type, &count, &value) == 4) {
            fields.push_back(
                    {static_cast<uint16_t>(tag), static_cast<uint16_t>(type), count, value});
        }
    }
    std::string const file = asDng(colours.at(first), second, fields);
    return isBig ? bigEndian(file) : file;
}

}  // namespace quentest
