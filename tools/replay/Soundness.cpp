#include "Soundness.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include <cutils/native_handle.h>
#include <system/camera_metadata.h>

#include "Fields.h"
#include "OpenCalls.h"
#include "host/metadata/IspMetadataReader.h"

namespace quen::replay {
namespace {

using recording::Crossing;

constexpr bool kIsHardened = QUEN_LIBRARY_IS_HARDENED != 0;
constexpr size_t kMostThreads = 1024;
constexpr uint64_t kMostBytes = uint64_t{1} << 30;   // of a buffer
constexpr uint64_t kMostPixels = uint64_t{1} << 28;  // of a picture, all layers

std::string of(uint64_t number, char const* unit) {
    return std::to_string(number) + " " + unit;
}

/** Whether recorded bytes are a camera_metadata that any reader of one can be given. */
bool isMetadata(std::string const& bytes) {
    std::vector<uint64_t> aligned(bytes.size() / sizeof(uint64_t) + 1);
    memcpy(aligned.data(), bytes.data(), bytes.size());
    size_t const size = bytes.size();
    return validate_camera_metadata_structure(
                   reinterpret_cast<camera_metadata const*>(aligned.data()), &size) == 0;
}

// What is wrong with a part of a crossing; empty when nothing is.

template <typename Message>
std::string faultOfMetadata(Message const& message) {
    return message.has_metadata() && !isMetadata(message.metadata())
                   ? "its metadata of " + of(message.metadata().size(), "bytes") +
                             " is no sound camera_metadata"
                   : "";
}

std::string faultOfContent(recording::Content const& content) {
    uint64_t const size = content.size();
    if (size > kMostBytes) {
        return of(size, "bytes of content are more than a buffer has");
    }
    if (content.head_size() > size || content.tail().size() > size - content.head_size()) {
        return of(content.head_size(), "bytes at its begin and ") +
               of(content.tail().size(), "at its end are more than its ") + of(size, "bytes");
    }
    if (content.has_head() && content.head().size() != content.head_size()) {
        return "it holds " + of(content.head().size(), "bytes of ") +
               of(content.head_size(), "bytes");
    }
    return {};
}

std::string faultOfGraphic(recording::Graphic const& graphic) {
    uint64_t pixels = 1;
    for (uint64_t const side : {graphic.width(), graphic.height(), graphic.layers()}) {
        if (side > kMostPixels || (pixels *= std::max<uint64_t>(side, 1)) > kMostPixels) {
            return of(graphic.width(), "x ") + of(graphic.height(), "pixels in ") +
                   of(graphic.layers(), "layers are more than a picture has");
        }
    }
    if (graphic.allocation_size() > kMostBytes) {
        return "its " + of(graphic.allocation_size(), "bytes are more than a buffer has");
    }
    return {};
}

std::string faultOfImage(recording::ImageBuffer const& image) {
    recording::Buffer const& buffer = image.buffer();
    if (buffer.descriptors() > NATIVE_HANDLE_MAX_FDS ||
        buffer.integers() > NATIVE_HANDLE_MAX_INTS) {
        return of(buffer.descriptors(), "descriptors and ") +
               of(buffer.integers(), "integers are more than a handle has");
    }
    uint64_t const size = static_cast<uint32_t>(std::max(image.size(), 0));
    if (buffer.content().size() > size) {
        return of(buffer.content().size(), "bytes of content are more than its ") +
               of(size, "bytes");
    }
    std::string const fault = faultOfContent(buffer.content());
    return fault.empty() ? faultOfGraphic(buffer.graphic()) : fault;
}

std::string faultOfCall(recording::ClientCall const& call) {
    if (std::string const fault = faultOfImage(call.input()); !fault.empty()) {
        return "its input: " + fault;
    }
    for (int i = 0; i < call.outputs_size(); ++i) {
        if (std::string const fault = faultOfImage(call.outputs(i)); !fault.empty()) {
            return "its output " + std::to_string(i) + ": " + fault;
        }
    }
    return faultOfMetadata(call);
}

std::string faultOfResult(recording::ResultCall const& call) {
    host::IspMetadataReader reader;
    if (!kIsHardened && !reader.parse(call.metadata().data(), call.metadata().size())) {
        return std::string("its metadata is malformed, ") + reader.error() +
               ": only the hardened build of the library can be given that";
    }
    for (int i = 0; i < call.outputs_size(); ++i) {
        for (auto const* content : {&call.outputs(i).picture(), &call.outputs(i).tuning()}) {
            if (std::string const fault = faultOfContent(*content); !fault.empty()) {
                return "its output " + std::to_string(i) + ": " + fault;
            }
        }
    }
    return {};
}

std::string faultOf(Crossing const& crossing) {
    switch (crossing.what_case()) {
        case Crossing::kClientCall:
            return faultOfCall(crossing.client_call());
        case Crossing::kClientReturn:
            return faultOfMetadata(crossing.client_return());
        case Crossing::kResultCall:
            return faultOfResult(crossing.result_call());
        default:
            return {};
    }
}

/** Of a crossing and the calls that are open before it. */
std::string faultAmong(OpenCalls& calls, Crossing const& crossing) {
    std::string fault = calls.take(crossing);
    if (!fault.empty()) {
        return fault;
    }
    return calls.threads() > kMostThreads ? "there are too many threads" : faultOf(crossing);
}

[[noreturn]] void refuse(std::string const& path, size_t index, Crossing const& crossing,
                         std::string const& fault) {
    throw Unreadable(path + ": cannot be played: no. " + std::to_string(index + 1) + ", " +
                     titleOf(crossing) + ": " + fault);
}

}  // namespace

void checkSound(std::string const& path, Recording const& recording) {
    OpenCalls calls;
    for (size_t i = 0; i < recording.crossings.size(); ++i) {
        Crossing const& crossing = recording.crossings[i];
        std::string const fault = faultAmong(calls, crossing);
        if (!fault.empty()) {
            refuse(path, i, crossing, fault);
        }
    }
}

}  // namespace quen::replay
