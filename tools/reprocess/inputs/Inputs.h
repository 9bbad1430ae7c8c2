#pragma once

#include <string>

#include "inputs/Capture.h"
#include "inputs/InputOptions.h"

namespace quen::reprocess {

/** What a file is read as. */
enum class InputKind { Jpeg, Yuv, HeaderlessBayer, CameraRaw };

/** What a file is to be read as: its name's ending decides, then whether a Bayer order was given.
 */
InputKind inputKind(std::string const& path, InputOptions const& options);

/**
 * Reads one picture.
 *
 * @throws Failure, without the file's name
 */
Capture readCapture(std::string const& path, InputOptions const& options);

}  // namespace quen::reprocess
