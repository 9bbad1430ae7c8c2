#include <cstring>
#include <utility>

#include <nlohmann/json.hpp>

#include "host/metadata/IspMetadataReader.h"
#include "host/metadata/VendorTags.h"
#include "report/FrameInfo.h"
#include "report/InfoNames.h"
#include "support/Text.h"

namespace quen::reprocess {
namespace {

using Json = nlohmann::ordered_json;

/** Types of an ISP metadata buffer as those of a `camera_metadata`. */
constexpr uint8_t kTypeOfIspType[] = {TYPE_BYTE, TYPE_INT32, TYPE_INT64, TYPE_FLOAT};

template <typename T>
T load(uint8_t const* items, size_t index) {
    T item;
    std::memcpy(&item, items + index * sizeof(item), sizeof(item));
    return item;
}

Json itemJson(uint8_t type, uint8_t const* items, size_t index) {
    switch (type) {
        case TYPE_BYTE:
            return items[index];
        case TYPE_INT32:
            return load<int32_t>(items, index);
        case TYPE_FLOAT:
            return load<float>(items, index);
        case TYPE_INT64:
            return load<int64_t>(items, index);
        case TYPE_DOUBLE:
            return load<double>(items, index);
        case TYPE_RATIONAL: {
            auto const rational = load<camera_metadata_rational_t>(items, index);
            return {{"numerator", rational.numerator}, {"denominator", rational.denominator}};
        }
        default:
            return nullptr;
    }
}

/** A tag with its values. @param items of no particular alignment */
Json tagJson(uint32_t tag, uint8_t type, size_t count, uint8_t const* items) {
    host::TagInfo const* const info = host::findTag(tag);
    Json values = Json::array();
    for (size_t i = 0; i < count; ++i) {
        values.push_back(itemJson(type, items, i));
    }
    return {{"tag", format("0x%08x", tag)},
            {"name", info == nullptr ? Json() : Json(info->name)},
            {"type", type < NUM_TYPES ? camera_metadata_type_names[type] : "unknown"},
            {"values", std::move(values)}};
}

Json metadataJson(camera_metadata const* metadata) {
    Json tags = Json::array();
    size_t const count = get_camera_metadata_entry_count(metadata);
    for (size_t i = 0; i < count; ++i) {
        camera_metadata_ro_entry_t entry;
        if (get_camera_metadata_ro_entry(metadata, i, &entry) == 0) {
            tags.push_back(tagJson(entry.tag, entry.type, entry.count, entry.data.u8));
        }
    }
    return tags;
}

/** The tags of an ISP metadata buffer; an object that says why where they cannot be read. */
template <typename Settings>
Json settingsJson(Settings const& settings) {
    host::IspMetadataReader reader;
    if (!reader.parse(settings.data(), settings.size())) {
        return Json::object({{"malformed", reader.error()}});
    }
    Json tags = Json::array();
    for (size_t i = 0; i < reader.count(); ++i) {
        host::IspRecord const record = reader.at(i);
        tags.push_back(
                tagJson(record.tag, kTypeOfIspType[record.type], record.count(), record.data));
    }
    return tags;
}

Json streamJson(isphal::ISPStream const& stream) {
    Json strides = Json::array();
    for (uint32_t const stride : stream.stride) {
        if (stride != 0) {
            strides.push_back(stride);
        }
    }
    return {{"id", stream.id},
            {"width_px", stream.width},
            {"height_px", stream.height},
            {"format", static_cast<uint32_t>(stream.format)},
            {"format_name", formatName(stream.format)},
            {"size_bytes", stream.size},
            {"stride_bytes", std::move(strides)},
            {"usage", static_cast<uint64_t>(stream.usage)},
            {"data_space", static_cast<uint32_t>(stream.dataSpace)},
            {"buffer_layout", static_cast<uint32_t>(stream.bufferLayout)}};
}

Json bufferJson(isphal::ISPBuffer const& buffer) {
    return {{"stream_id", buffer.streamId},
            {"has_tuning_data", buffer.tuningData.getNativeHandle() != nullptr},
            {"tuning_data_bytes", buffer.tuningDataSize}};
}

/** An array of what a function makes of each item. */
template <typename Items, typename Make>
Json arrayOf(Items const& items, Make const& make) {
    Json array = Json::array();
    for (auto const& item : items) {
        array.push_back(make(item));
    }
    return array;
}

Json calibrationJson(host::isp::SensorCalibration const& calibration) {
    return {{"bayer_order", bayerName(calibration.bayerOrder)},
            {"level_bits", calibration.levelBits},
            {"black_levels_r_gr_gb_b", calibration.blackLevel},
            {"white_level", calibration.whiteLevel},
            {"gains_r_gr_gb_b", calibration.wbGains},
            {"exposure_gain", calibration.exposureGain},
            {"colour_matrix", calibration.colorMatrix},
            {"noise_shot", calibration.noiseShot},
            {"noise_read", calibration.noiseRead},
            {"denoise_strength", calibration.denoiseStrength},
            {"sharpening", calibration.sharpening}};
}

Json headerJson(host::isp::CalibrationHeader const& header) {
    return {{"request_number", header.requestNo},
            {"frame_number", header.frameNumber},
            {"used_bytes", header.totalUsedBytes}};
}

class JsonInfo final : public FrameInfo {
  public:
    void addConfiguration(isphal::ISPStreamConfiguration const& config,
                          isphal::Status status) override {
        mConfigurations.push_back({{"stage", stageName(config)},
                                   {"status", toString(status)},
                                   {"input_streams", arrayOf(config.inputStreams, streamJson)},
                                   {"output_streams", arrayOf(config.outputStreams, streamJson)},
                                   {"session_settings", settingsJson(config.sessionSettings)}});
    }

