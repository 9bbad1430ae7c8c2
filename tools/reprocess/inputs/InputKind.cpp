#include "inputs/InputKind.h"

#include <cstring>

#include "inputs/MappedFile.h"
#include "inputs/StandardInput.h"
#include "support/Failure.h"
#include "support/FileExtension.h"

namespace quen::reprocess {
namespace {

struct KindName {
    char const* extension;
    InputKind kind;
};

constexpr KindName kNames[] = {
        {".jpg", InputKind::Jpeg}, {".jpeg", InputKind::Jpeg}, {".jpe", InputKind::Jpeg},
        {".nv21", InputKind::Yuv}, {".yuv", InputKind::Yuv},
};

/** Whether a file begins as every JPEG does. */
bool beginsAsJpeg(std::string const& path) {
    constexpr uint8_t kStart[] = {0xff, 0xd8, 0xff};
    try {
        auto const file = MappedFile::open(readablePath(path));
        return file->size() >= sizeof(kStart) &&
               std::memcmp(file->data(), kStart, sizeof(kStart)) == 0;
    } catch (Failure const&) {
        return false;  // the reader tells why
    }
}

}  // namespace

InputKind inputKind(std::string const& path, InputOptions const& options) {
    std::string const extension = lowerExtension(path);
    for (KindName const& name : kNames) {
        if (extension == name.extension) {
            return name.kind;
        }
    }
    if (options.bayer) {
        return InputKind::HeaderlessBayer;
    }
    if (options.yuv) {
        return InputKind::Yuv;
    }
    return beginsAsJpeg(path) ? InputKind::Jpeg : InputKind::CameraRaw;
}

char const* kindText(InputKind kind) {
    switch (kind) {
        case InputKind::Jpeg:
            return "a JPEG";
        case InputKind::Yuv:
            return "a YUV picture";
        case InputKind::HeaderlessBayer:
            return "a headerless mosaic";
        case InputKind::CameraRaw:
            break;
    }
    return "a camera's raw file";
}

}  // namespace quen::reprocess
