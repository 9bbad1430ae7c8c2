#include <nscam/Format.h>

#include <algorithm>
#include <iterator>

#include <system/graphics.h>

namespace NSCam::Utils::Format {

namespace {

struct Plane {
    size_t subsampling;  // picture pixels per plane pixel, horizontally
    size_t bitsPerPixel;
};

struct FormatInfo {
    int format;
    size_t bitsPerPixel;  // of the whole picture
    size_t planeCount;
    Plane planes[3];
};

constexpr FormatInfo kFormats[] = {
        {HAL_PIXEL_FORMAT_RGBA_8888, 32, 1, {{1, 32}}},
        {HAL_PIXEL_FORMAT_YCRCB_420_SP, 12, 2, {{1, 8}, {2, 16}}},
        {HAL_PIXEL_FORMAT_RAW16, 16, 1, {{1, 16}}},
        {HAL_PIXEL_FORMAT_BLOB, 8, 1, {{1, 8}}},
        {HAL_PIXEL_FORMAT_IMPLEMENTATION_DEFINED, 12, 2, {{1, 8}, {2, 16}}},
        {HAL_PIXEL_FORMAT_YCBCR_420_888, 12, 3, {{1, 8}, {2, 8}, {2, 8}}},
        {HAL_PIXEL_FORMAT_RAW10, 10, 1, {{1, 10}}},
        {HAL_PIXEL_FORMAT_RAW12, 12, 1, {{1, 12}}},
        {HAL_PIXEL_FORMAT_YV12, 12, 3, {{1, 8}, {2, 8}, {2, 8}}},
};

FormatInfo const* findFormat(int format) {
    auto const* const found =
            std::find_if(std::begin(kFormats), std::end(kFormats),
                         [&](FormatInfo const& info) { return info.format == format; });
    return found == std::end(kFormats) ? nullptr : found;
}

Plane const* findPlane(int format, size_t planeIndex) {
    FormatInfo const* const info = findFormat(format);
    return info != nullptr && planeIndex < info->planeCount ? &info->planes[planeIndex] : nullptr;
}

}  // namespace

size_t queryPlaneCount(int format) {
    FormatInfo const* const info = findFormat(format);
    return info != nullptr ? info->planeCount : 0;
}

size_t queryPlaneWidthInPixels(int format, size_t planeIndex, size_t imageWidthInPixels) {
    Plane const* const plane = findPlane(format, planeIndex);
    if (plane == nullptr) {
        return 0;
    }
    // The last column of an odd width has a chroma sample of its own.
    return imageWidthInPixels / plane->subsampling + imageWidthInPixels % plane->subsampling;
}

size_t queryPlaneBitsPerPixel(int format, size_t planeIndex) {
    Plane const* const plane = findPlane(format, planeIndex);
    return plane != nullptr ? plane->bitsPerPixel : 0;
}

size_t queryImageBitsPerPixel(int format) {
    FormatInfo const* const info = findFormat(format);
    return info != nullptr ? info->bitsPerPixel : 0;
}

}  // namespace NSCam::Utils::Format
