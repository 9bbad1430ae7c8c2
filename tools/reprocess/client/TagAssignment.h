#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace quen::reprocess {

/** A tag and its new items, packed as the type of the tag requires. */
struct TagAssignment {
    uint32_t tag = 0;
    std::vector<uint8_t> items;
    size_t count = 0;
};

/**
 * Parses "TAG=VALUE[,VALUE...]". The tag is a name or a 0x id. Its type decides what the values
 * are: whole numbers (decimal or 0x), fractions N/D for rationals, decimals otherwise.
 *
 * @throws Failure naming the part that is wrong
 */
TagAssignment parseAssignment(std::string const& text);

}  // namespace quen::reprocess
