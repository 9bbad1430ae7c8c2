#include "Recording.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

#include <google/protobuf/io/coded_stream.h>

namespace quen::replay {
namespace {

using google::protobuf::io::CodedInputStream;
using recording::Crossing;

constexpr uint32_t kVersion = 1;
constexpr size_t kLargestPrefix = 10;  // bytes of a varint

std::string readFile(std::string const& path) {
    struct Close {
        void operator()(std::FILE* file) const { static_cast<void>(std::fclose(file)); }
    };
    std::unique_ptr<std::FILE, Close> const file(std::fopen(path.c_str(), "rbe"));
    std::string bytes;
    char piece[65536];
    for (size_t read = 1; file != nullptr && read > 0;) {
        read = std::fread(piece, 1, sizeof(piece), file.get());
        bytes.append(piece, read);
    }
    if (file == nullptr || std::ferror(file.get()) != 0) {
        throw Unreadable(path + ": cannot be read: " + std::strerror(errno));
    }
    return bytes;
}

/** What stands next in a file. */
enum class Next { Crossing, Cut, Damage };

/**
 * Whether bytes can be the begin of a crossing of `size` bytes: its fields are in ascending order,
 * as recorders write them, and none goes beyond that size. A damaged length shows in this.
 */
bool canBegin(std::string_view bytes, uint32_t size) {
    CodedInputStream input(reinterpret_cast<uint8_t const*>(bytes.data()),
                           static_cast<int>(bytes.size()));
    uint32_t latest = 0;
    while (uint32_t const tag = input.ReadTag()) {
        uint64_t value = 0;
        uint32_t const field = tag >> 3;
        bool const isBytes = (tag & 7) == 2;
        if (field <= latest || (!isBytes && (tag & 7) != 0)) {
            return false;
        }
        latest = field;
        if (!input.ReadVarint64(&value)) {
            return true;
        }
        auto const begin = static_cast<uint32_t>(input.CurrentPosition());
        if (isBytes && value > size - begin) {
            return false;
        }
        if (isBytes && !input.Skip(static_cast<int>(value))) {
            return true;
        }
    }
    return true;
}

/** Takes the next crossing off the front of `bytes`. */
Next takeCrossing(std::string_view& bytes, Crossing& crossing) {
    CodedInputStream prefix(reinterpret_cast<uint8_t const*>(bytes.data()),
                            static_cast<int>(std::min(bytes.size(), kLargestPrefix)));
    uint64_t size = 0;
    if (!prefix.ReadVarint64(&size)) {
        return bytes.size() < kLargestPrefix ? Next::Cut : Next::Damage;
    }
    if (size > INT32_MAX) {
        return Next::Damage;
    }
    std::string_view body = bytes.substr(static_cast<size_t>(prefix.CurrentPosition()));
    if (body.size() < size) {
        return canBegin(body, static_cast<uint32_t>(size)) ? Next::Cut : Next::Damage;
    }
    if (!crossing.ParseFromArray(body.data(), static_cast<int>(size))) {
        return Next::Damage;
    }
    bytes = body.substr(size);
    return Next::Crossing;
}

/** Checks what comes behind the crossings: an end that fits them, and nothing after it. */
void checkEnd(std::string const& path, recording::End const& end, size_t crossings, size_t behind) {
    size_t const told = crossings + 1;  // the header counts
    if (end.has_crossings() && end.crossings() != told) {
        throw Unreadable(path + ": is damaged: its end tells of " +
                         std::to_string(end.crossings()) + " crossings, its header included, and " +
                         std::to_string(told) + " are there");
    }
    if (behind > 0) {
        throw Unreadable(path + ": is damaged: " + std::to_string(behind) +
                         " bytes follow its end");
    }
}

}  // namespace

Recording readRecording(std::string const& path) {
    std::string const file = readFile(path);
    std::string_view bytes = file;
    Crossing first;
    if (takeCrossing(bytes, first) != Next::Crossing || !first.has_header()) {
        throw Unreadable(path + ": is no recording; quen-reprocess --record makes one");
    }
    if (first.header().version() != kVersion) {
        throw Unreadable(path + ": is a recording of version " +
                         std::to_string(first.header().version()) + ", and this program reads " +
                         std::to_string(kVersion) + "; use the program that it was made with");
    }
    Recording recording;
    recording.holdsPictures = first.header().pictures() == recording::Header::WHOLE;
    recording.isCut = true;
    for (Crossing crossing; !bytes.empty(); crossing.Clear()) {
        size_t const place = file.size() - bytes.size();
        Next const next = takeCrossing(bytes, crossing);
        if (next == Next::Damage) {
            throw Unreadable(path + ": is damaged: no. " +
                             std::to_string(recording.crossings.size() + 1) + ", at byte " +
                             std::to_string(place) + ", is no crossing");
        }
        if (next == Next::Cut) {
            break;
        }
        if (crossing.has_end()) {
            recording.isCut = false;
            checkEnd(path, crossing.end(), recording.crossings.size(), bytes.size());
            break;
        }
        recording.crossings.push_back(std::move(crossing));
    }
    if (recording.crossings.empty()) {
        throw Unreadable(path + ": holds no crossing: nothing was recorded");
    }
    return recording;
}

}  // namespace quen::replay
