#pragma once

#include <string>

namespace quen {

/**
 * A text for one line of a terminal: control characters, ends of lines included, are written as
 * \xNN, as is what is no UTF-8. Names of files may hold any.
 */
std::string printable(std::string const& text);

/** The same for a text of several lines, whose ends stay. */
std::string printableLines(std::string const& text);

}  // namespace quen
