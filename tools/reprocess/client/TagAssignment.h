#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace quen::reprocess {

/** A tag and the items it is to have, packed as the tag's type says. */
struct TagAssignment {
    uint32_t tag = 0;
    std::vector<uint8_t> items;
    size_t count = 0;
};

/**
 * Reads "TAG=VALUE[,VALUE...]". The tag is a name or a 0x id; its type, of the tag tables, says
 * what the values are: whole numbers (decimal or 0x), fractions as N/D for rationals, decimals
 * otherwise.
 *
 * @throws Failure naming the part that is wrong
 */
TagAssignment parseAssignment(std::string const& text);

}  // namespace quen::reprocess
