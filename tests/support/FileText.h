#pragma once

// What is in a picture's file, as text that is the same on every machine.

#include <png.h>
#include <tiffio.h>
#include <turbojpeg.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace quentest {

template <typename... Values>
std::string formatted(char const* pattern, Values... values) {
    char text[200];
    std::snprintf(text, sizeof(text), pattern, values...);
    return text;
}

inline uint32_t byteAt(std::string const& bytes, size_t at) {
    return at < bytes.size() ? static_cast<uint8_t>(bytes[at]) : 0;
}

// Samples of 16 bits, those of 8 scaled: red, green, blue, row by row.
struct Rgb {
    uint32_t width = 0;
    uint32_t height = 0;
    int bits = 0;
    std::vector<int> samples;

    void add(uint8_t const* row) {
        for (uint32_t i = 0; i < 3 * width; ++i) {
            samples.push_back(bits == 8 ? 257 * row[i] : reinterpret_cast<uint16_t const*>(row)[i]);
        }
    }
};

// EXIF of a PNG; other kinds hold theirs otherwise.
inline Rgb readPng(std::string const& path, std::string* exif = nullptr) {
    Rgb rgb;
    std::FILE* const file = std::fopen(path.c_str(), "rb");
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file);
    png_read_png(png, info, PNG_TRANSFORM_SWAP_ENDIAN, nullptr);
    EXPECT_EQ(PNG_COLOR_TYPE_RGB, png_get_color_type(png, info));
    EXPECT_NE(0u, png_get_valid(png, info, PNG_INFO_sRGB));
    png_bytep block = nullptr;
    png_uint_32 bytes = 0;
    if (exif != nullptr && png_get_eXIf_1(png, info, &bytes, &block) != 0) {
        exif->assign(block, block + bytes);
    }
    rgb.width = png_get_image_width(png, info);
    rgb.height = png_get_image_height(png, info);
    rgb.bits = png_get_bit_depth(png, info);
    for (uint32_t y = 0; y < rgb.height; ++y) {
        rgb.add(png_get_rows(png, info)[y]);
    }
    png_destroy_read_struct(&png, &info, nullptr);
    std::fclose(file);
    return rgb;
}

inline Rgb readTiff(std::string const& path) {
    Rgb rgb;
    TIFF* const tiff = TIFFOpen(path.c_str(), "r");
    uint16_t bits = 0;
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &rgb.width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &rgb.height);
    TIFFGetField(tiff, TIFFTAG_BITSPERSAMPLE, &bits);
    rgb.bits = bits;
    std::vector<uint8_t> row(static_cast<size_t>(TIFFScanlineSize(tiff)));
    for (uint32_t y = 0; y < rgb.height; ++y) {
        EXPECT_EQ(1, TIFFReadScanline(tiff, row.data(), y));
        rgb.add(row.data());
    }
    TIFFClose(tiff);
    return rgb;
}

inline Rgb readPpm(std::string const& path) {
    Rgb rgb;
    std::ifstream file(path, std::ios::binary);
    std::string magic;
    int white = 0;
    file >> magic >> rgb.width >> rgb.height >> white;
    file.get();
    EXPECT_EQ("P6", magic);
    rgb.bits = white == 255 ? 8 : 16;
    for (uint32_t i = 0; i < 3 * rgb.width * rgb.height; ++i) {
        int const high = file.get();
        rgb.samples.push_back(rgb.bits == 8 ? 257 * high : 256 * high + file.get());
    }
    EXPECT_FALSE(file.eof());
    EXPECT_EQ(EOF, file.get());
    return rgb;
}

