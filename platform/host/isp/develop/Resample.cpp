#include "host/isp/develop/Resample.h"

#include <libyuv.h>

#include "host/isp/develop/ScaledPlane.h"

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

/** The luma plane. */
Plane lumaPlane(YuvPicture const& picture) {
    return {picture.y, picture.lumaStride, picture.width, picture.height, 1};
}

/** The interleaved chroma plane, or the planar one that starts at `data`. */
Plane chromaPlane(YuvPicture const& picture, uint8_t* data) {
    return {data, picture.chromaStride, chromaSize(picture.width), chromaSize(picture.height),
            static_cast<int>(picture.chromaStep)};
}

/** Scales chroma between pictures of one arrangement. */
void scaleChroma(YuvPicture const& from, YuvPicture const& to) {
    if (from.isPlanar()) {
        scalePlane(chromaPlane(from, from.cb), chromaPlane(to, to.cb));
        scalePlane(chromaPlane(from, from.cr), chromaPlane(to, to.cr));
    } else {
        scalePlane(chromaPlane(from, chromaStart(from)), chromaPlane(to, chromaStart(to)));
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
    scalePlane(lumaPlane(source), lumaPlane(target));
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
