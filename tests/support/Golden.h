#pragma once

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

// Expectations that lie in host/golden. Those that host/golden/write.py writes are computed there,
// without the platform. The others are looked through by whoever changes them: QUEN_WRITE_GOLDEN=1
// has the tests write what they found.
namespace quentest {

// The cases of a golden file.
inline nlohmann::json goldenCases(std::string const& name) {
    std::ifstream file(QUEN_GOLDEN "/" + name + ".json");
    return nlohmann::json::parse(file, nullptr, false);
}

// The lines of a golden file.
inline std::vector<std::string> goldenLines(std::string const& name) {
    std::ifstream file(QUEN_GOLDEN "/" + name + ".txt");
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        lines.push_back(line);
    }
    EXPECT_FALSE(lines.empty()) << name;
    return lines;
}

// Compares lines with those of a golden file that is looked through.
inline void expectGolden(std::string const& name, std::vector<std::string> const& lines) {
    if (getenv("QUEN_WRITE_GOLDEN") != nullptr) {
        std::ofstream file(QUEN_GOLDEN "/" + name + ".txt");
        std::copy(lines.begin(), lines.end(), std::ostream_iterator<std::string>(file, "\n"));
    }
    EXPECT_EQ(lines, goldenLines(name)) << name;
}

}  // namespace quentest
