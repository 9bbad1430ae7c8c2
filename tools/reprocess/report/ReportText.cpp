#include "report/ReportText.h"

#include <system/graphics.h>

#include "host/metadata/MetadataText.h"
#include "report/InfoNames.h"
#include "support/Text.h"

namespace quen::reprocess {
namespace {

/** A line about a stream. */
std::string streamText(char const* direction, isphal::ISPStream const& stream) {
    std::string text =
            format("%s stream %lld: %ux%u, format 0x%x %s, %u bytes, stride", direction,
                   static_cast<long long>(stream.id), stream.width, stream.height,
                   static_cast<unsigned>(stream.format), formatName(stream.format), stream.size);
    for (uint32_t const stride : stream.stride) {
        if (stride != 0) {
            text += format(" %u", stride);
        }
    }
    text += format(", usage 0x%llx, data space 0x%x, layout 0x%x\n",
                   static_cast<unsigned long long>(stream.usage), stream.dataSpace,
                   stream.bufferLayout);
    return text;
}

/** A line about a buffer of a request. */
std::string bufferText(char const* direction, isphal::ISPBuffer const& buffer) {
    bool const tuned = buffer.tuningData.getNativeHandle() != nullptr;
    return format("%s buffer of stream %lld, tuning data %s (%u bytes)\n", direction,
                  static_cast<long long>(buffer.streamId), tuned ? "attached" : "none",
                  buffer.tuningDataSize);
}

/** A title and the entries of an ISP metadata buffer. */
template <typename Settings>
std::string settingsText(char const* title, Settings const& settings) {
    return std::string(title) + "\n" +
           indented(host::ispMetadataText(settings.data(), settings.size()));
}

/** Numbers, each after a blank. */
std::string floatsText(float const* values, size_t count) {
    std::string text;
    for (size_t i = 0; i < count; ++i) {
        text += format(" %g", static_cast<double>(values[i]));
    }
    return text;
}

}  // namespace

std::string configurationText(isphal::ISPStreamConfiguration const& config, isphal::Status status) {
    std::string lines;
    for (isphal::ISPStream const& stream : config.inputStreams) {
        lines += streamText("input", stream);
    }
    for (isphal::ISPStream const& stream : config.outputStreams) {
        lines += streamText("output", stream);
    }
    lines += settingsText("session settings", config.sessionSettings);
    return format("ISP configured for %s: %s\n", stageName(config), toString(status).c_str()) +
           indented(lines);
}

std::string requestText(isphal::ISPRequest const& request, isphal::Status status) {
    std::string lines;
    for (isphal::ISPBuffer const& buffer : request.inputBuffers) {
        lines += bufferText("input", buffer);
    }
    for (isphal::ISPBuffer const& buffer : request.outputBuffers) {
        lines += bufferText("output", buffer);
    }
    lines += settingsText("settings", request.settings);
    return format("ISP request %u: %s\n", request.requestNumber, toString(status).c_str()) +
           indented(lines);
}

std::string resultText(isphal::ISPResult const& result, host::isp::IspReport const& report) {
    std::string lines = format("crop %d,%d %dx%d\n", report.crop.x, report.crop.y,
                               report.crop.width, report.crop.height);
    if (report.isRaw) {
        lines += format("samples of %d bits\n", report.rawBits);
        lines += format("capture facts (%s)\n", originName(report.calibrationState));
        lines += indented(calibrationText(report.calibration));
    }
    if (report.hasCalibrationHeader) {
        lines += "output tuning data\n" + indented(calibrationHeaderText(report.calibrationHeader));
    }
    lines += settingsText("result metadata", result.resultMetadata);
    lines += "legs\n";
    for (host::isp::IspLeg const& leg : report.legs) {
        lines += format("  %-16s %9.2f ms\n", leg.name,
                        static_cast<double>(leg.time.count()) / 1000);
    }
    return format("ISP result %u: %s\n", result.reqNumber, toString(result.status).c_str()) +
           indented(lines);
}

std::string calibrationText(host::isp::SensorCalibration const& calibration) {
    return format("Bayer order %s, levels of %d bits\n", bayerName(calibration.bayerOrder),
                  calibration.levelBits) +
           "black R Gr Gb B" + floatsText(calibration.blackLevel, 4) + ", white" +
           floatsText(&calibration.whiteLevel, 1) + "\n" + "gains R Gr Gb B" +
           floatsText(calibration.wbGains, 4) + ", exposure" +
           floatsText(&calibration.exposureGain, 1) + "\n" + "colour matrix" +
           floatsText(calibration.colorMatrix, 9) + "\n" + "noise shot" +
           floatsText(&calibration.noiseShot, 1) + ", read" +
           floatsText(&calibration.noiseRead, 1) + ", denoise" +
           floatsText(&calibration.denoiseStrength, 1) + ", sharpening" +
           floatsText(&calibration.sharpening, 1) + "\n";
}

std::string calibrationHeaderText(host::isp::CalibrationHeader const& header) {
    return format("requestNo %d, frameNumber %d, totalUsedBytes %d\n", header.requestNo,
                  header.frameNumber, header.totalUsedBytes);
}

std::string indented(std::string const& lines) {
    std::string text;
    for (size_t begin = 0; begin < lines.size();) {
        size_t const end = lines.find('\n', begin);
        size_t const next = end == std::string::npos ? lines.size() : end + 1;
        text += "  ";
        text.append(lines, begin, next - begin);
        begin = next;
    }
    return text;
}

}  // namespace quen::reprocess
