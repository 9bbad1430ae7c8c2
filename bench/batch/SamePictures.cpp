#include "SamePictures.h"

#include <fstream>
#include <iterator>
#include <string>

namespace quenbench {

namespace {

/** A JPEG without its head; empty when there is none. */
std::string bodyOf(std::filesystem::path const& path) {
    std::ifstream file(path, std::ios::binary);
    std::string const bytes(std::istreambuf_iterator<char>(file), {});
    size_t const tables = bytes.find("\xff\xdb");
    return tables == std::string::npos ? std::string() : bytes.substr(tables);
}

}  // namespace

int countOthers(std::filesystem::path const& folder, std::filesystem::path const& other) {
    int others = 0;
    for (auto const& entry : std::filesystem::directory_iterator(folder)) {
        std::string const body = bodyOf(entry.path());
        others += body.empty() || body != bodyOf(other / entry.path().filename()) ? 1 : 0;
    }
    return others;
}

}  // namespace quenbench
