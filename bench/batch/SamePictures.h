#pragma once

#include <filesystem>

namespace quenbench {

/**
 * Counts the JPEGs of one folder that are not in the other, byte for byte from their quantisation
 * tables on: what stands before them tells the time.
 */
int countOthers(std::filesystem::path const& folder, std::filesystem::path const& other);

}  // namespace quenbench
