#include "demo/Psnr.h"

#include <turbojpeg.h>

#include <cmath>
#include <memory>

#include <opencv2/core.hpp>

#include "support/Failure.h"

namespace quen::reprocess {
namespace {

/** Decodes a JPEG to RGB. */
cv::Mat decode(Bytes jpeg) {
    std::unique_ptr<void, decltype(&tjDestroy)> const decoder(tjInitDecompress(), &tjDestroy);
    int width = 0;
    int height = 0;
    int sampling = 0;
    int colour = 0;
    if (!decoder || tjDecompressHeader3(decoder.get(), jpeg.data, jpeg.size, &width, &height,
                                        &sampling, &colour) != 0) {
        throw Failure("came back as no JPEG");
    }
    cv::Mat picture(height, width, CV_8UC3);
    if (tjDecompress2(decoder.get(), jpeg.data, jpeg.size, picture.data, width,
                      static_cast<int>(picture.step), height, TJPF_RGB, TJFLAG_ACCURATEDCT) != 0) {
        throw Failure(std::string("came back as a damaged JPEG: ") + tjGetErrorStr2(decoder.get()));
    }
    return picture;
}

/** PSNR for a mean squared error of 8-bit samples. */
double decibels(double squaredError) {
    return squaredError > 0 ? 10 * std::log10(255.0 * 255.0 / squaredError) : INFINITY;
}

}  // namespace

Psnr comparePicture(Bytes jpeg, cv::Mat const& scene) {
    cv::Mat const picture = decode(jpeg);
    if (picture.size() != scene.size()) {
        throw Failure("came back in another size: " + std::to_string(picture.cols) + "x" +
                      std::to_string(picture.rows));
    }
    uint64_t sums[3] = {};
    for (int y = 0; y < scene.rows; ++y) {
        uint8_t const* const a = picture.ptr(y);
        uint8_t const* const b = scene.ptr(y);
        for (int x = 0; x < scene.cols * 3; x += 3) {
            for (int channel = 0; channel < 3; ++channel) {
                int const difference = a[x + channel] - b[x + channel];
                sums[channel] += static_cast<uint64_t>(difference * difference);
            }
        }
    }
    double const pixels = static_cast<double>(scene.total());
    Psnr result;
    for (int channel = 0; channel < 3; ++channel) {
        result.channel[channel] = decibels(static_cast<double>(sums[channel]) / pixels);
    }
    result.decibels = decibels(static_cast<double>(sums[0] + sums[1] + sums[2]) / (3 * pixels));
    return result;
}

}  // namespace quen::reprocess
