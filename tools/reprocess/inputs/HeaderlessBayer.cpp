#include "inputs/HeaderlessBayer.h"

#include <algorithm>
#include <vector>

#include "host/base/Parallel.h"
#include "inputs/BitsUsed.h"
#include "inputs/Corrections.h"
#include "inputs/EvenSize.h"
#include "inputs/MappedFile.h"
#include "inputs/PackedSamples.h"
#include "support/Failure.h"
#include "support/Text.h"

namespace quen::reprocess {
namespace {

constexpr int kDefaultBits = 10;

struct LayoutName {
    SampleLayout layout;
    char const* text;
};

// Those that a file's size may tell come first.
constexpr LayoutName kLayouts[] = {
        {SampleLayout::Words, "in words of 16 bits"},
        {SampleLayout::Raw14, "as packed RAW14"},
        {SampleLayout::Raw12, "as packed RAW12"},
        {SampleLayout::Raw10, "as packed RAW10"},
        {SampleLayout::BigEndianWords, "in big-endian words"},
};

/** The text of a layout, as in "takes 3840 bytes as packed RAW10". */
char const* layoutText(SampleLayout layout) {
    auto const found = std::find_if(std::begin(kLayouts), std::end(kLayouts),
                                    [&](LayoutName const& name) { return name.layout == layout; });
    return found->text;
}

/** Where the rows of a mosaic lie in its file. */
struct Rows {
    SampleLayout layout;
    size_t offset;
    size_t rowBytes;  // without padding
    size_t stride;
    size_t end;        // of the last row, without padding
    size_t paddedEnd;  // of the last row, with padding
};

/** The rows that the options state, in a layout. */
Rows rowsOf(SampleLayout layout, InputOptions const& options) {
    auto const [width, height] = *options.size;
    PackedGroup const group = packedGroup(layout);
    Rows rows{layout, options.offset.value_or(0), 0, 0, 0, 0};
    rows.rowBytes = size_t{(width + group.pixels - 1) / group.pixels} * group.bytes;
    rows.stride = options.stride.value_or(rows.rowBytes);
    rows.paddedEnd = rows.offset + rows.stride * height;
    rows.end = rows.offset + rows.stride * (height - 1) + rows.rowBytes;
    return rows;
}

/** What the layouts of a size take: "6144 in words of 16 bits, 3840 as packed RAW10". */
std::string sizesText(InputOptions const& options) {
    std::string text;
    for (LayoutName const& name : kLayouts) {
        Rows const rows = rowsOf(name.layout, options);
        if (name.layout != SampleLayout::BigEndianWords && rows.rowBytes <= rows.stride) {
            text += (text.empty() ? "" : ", ") + std::to_string(rows.paddedEnd) + " " + name.text;
        }
    }
    return text.empty() ? "rows of more than --stride" : text;
}

/** The rows in the layout that was stated. @throws Failure when whole rows would be left out */
Rows statedRows(size_t fileBytes, InputOptions const& options, Capture& capture) {
    Rows const rows = rowsOf(*options.layout, options);
    if (fileBytes <= rows.paddedEnd) {
        return rows;
    }
    size_t const rest = fileBytes - rows.paddedEnd;
    if (rest >= rows.stride) {
        throw Failure(format("has %zu bytes, of which the picture takes %zu %s", fileBytes,
                             rows.paddedEnd, layoutText(rows.layout)),
                      "check --size, --layout, --stride and --offset");
    }
    capture.notes.push_back("goes on after the picture: its last " + bytesText(rest) +
                            " are left out");
    return rows;
}

/** The rows in the layout that the file's size tells. @throws Failure when it tells none */
Rows rowsBySize(size_t fileBytes, InputOptions const& options) {
    for (LayoutName const& name : kLayouts) {
        Rows const rows = rowsOf(name.layout, options);
        // Where the rows have a stride, the longest that fit into it are taken.
        bool const fits = rows.rowBytes <= rows.stride &&
                          (fileBytes == rows.end || fileBytes == rows.paddedEnd);
        if (fits && name.layout != SampleLayout::BigEndianWords) {
            return rows;
        }
    }
    auto const [width, height] = *options.size;
    std::string const all =
            format("%zu bytes; %ux%u takes ", fileBytes, width, height) + sizesText(options);
    bool const isShort = fileBytes < rowsOf(SampleLayout::Raw10, options).end;
    throw Failure((isShort ? "ends before the picture does: it has " : "has ") + all,
                  "check --size, --stride and --offset, or name the --layout");
}

/** The rows of a file. @throws Failure when it does not hold them */
Rows findRows(size_t fileBytes, InputOptions const& options, Capture& capture) {
    Rows const rows = options.layout ? statedRows(fileBytes, options, capture)
                                     : rowsBySize(fileBytes, options);
    if (rows.stride < rows.rowBytes) {
        throw Failure(format("has rows of %zu bytes %s, more than --stride says", rows.rowBytes,
                             layoutText(rows.layout)),
                      "check --stride and --size");
    }
    if (fileBytes < rows.end) {
        throw Failure(format("ends before the picture does: it has %zu bytes of %zu %s", fileBytes,
                             rows.end, layoutText(rows.layout)),
                      "check --size, --stride and --offset");
    }
    return rows;
}

/** The depth of the samples. @throws Failure when layout and options contradict each other */
int depthOf(Rows const& rows, InputOptions const& options) {
    int const packed = packedGroup(rows.layout).bits;
    if (packed != 0 && options.bits.value_or(packed) != packed) {
        throw Failure(format("has samples of %d bits %s, but --bits says %d", packed,
                             layoutText(rows.layout), *options.bits),
                      "leave --bits out, or check --size and --layout");
    }
    return packed != 0 ? packed : options.bits.value_or(kDefaultBits);
}

/** Throws when a sample has more bits than the options state. */
void checkDepth(BayerImage const& image, uint32_t width, uint32_t height, int bits) {
    if (bitsUsed(image, width, height) >> bits == 0) {
        return;
    }
    unsigned largest = 0;
    for (uint32_t y = 0; y < height; ++y) {
        uint16_t const* const row = image.samples + y * image.stride;
        largest = std::max<unsigned>(largest, *std::max_element(row, row + width));
    }
    throw Failure(format("has a sample of %u, more than %d bits hold", largest, bits),
                  "give the true depth with --bits, or the order of bytes with --layout words-be");
}

/** Unpacks the rows of a file to words. */
std::shared_ptr<std::vector<uint16_t>> unpackRows(uint8_t const* first, Rows const& rows,
                                                  uint32_t width, uint32_t height) {
    auto samples = std::make_shared<std::vector<uint16_t>>(size_t{width} * height);
    host::inParallel(static_cast<int>(height), [&] {
        return [&](int y) {
            size_t const row = static_cast<size_t>(y);
            unpackSamples(rows.layout, first + row * rows.stride, width,
                          samples->data() + row * width);
        };
    });
    return samples;
}

/** Reads the rows: as they lie in the file where the client takes them so, else unpacked. */
BayerImage readRows(std::shared_ptr<MappedFile const> const& file, Rows const& rows,
                    InputOptions const& options, Capture& capture) {
    auto const [width, height] = *options.size;
    uint8_t const* const first = file->data() + rows.offset;
    bool const wordAligned =
            rows.offset % sizeof(uint16_t) == 0 && rows.stride % sizeof(uint16_t) == 0;
    BayerImage image;
    capture.memory = file;
    if (rows.layout == SampleLayout::Raw10) {
        image.packed10 = first;
        image.stride = rows.stride;
    } else if (rows.layout == SampleLayout::Words && wordAligned) {
        image.samples = reinterpret_cast<uint16_t const*>(first);
        image.stride = rows.stride / sizeof(uint16_t);
    } else {
        auto const samples = unpackRows(first, rows, width, height);
        image.samples = samples->data();
        image.stride = width;
        capture.memory = samples;
    }
    return image;
}

}  // namespace

Capture readHeaderlessBayer(std::string const& path, InputOptions const& options) {
    auto const file = MappedFile::open(path);
    auto const [width, height] = *options.size;
    Capture capture;
    Rows const rows = findRows(file->size(), options, capture);
    int const bits = depthOf(rows, options);
    SensorCalibration& calibration = capture.calibration;
    calibration.bayerOrder = *options.bayer;
    calibration.levelBits = bits;
    calibration.whiteLevel = static_cast<float>((1 << bits) - 1);
    applyCorrections(options, calibration);
    BayerImage const image = readRows(file, rows, options, capture);
    if (image.samples) {
        checkDepth(image, width, height, bits);
    }
    capture.image = image;
    setEvenSize(width, height, capture);
    return capture;
}

}  // namespace quen::reprocess
