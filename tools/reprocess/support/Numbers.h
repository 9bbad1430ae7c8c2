#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <type_traits>

namespace quen::reprocess {

/**
 * Parses a text that is a whole number, decimal or hexadecimal after 0x.
 *
 * @param least 0 or less
 * @return its bit pattern; none when it is not a number or out of range
 */
std::optional<uint64_t> parseWhole(std::string const& text, int64_t least, uint64_t most);

/**
 * Parses a whole number of a type. Its bit pattern may be written without a sign: the upper bound
 * is that of the unsigned type.
 */
template <typename T>
std::optional<T> parseWholeAs(std::string const& text) {
    using Unsigned = std::make_unsigned_t<T>;
    constexpr int64_t kLeast =
            std::is_signed_v<T> ? -(int64_t(Unsigned(~Unsigned{0}) >> 1)) - 1 : 0;
    auto const bits = parseWhole(text, kLeast, static_cast<Unsigned>(~Unsigned{0}));
    return bits ? std::optional<T>(static_cast<T>(*bits)) : std::nullopt;
}

}  // namespace quen::reprocess
