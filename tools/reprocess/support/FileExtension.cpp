#include "support/FileExtension.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

namespace quen::reprocess {

std::string lowerExtension(std::string const& path) {
    std::string extension = std::filesystem::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return extension;
}

}  // namespace quen::reprocess
