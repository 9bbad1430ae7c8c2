#pragma once

#include <string>

namespace quen::reprocess {

/** A file name's extension in lower case, with its dot; empty when there is none. */
std::string lowerExtension(std::string const& path);

}  // namespace quen::reprocess
