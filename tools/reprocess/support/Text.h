#pragma once

#include <cstddef>
#include <string>

namespace quen::reprocess {

/** Formats as printf does. */
std::string format(char const* pattern, ...) __attribute__((format(printf, 1, 2)));

/** A number of bytes in readable form: "812 bytes", "3.4 MB". */
std::string bytesText(size_t bytes);

}  // namespace quen::reprocess
