#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace quen::reprocess {

/**
 * A share of the inputs, for one of several machines: of every `count` inputs, as listed, the
 * `number`-th. The shards 1 to `count` of one list have every input once.
 */
struct Shard {
    size_t number = 1;
    size_t count = 1;

    bool isWhole() const { return count == 1; }

    /** Keeps of a whole list what is the shard's, in its order. */
    template <typename Item>
    std::vector<Item> of(std::vector<Item> const& all) const {
        std::vector<Item> own;
        for (size_t i = number - 1; i < all.size(); i += count) {
            own.push_back(all[i]);
        }
        return own;
    }

    /** "2/8". */
    std::string text() const { return std::to_string(number) + "/" + std::to_string(count); }
};

}  // namespace quen::reprocess
