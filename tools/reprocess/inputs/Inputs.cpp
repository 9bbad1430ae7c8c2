#include "inputs/Inputs.h"

#include <filesystem>
#include <system_error>

#include "inputs/CameraRaw.h"
#include "inputs/HeaderlessBayer.h"
#include "inputs/InputKind.h"
#include "inputs/JpegFile.h"
#include "inputs/OptionUse.h"
#include "inputs/StandardInput.h"
#include "inputs/YuvFile.h"
#include "support/Failure.h"

namespace quen::reprocess {
namespace {

/** Reads a picture of a kind. */
Capture readKind(InputKind kind, std::string const& path, InputOptions const& options) {
    switch (kind) {
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

/** Throws for an empty standard input: whoever should have written to it knows why. */
void checkNotEmpty(std::string const& path) {
    std::error_code ignored;
    if (path == kStandardInput && std::filesystem::file_size(readablePath(path), ignored) == 0) {
        throw Failure("is empty", "nothing came through standard input");
    }
}

}  // namespace

Capture readCapture(std::string const& path, InputOptions const& options) {
    checkNotEmpty(path);
    InputKind const kind = inputKind(path, options);
    Capture capture = readKind(kind, readablePath(path), options);
    for (std::string const& option : unusedOptions(options, {kind})) {
        capture.notes.push_back(std::string("is ") + kindText(kind) + ", which makes no use of " +
                                option);
    }
    if (options.rotate) {
        capture.orientation = *options.rotate;
        capture.mirrored = false;
    }
    return capture;
}

}  // namespace quen::reprocess
