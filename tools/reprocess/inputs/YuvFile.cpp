#include "inputs/YuvFile.h"

#include <libyuv.h>

#include "inputs/EvenSize.h"
#include "inputs/MappedFile.h"
#include "support/Failure.h"
#include "support/FileExtension.h"

namespace quen::reprocess {
namespace {

/** The layout that is stated, else that of the file's name. */
YuvLayout layoutOf(std::string const& path, InputOptions const& options) {
    bool const isNamedPlanar = lowerExtension(path) == ".yuv";
    return options.yuv.value_or(isNamedPlanar ? YuvLayout::I420 : YuvLayout::Nv21);
}

/** Copies the even part of a picture to packed NV21. */
std::shared_ptr<std::vector<uint8_t>> repack(MappedFile const& file, uint32_t width,
                                             uint32_t height, YuvLayout layout) {
    int const evenWidth = static_cast<int>(width & ~1u);
    int const evenHeight = static_cast<int>(height & ~1u);
    int const lumaStride = static_cast<int>(width);
    int const chromaStride = static_cast<int>((width + 1) / 2);
    uint8_t const* const luma = file.data();
    uint8_t const* const chroma = luma + size_t{width} * height;
    uint8_t const* const second = chroma + size_t(chromaStride) * ((height + 1) / 2);

    auto packed = std::make_shared<std::vector<uint8_t>>(nv21Size(width & ~1u, height & ~1u));
    uint8_t* const out = packed->data();
    uint8_t* const outChroma = out + size_t(evenWidth) * evenHeight;
    libyuv::CopyPlane(luma, lumaStride, out, evenWidth, evenWidth, evenHeight);
    switch (layout) {
        case YuvLayout::Nv21:
            libyuv::CopyPlane(chroma, chromaStride * 2, outChroma, evenWidth, evenWidth,
                              evenHeight / 2);
            break;
        case YuvLayout::Nv12:
            libyuv::SwapUVPlane(chroma, chromaStride * 2, outChroma, evenWidth, evenWidth / 2,
                                evenHeight / 2);
            break;
        case YuvLayout::I420:
            libyuv::MergeUVPlane(second, chromaStride, chroma, chromaStride, outChroma, evenWidth,
                                 evenWidth / 2, evenHeight / 2);
            break;
        case YuvLayout::Yv12:
            libyuv::MergeUVPlane(chroma, chromaStride, second, chromaStride, outChroma, evenWidth,
                                 evenWidth / 2, evenHeight / 2);
            break;
    }
    return packed;
}

}  // namespace

Capture readYuv(std::string const& path, InputOptions const& options) {
    if (!options.size) {
        throw Failure("does not tell its size", "give it with --size WIDTHxHEIGHT");
    }
    auto const file = MappedFile::open(path);
    auto const [width, height] = *options.size;
    size_t const expected =
            size_t{width} * height + size_t{2} * ((width + 1) / 2) * ((height + 1) / 2);
    if (file->size() != expected) {
        throw Failure((file->size() < expected ? "ends before the picture does: it has " : "has ") +
                              std::to_string(file->size()) + " bytes; " + std::to_string(width) +
                              "x" + std::to_string(height) + " takes " + std::to_string(expected) +
                              " in YUV 4:2:0",
                      "check --size");
    }

    Capture capture;
    setEvenSize(width, height, capture);
    YuvLayout const layout = layoutOf(path, options);
    if (layout != YuvLayout::Nv21 || capture.width != width || capture.height != height) {
        auto const packed = repack(*file, width, height, layout);
        capture.image = Nv21Image{packed->data()};
        capture.memory = packed;
    } else {
        capture.image = Nv21Image{file->data()};
        capture.memory = file;
    }
    return capture;
}

}  // namespace quen::reprocess
