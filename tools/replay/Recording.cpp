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

/** Takes the next crossing off the front of `bytes`. @return false when it is not there whole */
bool takeCrossing(std::string_view& bytes, Crossing& crossing) {
    CodedInputStream prefix(reinterpret_cast<uint8_t const*>(bytes.data()),
                            static_cast<int>(std::min<size_t>(bytes.size(), 10)));
    uint32_t size = 0;
    if (!prefix.ReadVarint32(&size)) {
        return false;
    }
    auto const begin = static_cast<size_t>(prefix.CurrentPosition());
    if (size > INT32_MAX || bytes.size() - begin < size ||
        !crossing.ParseFromArray(bytes.data() + begin, static_cast<int>(size))) {
        return false;
    }
    bytes.remove_prefix(begin + size);
    return true;
}

}  // namespace

Recording readRecording(std::string const& path) {
    std::string const file = readFile(path);
    std::string_view bytes = file;
    Crossing first;
    if (!takeCrossing(bytes, first) || !first.has_header()) {
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
    for (Crossing crossing; takeCrossing(bytes, crossing); crossing.Clear()) {
        if (crossing.has_end()) {
            recording.isCut = false;
            break;
        }
        recording.crossings.push_back(std::move(crossing));
    }
    return recording;
}

}  // namespace quen::replay
