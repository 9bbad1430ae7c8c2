#include "client/TagAssignment.h"

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string_view>

#include <system/camera_metadata.h>

#include "host/metadata/VendorTags.h"
#include "support/Failure.h"
#include "support/Numbers.h"

namespace quen::reprocess {
namespace {

constexpr char kAdvice[] = "--set wants TAG=VALUE, for instance fusion=1 or 0xc0030014=0x2";

/** Throws for a value that is not what the tag wants. */
[[noreturn]] void throwValue(std::string const& assignment, std::string const& value,
                             char const* wanted) {
    throw Failure("--set " + assignment + ": '" + value + "' is not " + wanted, kAdvice);
}

/** Parses a text that is a decimal number. */
std::optional<double> parseDecimal(std::string const& text) {
    char* end = nullptr;
    double const value = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0') {
        return std::nullopt;
    }
    return value;
}

/** Appends the bytes of a value. */
template <typename T>
void append(std::vector<uint8_t>& items, T value) {
    auto const* const bytes = reinterpret_cast<uint8_t const*>(&value);
    items.insert(items.end(), bytes, bytes + sizeof(value));
}

/** Parses and appends a whole number. @return false when it is not one */
template <typename T>
bool appendWhole(std::string const& text, std::vector<uint8_t>& items) {
    auto const value = parseWholeAs<T>(text);
    if (value) {
        append(items, *value);
    }
    return value.has_value();
}

/** Parses and appends a decimal. @return false when it is not one */
template <typename T>
bool appendDecimal(std::string const& text, std::vector<uint8_t>& items) {
    auto const value = parseDecimal(text);
    if (value) {
        append(items, static_cast<T>(*value));
    }
    return value.has_value();
}

/** Parses and appends a fraction N/D. @return false when it is not one */
bool appendRational(std::string const& text, std::vector<uint8_t>& items) {
    size_t const slash = text.find('/');
    std::vector<uint8_t> parts;
    bool const valid = slash != std::string::npos &&
                       appendWhole<int32_t>(text.substr(0, slash), parts) &&
                       appendWhole<int32_t>(text.substr(slash + 1), parts);
    if (valid) {
        items.insert(items.end(), parts.begin(), parts.end());
    }
    return valid;
}

struct ItemParser {
    bool (*append)(std::string const& text, std::vector<uint8_t>& items);
    char const* wanted;
};

// By camera_metadata type.
constexpr ItemParser kItemParsers[NUM_TYPES] = {
        {appendWhole<uint8_t>, "a whole number of 8 bits"},
        {appendWhole<int32_t>, "a whole number of 32 bits"},
        {appendDecimal<float>, "a number"},
        {appendWhole<int64_t>, "a whole number of 64 bits"},
        {appendDecimal<double>, "a number"},
        {appendRational, "a fraction N/D"},
};

/** Looks a tag up by name or by 0x id. @throws Failure for an unknown one */
host::TagInfo const& parseTag(std::string const& name, std::string const& assignment) {
    bool const numeric = name.rfind("0x", 0) == 0 || name.rfind("0X", 0) == 0;
    if (!numeric) {
        if (auto const* const info = host::findTag(std::string_view(name))) {
            return *info;
        }
        throw Failure("--set " + assignment + ": no tag is called '" + name + "'",
                      "give its id, as 0x...");
    }
    auto const id = parseWholeAs<uint32_t>(name);
    if (!id) {
        throwValue(assignment, name, "a tag's id of 32 bits");
    }
    if (auto const* const info = host::findTag(*id)) {
        return *info;
    }
    throw Failure("--set " + assignment + ": nothing is known of tag " + name,
                  "only tags whose type is known can be set");
}

}  // namespace

TagAssignment parseAssignment(std::string const& text) {
    size_t const equals = text.find('=');
    if (equals == std::string::npos || equals == 0 || equals + 1 == text.size()) {
        throw Failure("--set " + text + ": is no assignment", kAdvice);
    }
    host::TagInfo const& info = parseTag(text.substr(0, equals), text);
    if (get_camera_metadata_tag_type(info.tag) < 0) {
        throw Failure("--set " + text + ": a request cannot carry " + std::string(info.name),
                      "the library sets this tag for the ISP itself");
    }
    ItemParser const& parser = kItemParsers[info.type];
    TagAssignment assignment;
    assignment.tag = info.tag;
    for (size_t begin = equals + 1; begin <= text.size();) {
        size_t const end = std::min(text.find(',', begin), text.size());
        std::string const value = text.substr(begin, end - begin);
        if (!parser.append(value, assignment.items)) {
            throwValue(text, value, parser.wanted);
        }
        ++assignment.count;
        begin = end + 1;
    }
    if (info.count != 0 && assignment.count != info.count) {
        throw Failure("--set " + text + ": " + info.name + " takes " + std::to_string(info.count) +
                      " value(s), not " + std::to_string(assignment.count));
    }
    return assignment;
}

}  // namespace quen::reprocess
