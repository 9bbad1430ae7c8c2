#pragma once

#include <algorithm>
#include <regex>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "support/Transcript.h"

namespace quentest {

using Lines = std::vector<std::string>;

/** The lines of a text, without their indentation; empty ones are left out. */
inline Lines linesOf(std::string const& text) {
    Lines lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in >> std::ws, line);) {
        lines.push_back(line);
    }
    return lines;
}

/** A line without what differs from run to run: that stands as "ADDRESS" and "FD". */
inline std::string steady(std::string const& line) {
    static std::pair<std::regex, char const*> const changing[] = {
            {std::regex("0x[0-9a-f]{6,}"), "ADDRESS"},
            {std::regex("addr\\(0x[0-9A-F]+\\)"), "addr(ADDRESS)"},
            {std::regex("(FD|Fd) [1-9][0-9]*"), "$1 FD"},
    };
    std::string result = line;
    for (auto const& [what, name] : changing) {
        result = std::regex_replace(result, what, name);
    }
    return result;
}

/** The lines that the device object and its callback wrote, not the helpers below; steady ones. */
inline Lines deviceLines(Transcript const& transcript) {
    Lines result = transcript.linesOfTag("quenOfflineDevice");
    std::transform(result.begin(), result.end(), result.begin(), steady);
    return result;
}

}  // namespace quentest
