#include "command/OptionValues.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <map>
#include <string_view>
#include <system_error>
#include <vector>

#include "host/isp/buffers/IspLimits.h"
#include "support/Text.h"

namespace quen::reprocess {
namespace {

// By the value of --info; CLI11 gives "true" when it has none.
std::map<std::string, InfoFormat> const kInfoNames = {
        {"", InfoFormat::None},
        {"true", InfoFormat::Text},
        {"text", InfoFormat::Text},
        {"json", InfoFormat::Json},
};

/** Parses a text that is one number and nothing else. */
template <typename T>
bool parseNumber(std::string_view text, T& value) {
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size();
}

/** Parses numbers with a separator between them; empty when the text is anything else. */
template <typename T>
std::vector<T> parseList(std::string_view text, char separator) {
    std::vector<T> values;
    for (size_t begin = 0; begin <= text.size();) {
        size_t const end = std::min(text.find(separator, begin), text.size());
        T value;
        if (!parseNumber(text.substr(begin, end - begin), value)) {
            return {};
        }
        values.push_back(value);
        begin = end + 1;
    }
    return values;
}

}  // namespace

std::array<uint32_t, 2> parseSize(std::string const& text) {
    auto const values = parseList<uint32_t>(text, 'x');
    if (values.size() != 2) {
        throw Failure("expects WIDTHxHEIGHT in pixels, not '" + text + "'");
    }
    for (uint32_t const value : values) {
        if (value < host::isp::kSmallestInputSide || value > host::isp::kLargestSide) {
            throw Failure(format("the ISP takes sides of %d to %d", host::isp::kSmallestInputSide,
                                 host::isp::kLargestSide));
        }
    }
    return {values[0], values[1]};
}

Shard parseShard(std::string const& text) {
    auto const values = parseList<uint32_t>(text, '/');
    if (values.size() != 2) {
        throw Failure("expects I/N, for instance 2/8, not '" + text + "'");
    }
    if (values[0] < 1 || values[0] > values[1]) {
        throw Failure("shards go from 1/N to N/N; there is no '" + text + "'");
    }
    return {values[0], values[1]};
}

std::array<float, 3> parseWhiteBalance(std::string const& text) {
    auto const values = parseList<float>(text, ',');
    if (values.size() != 3) {
        throw Failure("expects three gains R,G,B, not '" + text + "'");
    }
    for (float const value : values) {
        if (!(value > 0 && value <= 64)) {
            throw Failure("gains must be above 0 and at most 64");
        }
    }
    return {values[0], values[1], values[2]};
}

std::array<float, 4> parseBlack(std::string const& text) {
    auto values = parseList<float>(text, ',');
    if (values.size() == 1) {
        values.resize(4, values[0]);
    }
    if (values.size() != 4) {
        throw Failure("expects one level or four (R,Gr,Gb,B), not '" + text + "'");
    }
    for (float const value : values) {
        if (!(value >= 0 && value <= 65535)) {
            throw Failure("levels must lie in 0 to 65535");
        }
    }
    return {values[0], values[1], values[2], values[3]};
}

std::array<float, 9> parseMatrix(std::string const& text) {
    auto const values = parseList<float>(text, ',');
    std::array<float, 9> matrix;
    bool const usable = values.size() == matrix.size() &&
                        std::all_of(values.begin(), values.end(), [](float value) {
                            return std::abs(value) <= 64;  // false for what is no number
                        });
    if (!usable) {
        throw Failure("expects nine numbers of -64 to 64, row by row, not '" + text + "'");
    }
    std::copy(values.begin(), values.end(), matrix.begin());
    return matrix;
}

InfoFormat parseInfo(std::string const& text) {
    auto const found = kInfoNames.find(text);
    if (found == kInfoNames.end()) {
        throw Failure("--info: prints text, or JSON with --info=json; '" + text + "' is neither");
    }
    return found->second;
}

}  // namespace quen::reprocess
