// The demo's capture as files, and its scene to compare developed pictures with:
//   demo-frames write FOLDER        makes 04.raw 12.dng 12.raw 50.dng 50.raw
//   demo-frames compare PICTURE...  prints the PSNR of each against the scene, in dB
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "DngFile.h"
#include "demo/DemoScene.h"
#include "demo/DemoSensor.h"
#include "demo/Psnr.h"
#include "inputs/MappedFile.h"
#include "support/Failure.h"

namespace quenbench {
namespace {

using quen::reprocess::BayerImage;
using quen::reprocess::Capture;

constexpr uint32_t kLargeWidth = 8160;
constexpr uint32_t kLargeHeight = 6120;

constexpr uint32_t kSmallWidth = 736;
constexpr uint32_t kSmallHeight = 552;

/** Cuts or tiles a capture to the size of another sensor. */
Capture tiled(Capture const& capture, uint32_t width, uint32_t height) {
    BayerImage const& from = std::get<BayerImage>(capture.image);
    auto const samples = std::make_shared<std::vector<uint16_t>>();
    samples->reserve(size_t{width} * height);
    for (uint32_t y = 0; y < height; ++y) {
        for (uint32_t x = 0; x < width; ++x) {
            samples->push_back(from.samples[y % capture.height * from.stride + x % capture.width]);
        }
    }
    Capture result = capture;
    result.width = width;
    result.height = height;
    BayerImage image;
    image.samples = samples->data();
    image.stride = width;
    result.image = image;
    result.memory = samples;
    return result;
}

bool writeHeaderless(Capture const& capture, std::string const& path) {
    FILE* const file = std::fopen(path.c_str(), "wb");
    size_t const samples = size_t{capture.width} * capture.height;
    bool const isWritten = file && std::fwrite(std::get<BayerImage>(capture.image).samples,
                                               sizeof(uint16_t), samples, file) == samples;
    return file && std::fclose(file) == 0 && isWritten;
}

int writeFrames(std::string const& folder) {
    Capture const small = quen::reprocess::exposeDemoSensor(quen::reprocess::renderDemoScene());
    Capture const large = tiled(small, kLargeWidth, kLargeHeight);
    bool const isWritten =
            writeHeaderless(tiled(small, kSmallWidth, kSmallHeight), folder + "/04.raw") &&
            writeDng(small, folder + "/12.dng") && writeHeaderless(small, folder + "/12.raw") &&
            writeDng(large, folder + "/50.dng") && writeHeaderless(large, folder + "/50.raw");
    if (!isWritten) {
        std::fprintf(stderr, "demo-frames: %s: cannot be written to\n", folder.c_str());
    }
    return isWritten ? 0 : 1;
}

int compare(int count, char** pictures) {
    quen::reprocess::RgbPicture const scene = quen::reprocess::renderDemoScene();
    for (int i = 0; i < count; ++i) {
        auto const file = quen::reprocess::MappedFile::open(pictures[i]);
        std::printf("%.2f\n",
                    quen::reprocess::comparePicture({file->data(), file->size()}, scene).decibels);
    }
    return 0;
}

}  // namespace
}  // namespace quenbench

int main(int argc, char** argv) {
    try {
        if (argc == 3 && std::strcmp(argv[1], "write") == 0) {
            return quenbench::writeFrames(argv[2]);
        }
        if (argc >= 3 && std::strcmp(argv[1], "compare") == 0) {
            return quenbench::compare(argc - 2, argv + 2);
        }
    } catch (quen::reprocess::Failure const& failure) {
        std::fprintf(stderr, "demo-frames: %s\n", failure.what());
        return 1;
    }
    std::fprintf(stderr, "usage: demo-frames write FOLDER | compare PICTURE...\n");
    return 2;
}
