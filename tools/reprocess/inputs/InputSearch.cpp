#include "inputs/InputSearch.h"

#include <algorithm>
#include <memory>

#include "inputs/InputKind.h"
#include "inputs/RawFile.h"
#include "support/Failure.h"
#include "support/FileExtension.h"

namespace quen::reprocess {
namespace {

constexpr char const* kHeaderlessNames[] = {".raw",   ".raw10", ".raw12", ".raw14",
                                            ".raw16", ".bayer", ".bin"};

bool isNamedHeaderless(std::string const& path) {
    std::string const extension = lowerExtension(path);
    return std::find(std::begin(kHeaderlessNames), std::end(kHeaderlessNames), extension) !=
           std::end(kHeaderlessNames);
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
            return !mosaicsOnly && options.size.has_value();
        case InputKind::HeaderlessBayer:
            return isNamedHeaderless(path);
        case InputKind::CameraRaw:
            break;
    }
    return isCameraRaw(path);
}

}  // namespace quen::reprocess