// The means of red, green and blue in the cells of a grid, of at most 255. Those of a JPEG depend
// on how a machine rounds: whole ones.
inline std::string cellsText(Rgb const& rgb, int decimals = 1) {
    uint32_t const scale = rgb.width > 1000 ? 4 : 1;
    uint32_t const columns = 4 * scale;
    uint32_t const rows = 3 * scale;
    std::vector<double> sums(3 * columns * rows);
    std::vector<double> counts(columns * rows);
    bool isFine = false;
    for (size_t i = 0; i < rgb.samples.size(); ++i) {
        uint32_t const pixel = static_cast<uint32_t>(i / 3);
        size_t const cell = pixel / rgb.width * rows / rgb.height * columns +
                            pixel % rgb.width * columns / rgb.width;
        sums[3 * cell + i % 3] += rgb.samples[i] / 257.0;
        counts[cell] += 1 / 3.0;
        isFine = isFine || rgb.samples[i] % 257 != 0;
    }
    std::vector<std::string> cells;
    for (size_t i = 0; i < counts.size(); ++i) {
        cells.push_back(formatted("~%.*f ~%.*f ~%.*f", decimals, sums[3 * i] / counts[i], decimals,
                                  sums[3 * i + 1] / counts[i], decimals,
                                  sums[3 * i + 2] / counts[i]));
    }
    std::string text = isFine ? "finer than 8 bits\n" : "";
    if (std::all_of(cells.begin(), cells.end(), [&](auto const& one) { return one == cells[0]; })) {
        return text + cells[0] + " everywhere\n";
    }
    for (size_t i = 0; i < cells.size(); ++i) {
        text += cells[i] + ((i + 1) % columns == 0 ? "\n" : " | ");
    }
    return text;
}

// The means of the bytes at even and at odd places in parts of a file.
inline std::string partsText(std::string const& bytes) {
    constexpr size_t kParts = 12;
    std::string text;
    for (size_t part = 0; part < kParts; ++part) {
        double sums[2] = {};
        size_t const begin = bytes.size() * part / kParts;
        size_t const end = bytes.size() * (part + 1) / kParts;
        for (size_t i = begin; i < end; ++i) {
            sums[i % 2] += 2.0 * byteAt(bytes, i) / static_cast<double>(end - begin);
        }
        text += formatted("~%.1f ~%.1f%s", sums[0], sums[1], part + 1 < kParts ? " | " : "\n");
    }
    return text;
}

std::string jpegText(std::string const& bytes);

// The directories of a TIFF, which EXIF is as well: a line each.
class Directories {
  public:
    explicit Directories(std::string const& bytes) : mBytes(bytes) {
        add("directory", number(4, 4), true);
    }
    std::string const& text() const { return mText; }

  private:
    uint32_t number(size_t at, size_t size) const {
        uint32_t value = 0;
        for (size_t i = 0; i < size; ++i) {
            bool const isLittle = byteAt(mBytes, 0) == 'I';
            value |= byteAt(mBytes, at + i) << 8 * (isLittle ? i : size - 1 - i);
        }
        return value;
    }

    void add(std::string const& name, size_t at, bool hasNext) {
        size_t const count = number(at, 2);
        std::string further;
        std::string line = name;
        std::map<uint32_t, uint32_t> values;
        for (size_t entry = at + 2; entry < at + 2 + 12 * count; entry += 12) {
            uint32_t const tag = number(entry, 2);
            values[tag] = number(entry + 8, 4);
            line += formatted(" %04x=", tag) + valuesText(tag, entry);
        }
        mText += line + "\n";
        for (auto const& [tag, below] : {std::pair(0x8769u, "exif"), {0x8825u, "gps"}}) {
            if (values.count(tag) != 0) {
                add(below, values[tag], false);
            }
        }
        if (values.count(0x201) != 0) {
            mText += "thumbnail " + jpegText(mBytes.substr(values[0x201], values[0x202]));
        }
        if (size_t const next = number(at + 2 + 12 * count, 4); hasNext && next != 0) {
            add("next", next, false);
        }
    }

    std::string valuesText(uint32_t tag, size_t entry) const {
        static constexpr size_t kSizes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4};
        uint32_t const type = number(entry + 2, 2);
        size_t const count = number(entry + 4, 4);
        size_t const size = type < std::size(kSizes) ? kSizes[type] : 1;
        size_t const at = size * count <= 4 ? entry + 8 : number(entry + 8, 4);
        // Places and sizes in the file change with what is compressed.
        for (uint32_t const place : {0x8769, 0x8825, 0x111, 0x117, 0x201, 0x202}) {
            if (tag == place) {
                return "*";
            }
        }
        if (type == 2) {
            return "'" + mBytes.substr(at, count - 1) + "'";
        }
        std::string text;
        for (size_t i = 0; i < std::min<size_t>(count, 12); ++i) {
            text += i == 0 ? "" : ",";
            text += formatted("%u", number(at + i * size, std::min<size_t>(size, 4)));
            text += size == 8 ? formatted("/%u", number(at + i * size + 4, 4)) : "";
        }
        return text;
    }

    std::string const& mBytes;
    std::string mText;
};

