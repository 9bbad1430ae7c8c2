#include "host/isp/device/Thumbnail.h"

#include <algorithm>

#include "host/isp/develop/Resample.h"
#include "host/isp/jpeg/JpegEncode.h"

namespace quen::host::isp {

namespace {

constexpr int kLongestSide = 160;
constexpr int kQuality = 80;
constexpr size_t kMostBytes = size_t{32} * 1024;  // EXIF has 64 kB at most
constexpr int kRowsPerRow = 4;                    // read for each row of the thumbnail

/** Every n-th row of a picture. */
YuvPicture thinned(YuvPicture const& picture, int n) {
    YuvPicture rows = picture;
    rows.height = picture.height / n;
    rows.lumaStride *= static_cast<size_t>(n);
    rows.chromaStride *= static_cast<size_t>(n);
    return rows;
}

}  // namespace

std::vector<uint8_t> makeThumbnail(YuvPicture const& picture) {
    int const longest = std::max(picture.width, picture.height);
    int const target = std::min(longest, kLongestSide);
    auto const scaled = [&](int side) {
        return std::max(1, static_cast<int>(int64_t{side} * target / longest));
    };
    OwnedYuvPicture const small(scaled(picture.width), scaled(picture.height));
    int const step = std::max(1, picture.height / (kRowsPerRow * small.view().height));
    resample(thinned(picture, step), small.view());
    std::vector<uint8_t> jpeg(kMostBytes);
    jpeg.resize(encodeJpeg(small.view(), kQuality, {}, jpeg.data(), jpeg.size()));
    return jpeg;
}

}  // namespace quen::host::isp
