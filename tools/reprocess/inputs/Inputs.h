#pragma once

#include <string>

#include "inputs/Capture.h"
#include "inputs/InputOptions.h"

namespace quen::reprocess {

/** The formats of input files. */
enum class InputKind { Jpeg, Yuv, HeaderlessBayer, CameraRaw };

/** The format of a file: by its extension, else by whether a Bayer order was given. */
InputKind inputKind(std::string const& path, InputOptions const& options);

/**
 * Reads one picture, whatever its format.
 *
 * @throws Failure, without the file's name
 */
Capture readCapture(std::string const& path, InputOptions const& options);

}  // namespace quen::reprocess
