#pragma once

#include <cstddef>
#include <string>

namespace quen::reprocess {

/**
 * A share of the inputs, for one of several machines: of every `count` inputs, as listed, the
 * `number`-th. The shards 1 to `count` of one list have every input once.
 */
struct Shard {
    size_t number = 1;
    size_t count = 1;

    bool isWhole() const { return count == 1; }

    /** Whether the shard has the input of an index in the whole list. */
    bool has(size_t index) const { return index % count == number - 1; }

    /** "2/8". */
    std::string text() const { return std::to_string(number) + "/" + std::to_string(count); }
};

}  // namespace quen::reprocess
