#include "host/isp/device/IspConfiguration.h"

#include <algorithm>
#include <cstdio>

#include <system/graphics.h>

#include "host/isp/buffers/IspLimits.h"

using android::hardware::hidl_vec;
using vendor::mediatek::hardware::camera::isphal::V1_0::ISPStream;
using vendor::mediatek::hardware::camera::isphal::V1_0::ISPStreamConfiguration;
using vendor::mediatek::hardware::camera::isphal::V1_0::Status;

namespace quen::host::isp {

namespace {

constexpr uint32_t kRgbLayout = 0x00010002;

/** A format that input or output streams may have. */
struct FormatRule {
    int32_t format;
    bool isInput;
    StreamKind kind;
    RawLayout rawLayout;
};

constexpr FormatRule kFormatRules[] = {
        {HAL_PIXEL_FORMAT_RAW10, true, StreamKind::Raw, RawLayout::Packed10},
        {HAL_PIXEL_FORMAT_RAW16, true, StreamKind::Raw, RawLayout::Words16},
        {HAL_PIXEL_FORMAT_YCRCB_420_SP, true, StreamKind::Yuv, RawLayout::Words16},
        {HAL_PIXEL_FORMAT_YCBCR_420_888, true, StreamKind::Yuv, RawLayout::Words16},
        {HAL_PIXEL_FORMAT_IMPLEMENTATION_DEFINED, true, StreamKind::Yuv, RawLayout::Words16},
        {HAL_PIXEL_FORMAT_YV12, true, StreamKind::Yuv, RawLayout::Words16},
        {HAL_PIXEL_FORMAT_YCRCB_420_SP, false, StreamKind::Yuv, RawLayout::Words16},
        {HAL_PIXEL_FORMAT_YCBCR_420_888, false, StreamKind::Yuv, RawLayout::Words16},
        {HAL_PIXEL_FORMAT_IMPLEMENTATION_DEFINED, false, StreamKind::Yuv, RawLayout::Words16},
        {HAL_PIXEL_FORMAT_YV12, false, StreamKind::Yuv, RawLayout::Words16},
        {HAL_PIXEL_FORMAT_BLOB, false, StreamKind::Jpeg, RawLayout::Words16},
};

/** Sets kind and layout by the format. @return false when the ISP does not take it */
bool applyFormat(ISPStream const& stream, bool isInput, Stream& result) {
    if (isInput && stream.bufferLayout == kRgbLayout) {
        result.kind = StreamKind::Raw;
        result.rawLayout = RawLayout::Rgb48;
        return true;
    }
    for (FormatRule const& rule : kFormatRules) {
        if (rule.format == stream.format && rule.isInput == isInput) {
            result.kind = rule.kind;
            result.rawLayout = rule.rawLayout;
            return true;
        }
    }
    return false;
}

/** A stream in words: "input stream 3 of 64x48, format 0x20". */
std::string streamText(ISPStream const& stream, bool isInput) {
    char text[96];
    snprintf(text, sizeof(text), "%s stream %lld of %ux%u, format 0x%x",
             isInput ? "input" : "output", static_cast<long long>(stream.id), stream.width,
             stream.height, static_cast<unsigned>(stream.format));
    return text;
}

/** Reads one stream. @return why the ISP does not take it; null when it does */
char const* readStream(ISPStream const& stream, bool isInput, Stream& result) {
    uint32_t const smallest = isInput ? kSmallestInputSide : 1;
    auto const [shorter, longer] = std::minmax(stream.width, stream.height);
    if (shorter < smallest) {
        return "a side is too short";
    }
    if (longer > kLargestSide) {
        return "a side is too long";
    }
    if (!applyFormat(stream, isInput, result)) {
        return "the format is none of those that the ISP takes";
    }
    result.id = static_cast<uint32_t>(stream.id);
    result.width = static_cast<int>(stream.width);
    result.height = static_cast<int>(stream.height);
    result.firstStride = stream.stride.size() == 0 ? 0 : stream.stride[0];
    bool const isPacked = result.kind == StreamKind::Raw && result.rawLayout == RawLayout::Packed10;
    return isPacked && result.width % kPackedGroup != 0
                   ? "packed samples need a width that is a multiple of four"
                   : nullptr;
}

/** Reads the streams of one direction. @return why they are refused; empty when they are not */
std::string readStreams(hidl_vec<ISPStream> const& streams, bool isInput,
                        std::vector<Stream>& result) {
    for (ISPStream const& stream : streams) {
        Stream read;
        char const* problem = readStream(stream, isInput, read);
        if (problem == nullptr && findStream(result, read.id) != nullptr) {
            problem = "there is another of that number";
        }
        if (problem != nullptr) {
            return streamText(stream, isInput) + ": " + problem;
        }
        result.push_back(read);
    }
    return result.empty() ? isInput ? "there is no input stream" : "there is no output stream" : "";
}

}  // namespace

Status readConfiguration(ISPStreamConfiguration const& config, IspConfiguration& result,
                         std::string& problem) {
    problem = readStreams(config.inputStreams, true, result.inputs);
    if (problem.empty()) {
        problem = readStreams(config.outputStreams, false, result.outputs);
    }
    if (problem.empty()) {
        parseSettings(config.sessionSettings, result.settings, &problem);
    }
    return problem.empty() ? Status::OK : Status::ILLEGAL_ARGUMENT;
}

Stream const* findStream(std::vector<Stream> const& streams, uint64_t id) {
    auto const found = std::find_if(streams.begin(), streams.end(), [&](Stream const& stream) {
        return stream.id == static_cast<uint32_t>(id);
    });
    return found == streams.end() ? nullptr : &*found;
}

}  // namespace quen::host::isp
