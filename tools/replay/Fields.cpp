#include "Fields.h"

#include <cinttypes>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <map>

#include <xxhash.h>

#include <system/camera_metadata.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/types.h>

#include "host/metadata/IspMetadataReader.h"
#include "host/metadata/MetadataText.h"

namespace quen::replay {
namespace {

using recording::ClientCall;
using recording::Crossing;
using recording::IspCall;
using recording::NotifyCall;
using recording::ResultCall;

__attribute__((format(printf, 1, 2))) std::string format(char const* pattern, ...) {
    char text[320];
    va_list values;
    va_start(values, pattern);
    vsnprintf(text, sizeof(text), pattern, values);
    va_end(values);
    return text;
}

std::string hashText(void const* data, size_t size) {
    return format("%016" PRIx64, static_cast<uint64_t>(XXH64(data, size, 0)));
}

/** Collects fields; each function adds those of one message under the name that it is given. */
class Collector {
  public:
    explicit Collector(bool holdsPictures) : mHoldsPictures(holdsPictures) {}

    std::vector<Field> take() { return std::move(mFields); }

    void add(std::string const& name, std::string const& value) {
        mFields.push_back({name, value, false});
    }
    template <typename T>
    void number(std::string const& name, T value) {
        add(name, std::to_string(value));
    }
    void flag(std::string const& name, bool value) { add(name, value ? "yes" : "no"); }
    void hexadecimal(std::string const& name, uint64_t value) {
        add(name, format("0x%" PRIx64, value));
    }
    void status(std::string const& name, uint32_t value) {
        namespace isphal = vendor::mediatek::hardware::camera::isphal::V1_0;
        add(name, std::to_string(value) + " " + toString(static_cast<isphal::Status>(value)));
    }
    /** A text of the transport; none when all is well. */
    void transport(bool hasError, std::string const& error) {
        add("transport", hasError ? error : "fine");
    }

    void cameraMetadata(std::string const& name, bool isThere, std::string const& bytes);
    void ispMetadata(std::string const& name, std::string const& bytes);
    void stream(std::string const& name, recording::StreamConfig const& stream);
    void ispStream(std::string const& name, recording::IspStream const& stream);
    void image(std::string const& name, recording::ImageBuffer const& image);
    void buffer(std::string const& name, bool isThere, recording::Buffer const& buffer);
    void graphic(std::string const& name, recording::Graphic const& graphic);
    void content(std::string const& name, bool isThere, recording::Content const& content,
                 bool isHeld);
    void request(std::string const& name, recording::IspRequest const& request);
    void ispBuffer(std::string const& name, recording::IspBuffer const& from);

    void clientCall(ClientCall const& call);
    void clientReturn(recording::ClientReturn const& answer);
    void ispCall(IspCall const& call);
    void resultCall(ResultCall const& call);
    void notifyCall(NotifyCall const& call);

  private:
    void summary(std::string const& name, void const* data, size_t size) {
        mFields.push_back({name, hashText(data, size), true});
    }
    void tag(std::string const& name, std::string const& line, void const* data, size_t size);