    void addRequest(isphal::ISPRequest const& request, isphal::Status status) override {
        mRequests.push_back({{"request_number", request.requestNumber},
                             {"status", toString(status)},
                             {"input_buffers", arrayOf(request.inputBuffers, bufferJson)},
                             {"output_buffers", arrayOf(request.outputBuffers, bufferJson)},
                             {"settings", settingsJson(request.settings)}});
    }

    void addResult(isphal::ISPResult const& result, host::isp::IspReport const& report) override {
        auto const& crop = report.crop;
        Json json = {
                {"request_number", result.reqNumber},
                {"status", toString(result.status)},
                {"crop_px",
                 {{"x", crop.x}, {"y", crop.y}, {"width", crop.width}, {"height", crop.height}}}};
        if (report.isRaw) {
            json["sample_bits"] = report.rawBits;
            json["capture_facts_origin"] = originName(report.calibrationState);
            json["capture_facts"] = calibrationJson(report.calibration);
        }
        if (report.hasCalibrationHeader) {
            json["output_tuning_data"] = headerJson(report.calibrationHeader);
        }
        json["metadata"] = settingsJson(result.resultMetadata);
        json["legs"] = arrayOf(report.legs, [](host::isp::IspLeg const& leg) -> Json {
            return {{"name", leg.name},
                    {"duration_ms", static_cast<double>(leg.time.count()) / 1000}};
        });
        mResults.push_back(std::move(json));
    }

    void addClientResult(ClientInfo const& info) override {
        Json json = Json::object();
        json["metadata"] = metadataJson(info.metadata);
        if (info.stored) {
            Json buffer = {{"index", info.bufferIndex},
                           {"header", headerJson(info.stored->header)}};
            if (info.stored->calibration) {
                buffer["capture_facts"] = calibrationJson(*info.stored->calibration);
            }
            json["three_a_buffer"] = std::move(buffer);
        }
        mClientResults.push_back(std::move(json));
    }

    std::string finish(FrameOutcome const& outcome, Stopwatch const& watch) override {
        Json json = outcomeJson(outcome);
        json["configurations"] = std::move(mConfigurations);
        json["requests"] = std::move(mRequests);
        json["results"] = std::move(mResults);
        json["client_results"] = std::move(mClientResults);
        json["legs"] = arrayOf(watch.legs(), [](Stopwatch::Leg const& leg) -> Json {
            return {{"name", leg.name}, {"duration_ms", leg.milliseconds}};
        });
        // The names of files may be of any bytes.
        return json.dump(-1, ' ', false, Json::error_handler_t::replace);
    }

  private:
    static Json outcomeJson(FrameOutcome const& outcome) {
        Json json = {{"input", outcome.input},
                     {"output", outcome.output},
                     {"skipped", outcome.isSkipped},
                     {"error", outcome.problem.empty() ? Json() : Json(outcome.problem)},
                     {"notes", outcome.notes},
                     {"width_px", outcome.width},
                     {"height_px", outcome.height},
                     {"output_bytes", outcome.outputBytes},
                     {"duration_s", outcome.seconds}};
        if (outcome.psnr) {
            auto const& [all, red, green, blue] = *outcome.psnr;
            json["psnr_db"] = {{"all", all}, {"red", red}, {"green", green}, {"blue", blue}};
        }
        return json;
    }

    Json mConfigurations = Json::array();
    Json mRequests = Json::array();
    Json mResults = Json::array();
    Json mClientResults = Json::array();
};

}  // namespace

std::unique_ptr<FrameInfo> makeJsonInfo() {
    return std::make_unique<JsonInfo>();
}

std::string summaryJson(RunSummary const& summary) {
    Json const json = {{"inputs", summary.inputs},      {"reprocessed", summary.reprocessed},
                       {"failed", summary.failed},      {"skipped", summary.skipped},
                       {"not_begun", summary.notBegun}, {"duration_s", summary.seconds}};
    return json.dump();
}

}  // namespace quen::reprocess
