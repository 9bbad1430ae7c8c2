#include "host/isp/develop/Resample.h"

#include <libyuv.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

namespace quen::host::isp {

namespace {

/** libyuv's type of strides. */
int asInt(size_t value) {
    return static_cast<int>(value);
}

/** Whether the chroma of two pictures is arranged alike. */
bool haveOneArrangement(YuvPicture const& a, YuvPicture const& b) {
    return a.chromaStep == b.chromaStep && a.isNv21() == b.isNv21();
}

/** Start of the interleaved chroma plane, or of the cb plane. */
uint8_t* chromaStart(YuvPicture const& picture) {
    return picture.isNv21() ? picture.cr : picture.cb;
}

/** Copies chroma between any two arrangements of one size. */
void copyChroma(YuvPicture const& from, YuvPicture const& to) {
    int const width = chromaSize(to.width);
    int const height = chromaSize(to.height);
    int const fromStride = asInt(from.chromaStride);
    int const toStride = asInt(to.chromaStride);
    if (from.isPlanar() && to.isPlanar()) {
        libyuv::CopyPlane(from.cb, fromStride, to.cb, toStride, width, height);
        libyuv::CopyPlane(from.cr, fromStride, to.cr, toStride, width, height);
    } else if (from.isPlanar()) {
        libyuv::MergeUVPlane(to.isNv12() ? from.cb : from.cr, fromStride,
                             to.isNv12() ? from.cr : from.cb, fromStride, chromaStart(to), toStride,
                             width, height);
    } else if (to.isPlanar()) {
        libyuv::SplitUVPlane(chromaStart(from), fromStride, from.isNv12() ? to.cb : to.cr, toStride,
                             from.isNv12() ? to.cr : to.cb, toStride, width, height);
    } else if (haveOneArrangement(from, to)) {
        libyuv::CopyPlane(chromaStart(from), fromStride, chromaStart(to), toStride, 2 * width,
                          height);
    } else {
        libyuv::SwapUVPlane(chromaStart(from), fromStride, chromaStart(to), toStride, width,
                            height);
    }
}

/** Area averaging to shrink, else cubic; both keep the centre in place. */
int interpolationFor(YuvPicture const& from, YuvPicture const& to) {
    bool const shrinks = to.width <= from.width && to.height <= from.height;
    return shrinks ? cv::INTER_AREA : cv::INTER_CUBIC;
}

/** Scales one plane; `type` is OpenCV's type of a sample. */
void scalePlane(uint8_t* from, size_t fromStride, cv::Size fromSize, uint8_t* to, size_t toStride,
                cv::Size toSize, int type, int interpolation) {
    cv::Mat const source(fromSize, type, from, fromStride);
    cv::Mat target(toSize, type, to, toStride);
    cv::resize(source, target, toSize, 0, 0, interpolation);
}

/** Scales chroma between pictures of one arrangement. */
void scaleChroma(YuvPicture const& from, YuvPicture const& to) {
    int const interpolation = interpolationFor(from, to);
    cv::Size const fromSize(chromaSize(from.width), chromaSize(from.height));
    cv::Size const toSize(chromaSize(to.width), chromaSize(to.height));
    auto const scale = [&](uint8_t* source, uint8_t* target, int type) {
        scalePlane(source, from.chromaStride, fromSize, target, to.chromaStride, toSize, type,
                   interpolation);
    };
    if (from.isPlanar()) {
        scale(from.cb, to.cb, CV_8UC1);
        scale(from.cr, to.cr, CV_8UC1);
    } else {
        scale(chromaStart(from), chromaStart(to), CV_8UC2);
    }
}

/** Chroma planes of the target's size in the source's arrangement, allocated in `bytes`. */
YuvPicture chromaLike(YuvPicture const& source, YuvPicture const& target,
                      std::unique_ptr<uint8_t[]>& bytes) {
    size_t const row = static_cast<size_t>(chromaSize(target.width));
    size_t const plane = row * static_cast<size_t>(chromaSize(target.height));
    bytes.reset(new uint8_t[2 * plane]);
    YuvPicture result;
    result.width = target.width;
    result.height = target.height;
    result.chromaStep = source.chromaStep;
    result.chromaStride = row * source.chromaStep;
    result.cb = source.isNv21() ? bytes.get() + 1 : bytes.get();
    result.cr = source.isPlanar() ? bytes.get() + plane : bytes.get() + (source.isNv21() ? 0 : 1);
    return result;
}

}  // namespace

void resample(YuvPicture const& source, YuvPicture const& target) {
    if (source.width == target.width && source.height == target.height) {
        libyuv::CopyPlane(source.y, asInt(source.lumaStride), target.y, asInt(target.lumaStride),
                          target.width, target.height);
        copyChroma(source, target);
        return;
    }
    scalePlane(source.y, source.lumaStride, {source.width, source.height}, target.y,
               target.lumaStride, {target.width, target.height}, CV_8UC1,
               interpolationFor(source, target));
    if (haveOneArrangement(source, target)) {
        scaleChroma(source, target);
        return;
    }
    std::unique_ptr<uint8_t[]> bytes;
    YuvPicture const scaled = chromaLike(source, target, bytes);
    scaleChroma(source, scaled);
    copyChroma(scaled, target);
}

}  // namespace quen::host::isp