// Size, sampling, the first steps of quantisation, segments, EXIF, colour profile, colours.
inline std::string jpegText(std::string const& bytes) {
    static constexpr char const* kSamplings[] = {"4:4:4", "4:2:2", "4:2:0",
                                                 "grey",  "4:4:0", "4:1:1"};
    auto const* const data = reinterpret_cast<uint8_t const*>(bytes.data());
    tjhandle const decoder = tjInitDecompress();
    int width = 0, height = 0, sampling = 0, colour = 0;
    if (tjDecompressHeader3(decoder, data, bytes.size(), &width, &height, &sampling, &colour) !=
                0 ||
        width == 0 || height == 0) {
        tjDestroy(decoder);
        return "broken JPEG\n";
    }
    if (width > 8192 || height > 8192) {
        tjDestroy(decoder);
        return formatted("JPEG %dx%d\n", width, height);
    }
    Rgb rgb{static_cast<uint32_t>(width), static_cast<uint32_t>(height), 8, {}};
    std::vector<uint8_t> pixels(3 * size_t{rgb.width} * rgb.height);
    int const result = tjDecompress2(decoder, data, bytes.size(), pixels.data(), width, 0, height,
                                     TJPF_RGB, TJFLAG_ACCURATEDCT | TJFLAG_STOPONWARNING);
    tjDestroy(decoder);
    for (uint32_t y = 0; y < rgb.height; ++y) {
        rgb.add(pixels.data() + 3 * size_t{rgb.width} * y);
    }
    std::string text = formatted("JPEG %dx%d %s%s, segments", width, height, kSamplings[sampling],
                                 result == 0 ? "" : " damaged");
    std::string steps, exif, profile;
    for (size_t at = 2; byteAt(bytes, at) == 0xff && byteAt(bytes, at + 1) != 0xda;) {
        uint32_t const marker = byteAt(bytes, at + 1);
        size_t const length = byteAt(bytes, at + 2) << 8 | byteAt(bytes, at + 3);
        text += formatted(" %02x", marker);
        std::string const segment = bytes.substr(std::min(at + 4, bytes.size()), length - 2);
        if (marker == 0xdb && steps.empty()) {
            steps = formatted(", steps %u %u %u", byteAt(segment, 1), byteAt(segment, 2),
                              byteAt(segment, 64));
        }
        if (marker == 0xe1 && exif.empty() && segment.size() > 6) {
            exif = segment.substr(6);
        } else if (marker == 0xe2 && segment.size() > 14) {
            profile += segment.substr(14);
        }
        at += 2 + length;
    }
    text += steps + "\n" + (exif.empty() ? "" : Directories(exif).text());
    if (!profile.empty()) {
        uint32_t sum = 0;
        for (char const byte : profile) {
            sum = 31 * sum + static_cast<uint8_t>(byte);
        }
        text += formatted("profile of %zu bytes, sum %08x\n", profile.size(), sum);
    }
    return text + cellsText(rgb, 0);
}

inline std::string fileText(std::string const& path, std::string const& bytes) {
    auto const begins = [&](std::string const& start) { return bytes.rfind(start, 0) == 0; };
    if (begins("\xff\xd8")) {
        return jpegText(bytes);
    }
    if (begins("\x89PNG\r\n")) {
        std::string exif;
        Rgb const rgb = readPng(path, &exif);
        return formatted("PNG %ux%u of %d bits\n", rgb.width, rgb.height, rgb.bits) +
               (exif.empty() ? "" : Directories(exif).text()) + cellsText(rgb);
    }
    std::string const extension = path.substr(path.rfind('.') + 1);
    if (begins("II*") && extension.substr(0, 3) == "tif") {
        return "TIFF\n" + Directories(bytes).text() + cellsText(readTiff(path));
    }
    if (begins("P6\n")) {
        Rgb const rgb = readPpm(path);
        return formatted("PPM %ux%u of %d bits\n", rgb.width, rgb.height, rgb.bits) +
               cellsText(rgb);
    }
    if (extension == "nv21" || extension == "yuv" || extension == "YUV") {
        return formatted("%zu bytes\n", bytes.size()) + partsText(bytes);
    }
    // A recording's times are longer or shorter numbers.
    return bytes.size() < 200 && extension != "rec" ? formatted("%zu bytes\n", bytes.size()) : "\n";
}

}  // namespace quentest
