#include "inputs/InputSearch.h"

#include <algorithm>
#include <memory>

#include "inputs/InputKind.h"
#include "inputs/RawFile.h"
#include "support/Failure.h"
#include "support/FileExtension.h"

namespace quen::reprocess {
namespace {

constexpr char const* kBayerNames[] = {".raw",   ".raw10", ".raw12", ".raw14",
                                       ".raw16", ".bayer", ".bin"};
constexpr char const* kYuvNames[] = {".nv21", ".yuv", ".nv12", ".i420", ".yv12", ".bin"};

template <typename Names>
bool isNamedOneOf(Names const& names, std::string const& path) {
    return std::find(std::begin(names), std::end(names), lowerExtension(path)) != std::end(names);
}

bool isCameraRaw(std::string const& path) {
    try {
        std::make_unique<RawFile>(path);
        return true;
    } catch (Failure const&) {
        return false;
    }
}

}  // namespace

bool isPictureToTake(std::string const& path, InputOptions const& options, bool mosaicsOnly) {
    switch (inputKind(path, options)) {
        case InputKind::Jpeg:
            return !mosaicsOnly;
        case InputKind::Yuv:
            return !mosaicsOnly && options.size.has_value() && isNamedOneOf(kYuvNames, path);
        case InputKind::HeaderlessBayer:
            return isNamedOneOf(kBayerNames, path);
        case InputKind::CameraRaw:
            break;
    }
    return isCameraRaw(path);
}

}  // namespace quen::reprocess
