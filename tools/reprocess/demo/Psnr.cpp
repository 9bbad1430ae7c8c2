#include "demo/Psnr.h"

#include <turbojpeg.h>

#include <cmath>
#include <memory>

#include "support/Failure.h"

namespace quen::reprocess {
namespace {

/** Decodes a JPEG. */
RgbPicture decode(Bytes jpeg) {
    std::unique_ptr<void, decltype(&tjDestroy)> const decoder(tjInitDecompress(), &tjDestroy);
    int width = 0;
    int height = 0;
    int sampling = 0;
    int colour = 0;
    if (!decoder || tjDecompressHeader3(decoder.get(), jpeg.data, jpeg.size, &width, &height,
                                        &sampling, &colour) != 0) {
        throw Failure("came back as no JPEG");
    }
    RgbPicture picture(width, height);
    if (tjDecompress2(decoder.get(), jpeg.data, jpeg.size, picture.samples.data(), width, 3 * width,
                      height, TJPF_RGB, TJFLAG_ACCURATEDCT) != 0) {
        throw Failure(std::string("came back as a damaged JPEG: ") + tjGetErrorStr2(decoder.get()));
    }
    return picture;
}

/** PSNR for a mean squared error of 8-bit samples. */
double decibels(double squaredError) {
    return squaredError > 0 ? 10 * std::log10(255.0 * 255.0 / squaredError) : INFINITY;
}

}  // namespace

Psnr comparePicture(Bytes jpeg, RgbPicture const& scene) {
    RgbPicture const picture = decode(jpeg);
    if (picture.width != scene.width || picture.height != scene.height) {
        throw Failure("came back in another size: " + std::to_string(picture.width) + "x" +
                      std::to_string(picture.height));
    }
    uint64_t sums[3] = {};
    for (size_t i = 0; i < scene.samples.size(); ++i) {
        int const difference = picture.samples[i] - scene.samples[i];
        sums[i % 3] += static_cast<uint64_t>(difference * difference);
    }
    size_t const count = scene.samples.size() / 3;
    auto const pixels = static_cast<double>(count);
    Psnr result;
    for (int channel = 0; channel < 3; ++channel) {
        result.channel[channel] = decibels(static_cast<double>(sums[channel]) / pixels);
    }
    result.decibels = decibels(static_cast<double>(sums[0] + sums[1] + sums[2]) / (3 * pixels));
    return result;
}

}  // namespace quen::reprocess
