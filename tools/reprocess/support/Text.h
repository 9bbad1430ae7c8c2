#pragma once

#include <cstddef>
#include <string>

namespace quen::reprocess {

/** Text as printf makes it. */
std::string format(char const* pattern, ...) __attribute__((format(printf, 1, 2)));

/** A number of bytes for the reader: "812 bytes", "3.4 MB". */
std::string bytesText(size_t bytes);

}  // namespace quen::reprocess
