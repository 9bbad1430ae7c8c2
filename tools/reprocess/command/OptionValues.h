#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "command/Shard.h"
#include "report/FrameInfo.h"
#include "support/Failure.h"
#include "support/Numbers.h"

namespace quen::reprocess {

/**
 * The values of options, read from their texts. They throw Failure when a text is none, which does
 * not name the option unless that is said.
 */

/** --size, WIDTHxHEIGHT: sides that the ISP takes. */
std::array<uint32_t, 2> parseSize(std::string const& text);

/** --shard, I/N. */
Shard parseShard(std::string const& text);

/** --wb: the gains of red, green and blue. */
std::array<float, 3> parseWhiteBalance(std::string const& text);

/** --black: one level for all channels, or four. */
std::array<float, 4> parseBlack(std::string const& text);

/** --matrix: nine numbers row by row. */
std::array<float, 9> parseMatrix(std::string const& text);

/** --info; an empty text when it is not given. The failure names the option. */
InfoFormat parseInfo(std::string const& text);

/** Any bit pattern of a type, decimal or hexadecimal, which CLI11 itself does not take. */
template <typename T>
T parseBits(std::string const& text) {
    auto const number = parseWholeAs<T>(text);
    if (!number) {
        throw Failure("'" + text + "' is not a whole number of " + std::to_string(8 * sizeof(T)) +
                      " bits");
    }
    return *number;
}

}  // namespace quen::reprocess
