#pragma once

#include <string>

#include "inputs/InputOptions.h"

namespace quen::reprocess {

/** The formats of input files. */
enum class InputKind { Jpeg, Yuv, HeaderlessBayer, CameraRaw };

/**
 * The format of a file: by its extension, else by whether a Bayer order or a layout of YUV was
 * given, else by how it begins. A file that cannot be read is taken for a camera's raw file.
 */
InputKind inputKind(std::string const& path, InputOptions const& options);

/** The kind with its article, as in "is a JPEG". */
char const* kindText(InputKind kind);

}  // namespace quen::reprocess
