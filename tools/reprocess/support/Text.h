#pragma once

#include <cstddef>
#include <string>

namespace quen::reprocess {

/** Formats as printf does. */
std::string format(char const* pattern, ...) __attribute__((format(printf, 1, 2)));

/** A number of bytes in readable form: "812 bytes", "3.4 MB". */
std::string bytesText(size_t bytes);

/**
 * A text that a terminal can be shown: control characters are written as \xNN, ends of lines stay.
 * File names may hold any.
 */
std::string printable(std::string const& text);

}  // namespace quen::reprocess
