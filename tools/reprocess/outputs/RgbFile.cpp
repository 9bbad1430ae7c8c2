#include "outputs/RgbFile.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "outputs/RgbFileModule.h"
#include "outputs/YuvRows.h"
#include "support/Failure.h"
#include "support/Text.h"

namespace quen::reprocess {
namespace {

/** Writes a PPM: a line of text each, then the rows; samples of 16 bits are big-endian. */
std::vector<uint8_t> writePpm(PixelRows& rows) {
    std::string const head =
            format("P6\n%u %u\n%d\n", rows.width(), rows.height(), (1 << rows.bits()) - 1);
    std::vector<uint8_t> file(head.size() + rows.rowBytes() * rows.height());
    std::copy(head.begin(), head.end(), file.begin());
    std::vector<uint8_t> samples(rows.rowBytes());
    uint8_t* out = file.data() + head.size();
    for (uint32_t row = 0; row < rows.height(); ++row, out += rows.rowBytes()) {
        if (rows.bits() == 8) {
            rows.read(row, out);
            continue;
        }
        rows.read(row, samples.data());
        auto const* const words = reinterpret_cast<uint16_t const*>(samples.data());
        for (size_t i = 0; i < rows.rowBytes() / 2; ++i) {
            out[2 * i] = static_cast<uint8_t>(words[i] >> 8);
            out[2 * i + 1] = static_cast<uint8_t>(words[i]);
        }
    }
    return file;
}

std::vector<uint8_t> write(PixelRows& rows, OutputKind kind, std::vector<uint8_t> const& exif) {
    if (kind == OutputKind::Ppm) {
        return writePpm(rows);
    }
    auto const* const module = rgbFileModule();
    if (module == nullptr) {
        throw Failure("cannot be made: what writes PNG and TIFF is not there",
                      "libquen_rgb_files.so belongs beside libquen_isp.so");
    }
    std::string problem;
    std::vector<uint8_t> file = kind == OutputKind::Png ? module->png(rows, exif, problem)
                                                        : module->tiff(rows, exif, problem);
    if (file.empty()) {
        throw Failure("cannot be made: " + problem);
    }
    return file;
}

}  // namespace

Product makeRgbFile(Product const& planes, OutputKind kind, int bits) {
    YuvRows rows(planes.bytes.data, planes.planes->width, planes.planes->height, bits);
    auto const file =
            std::make_shared<std::vector<uint8_t>>(write(rows, kind, planes.planes->exif));
    return {{file->data(), file->size()}, file, planes.note, std::nullopt};
}

}  // namespace quen::reprocess