    bool const mHoldsPictures;
    std::vector<Field> mFields;
    std::map<std::string, int> mTimes;  // how often a tag was there under a name
};

std::string indexed(char const* name, int index) {
    return std::string(name) + "[" + std::to_string(index) + "]";
}

/**
 * Adds a tag's field.
 *
 * @param line "0xc0030014 currentMode int64[1] 2", long lists cut
 * @param data, size the items, whole
 */
void Collector::tag(std::string const& name, std::string const& line, void const* data,
                    size_t size) {
    size_t const nameBegin = line.find(' ') + 1;
    size_t const typeBegin = line.find(' ', nameBegin) + 1;
    std::string field = name + "." + line.substr(nameBegin, typeBegin - nameBegin) + "(" +
                        line.substr(0, nameBegin - 1) + ")";
    int const times = ++mTimes[field];
    if (times > 1) {
        field += " no. " + std::to_string(times);
    }
    bool const isCutShort = line.size() > 4 && line.compare(line.size() - 4, 4, " ...") == 0;
    add(field, line.substr(typeBegin) + (isCutShort ? " hash " + hashText(data, size) : ""));
}

void Collector::cameraMetadata(std::string const& name, bool isThere, std::string const& bytes) {
    if (!isThere) {
        add(name, "null");
        return;
    }
    std::vector<uint64_t> aligned(bytes.size() / sizeof(uint64_t) + 1);
    memcpy(aligned.data(), bytes.data(), bytes.size());
    auto const* const metadata = reinterpret_cast<camera_metadata const*>(aligned.data());
    size_t const size = bytes.size();
    if (validate_camera_metadata_structure(metadata, &size) != 0) {
        add(name, format("malformed, %zu bytes, hash ", size) + hashText(bytes.data(), size));
        return;
    }
    size_t const count = get_camera_metadata_entry_count(metadata);
    number(name + ".entries", count);
    std::string all;  // what the entries say, without the gaps between them
    for (size_t i = 0; i < count; ++i) {
        camera_metadata_ro_entry_t entry = {};
        get_camera_metadata_ro_entry(metadata, i, &entry);
        std::string line;
        host::appendEntryText(line, entry);
        size_t const itemBytes = camera_metadata_type_size[entry.type];
        tag(name, line, entry.data.u8, entry.count * itemBytes);
        all += line.substr(0, line.find(' '));
        all.append(reinterpret_cast<char const*>(entry.data.u8), entry.count * itemBytes);
    }
    summary(name + " (order and bytes of the entries)", all.data(), all.size());
}

void Collector::ispMetadata(std::string const& name, std::string const& bytes) {
    number(name + ".bytes", bytes.size());
    std::string const text = host::ispMetadataText(bytes.data(), bytes.size());
    host::IspMetadataReader reader;
    if (!reader.parse(bytes.data(), bytes.size())) {
        add(name,
            text.substr(0, text.size() - 1) + ", hash " + hashText(bytes.data(), bytes.size()));
        return;
    }
    size_t begin = 0;
    for (size_t i = 0; i < reader.count(); ++i) {
        size_t const end = text.find('\n', begin);
        host::IspRecord const record = reader.at(i);
        tag(name, text.substr(begin, end - begin), record.data, record.byteSize);
        begin = end + 1;
    }
    summary(name + " (all bytes)", bytes.data(), bytes.size());
}

void Collector::stream(std::string const& name, recording::StreamConfig const& stream) {
    number(name + ".id", stream.stream_id());
    hexadecimal(name + ".format", static_cast<uint32_t>(stream.format()));
    number(name + ".width", stream.width());
    number(name + ".height", stream.height());
    flag(name + ".isOutput", stream.is_output());
}

void Collector::ispStream(std::string const& name, recording::IspStream const& stream) {
    number(name + ".id", static_cast<int64_t>(stream.id()));
    number(name + ".size", stream.size());
    for (int i = 0; i < stream.stride_size(); ++i) {
        number(name + indexed(".stride", i), stream.stride(i));
    }
    number(name + ".width", stream.width());
    number(name + ".height", stream.height());
    hexadecimal(name + ".format", static_cast<uint32_t>(stream.format()));
    hexadecimal(name + ".dataSpace", stream.data_space());
    hexadecimal(name + ".bufferLayout", stream.buffer_layout());
    hexadecimal(name + ".usage", stream.usage());
    number(name + ".tail", stream.tail());
}

void Collector::image(std::string const& name, recording::ImageBuffer const& image) {
    if (image.is_null()) {
        add(name, "null");
        return;
    }
    number(name + ".stream", image.stream_id());
    hexadecimal(name + ".format", static_cast<uint32_t>(image.format()));
    number(name + ".size", image.size());
    number(name + ".width", image.width());
    number(name + ".height", image.height());
    buffer(name + ".buffer", image.has_buffer(), image.buffer());
}

void Collector::buffer(std::string const& name, bool isThere, recording::Buffer const& buffer) {
    if (!isThere) {
        add(name, "null");
        return;
    }
    if (buffer.is_3a()) {
        add(name, "of the 3A store");
        return;
    }
    add(name, format("%u descriptors, %u integers", buffer.descriptors(), buffer.integers()));
    if (buffer.has_graphic()) {
        graphic(name, buffer.graphic());
    }
    content(name + ".content", buffer.has_content(), buffer.content(), false);
}

void Collector::graphic(std::string const& name, recording::Graphic const& graphic) {
    number(name + ".width", graphic.width());
    number(name + ".height", graphic.height());
    hexadecimal(name + ".format", static_cast<uint32_t>(graphic.format()));
    hexadecimal(name + ".usage", graphic.usage());
    number(name + ".layers", graphic.layers());
    number(name + ".allocationSize", graphic.allocation_size());
    for (int i = 0; i < graphic.planes_size(); ++i) {
        recording::Plane const& plane = graphic.planes(i);
        std::string text = format("offset %" PRId64 ", stride %" PRId64 ", %" PRId64 "x%" PRId64
                                  " samples of %" PRId64 " bits, %" PRId64 " bytes, 1/%" PRId64
                                  " by 1/%" PRId64,
                                  plane.offset(), plane.stride(), plane.width(), plane.height(),
                                  plane.sample_increment_bits(), plane.size(),
                                  plane.horizontal_subsampling(), plane.vertical_subsampling());
        for (recording::Component const& component : plane.components()) {
            text += format(", component %" PRId64 " at bit %" PRId64 " of %" PRId64,
                           component.type(), component.offset_bits(), component.size_bits());
        }
        add(name + indexed(".plane", i), text);
    }
}

/** @param isHeld whether the recording holds these bytes whatever it does with pictures */
void Collector::content(std::string const& name, bool isThere, recording::Content const& content,
                        bool isHeld) {
    if (!isThere) {
        return;
    }
    number(name + ".size", content.size());
    number(name + ".used", content.head_size());
    if (content.has_tail()) {
        std::string bytes;
        for (char const byte : content.tail()) {
            bytes += format("%02x", static_cast<uint8_t>(byte));
        }
        add(name + ".trailer", bytes);
    }
    if (isHeld || mHoldsPictures) {
        add(name + ".hash", format("%016" PRIx64, content.hash()));
    }
}

void Collector::request(std::string const& name, recording::IspRequest const& request) {
    number(name + ".number", request.number());
    for (int i = 0; i < request.inputs_size(); ++i) {
        ispBuffer(name + indexed(".input", i), request.inputs(i));
    }
    for (int i = 0; i < request.outputs_size(); ++i) {
        ispBuffer(name + indexed(".output", i), request.outputs(i));
    }
    ispMetadata(name + ".settings", request.settings());
}

void Collector::ispBuffer(std::string const& name, recording::IspBuffer const& from) {
    number(name + ".stream", static_cast<int64_t>(from.stream_id()));
    buffer(name + ".buffer", from.has_buffer(), from.buffer());
    buffer(name + ".tuningData", from.has_tuning(), from.tuning());
    number(name + ".tuningDataSize", from.tuning_size());
    buffer(name + ".reserved", from.has_reserved(), from.reserved());
    number(name + ".reservedSize", from.reserved_size());
}

void Collector::clientCall(ClientCall const& call) {
    bool const hasRecords = call.operation() == ClientCall::CREATE ||
                            call.operation() == ClientCall::CONFIG ||
                            call.operation() == ClientCall::PROCESS;
    if (call.has_has_params() && !call.has_params()) {
        add("params", "null");
    }
    for (int i = 0; i < call.input_streams_size(); ++i) {
        stream(indexed("inputStream", i), call.input_streams(i));
    }
    for (int i = 0; i < call.output_streams_size(); ++i) {
        stream(indexed("outputStream", i), call.output_streams(i));
    }
    if (call.has_frame_number()) {
        number("frameNumber", call.frame_number());
    }
    if (call.has_input()) {
        image("input", call.input());
    }
    for (int i = 0; i < call.outputs_size(); ++i) {
        image(indexed("output", i), call.outputs(i));
    }
    if (call.has_has_callback()) {
        flag("callback", call.has_callback());
    }
    if (call.has_app_name()) {
        add("appName", call.app_name());
    }
    if (call.has_jpeg_timeout_seconds()) {
        number("jpegTimeout", call.jpeg_timeout_seconds());
    }
    if (hasRecords) {
        cameraMetadata("metadata", call.has_metadata(), call.metadata());
    }
}

void Collector::clientReturn(recording::ClientReturn const& answer) {
    if (answer.has_result()) {
        number("result", answer.result());
    }
    content("jpeg", answer.has_jpeg(), answer.jpeg(), false);
    if (answer.has_metadata()) {
        cameraMetadata("changed metadata", true, answer.metadata());
    }
}

void Collector::ispCall(IspCall const& call) {
    if (call.operation() == IspCall::CONFIGURE) {
        for (int i = 0; i < call.input_streams_size(); ++i) {
            ispStream(indexed("inputStream", i), call.input_streams(i));
        }
        for (int i = 0; i < call.output_streams_size(); ++i) {
            ispStream(indexed("outputStream", i), call.output_streams(i));
        }
        flag("callback", call.has_callback());
        ispMetadata("sessionSettings", call.session_settings());
    }
    for (int i = 0; i < call.requests_size(); ++i) {
        request(indexed("request", i), call.requests(i));
    }
}

void Collector::resultCall(ResultCall const& call) {
    if (call.kind() == ResultCall::DEATH) {
        number("cookie", call.cookie());
        return;
    }
    number("number", call.number());
    status("status", call.status());
    for (int i = 0; i < call.outputs_size(); ++i) {
        recording::IspOutput const& output = call.outputs(i);
        content(indexed("output", i), output.has_picture(), output.picture(), false);
        content(indexed("output", i) + ".tuningData", output.has_tuning(), output.tuning(), true);
    }
    ispMetadata("resultMetadata", call.metadata());
}

void Collector::notifyCall(NotifyCall const& call) {
    number("ofCall", call.process_call());
    number("number", call.number());
    status("status", call.status());
    if (call.kind() == NotifyCall::METADATA) {
        cameraMetadata("metadata", true, call.metadata());
    }
}

// By the operations' numbers.
constexpr char const* kClientCalls[] = {
        "constructs",         "create",   "config", "process", "flush", "destroy",
        "setOfflineCallback", "destructs"};
constexpr char const* kIspCalls[] = {"openISPDevice", "configureISPDevice", "processISPRequest",
                                     "flush", "closeISPDevice"};
constexpr char const* kResultCalls[] = {"processResult", "processEarlyResult", "serviceDied"};
constexpr char const* kNotifyCalls[] = {"notifyResultMetadata", "notifyRequestResult"};

}  // namespace

std::vector<Field> fieldsOf(Crossing const& crossing, bool holdsPictures) {
    Collector fields(holdsPictures);
    switch (crossing.what_case()) {
        case Crossing::kClientCall:
            fields.clientCall(crossing.client_call());
            break;
        case Crossing::kClientReturn:
            fields.clientReturn(crossing.client_return());
            break;
        case Crossing::kIspCall:
            fields.ispCall(crossing.isp_call());
            break;
        case Crossing::kIspReturn:
            fields.status("status", crossing.isp_return().status());
            fields.transport(crossing.isp_return().has_transport_error(),
                             crossing.isp_return().transport_error());
            break;
        case Crossing::kResultCall:
            fields.resultCall(crossing.result_call());
            break;
        case Crossing::kResultReturn:
            fields.transport(crossing.result_return().has_transport_error(),
                             crossing.result_return().transport_error());
            break;
        case Crossing::kNotifyCall:
            fields.notifyCall(crossing.notify_call());
            break;
        case Crossing::kNotifyReturn:
            fields.transport(crossing.notify_return().has_transport_error(),
                             crossing.notify_return().transport_error());
            break;
        default:
            break;
    }
    return fields.take();
}

std::string titleOf(Crossing const& crossing) {
    switch (crossing.what_case()) {
        case Crossing::kClientCall:
            return std::string("client: ") + kClientCalls[crossing.client_call().operation()];
        case Crossing::kClientReturn:
            return "library returns to the client";
        case Crossing::kIspCall:
            return std::string("library to ISP: ") + kIspCalls[crossing.isp_call().operation()];
        case Crossing::kIspReturn:
            return "ISP returns";
        case Crossing::kResultCall:
            return std::string("ISP to library: ") + kResultCalls[crossing.result_call().kind()];
        case Crossing::kResultReturn:
            return "library returns to the ISP";
        case Crossing::kNotifyCall:
            return std::string("library to client: ") + kNotifyCalls[crossing.notify_call().kind()];
        case Crossing::kNotifyReturn:
            return "client returns";
        default:
            return "something that this program does not know";
    }
}

}  // namespace quen::replay
