#include "inputs/Inputs.h"

#include "inputs/CameraRaw.h"
#include "inputs/HeaderlessBayer.h"
#include "inputs/JpegFile.h"
#include "inputs/YuvFile.h"
#include "support/FileExtension.h"

namespace quen::reprocess {

InputKind inputKind(std::string const& path, InputOptions const& options) {
    std::string const extension = lowerExtension(path);
    if (extension == ".jpg" || extension == ".jpeg") {
        return InputKind::Jpeg;
    }
    if (extension == ".nv21" || extension == ".yuv") {
        return InputKind::Yuv;
    }
    return options.bayer ? InputKind::HeaderlessBayer : InputKind::CameraRaw;
}

Capture readCapture(std::string const& path, InputOptions const& options) {
    switch (inputKind(path, options)) {
        case InputKind::Jpeg:
            return readJpeg(path);
        case InputKind::Yuv:
            return readYuv(path, options);
        case InputKind::HeaderlessBayer:
            return readHeaderlessBayer(path, options);
        case InputKind::CameraRaw:
            break;
    }
    return readCameraRaw(path, options);
}

}  // namespace quen::reprocess
