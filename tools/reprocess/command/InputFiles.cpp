#include "command/InputFiles.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "command/FileNames.h"
#include "inputs/InputSearch.h"
#include "inputs/StandardInput.h"
#include "support/Failure.h"

namespace quen::reprocess {
namespace {

namespace fs = std::filesystem;

bool isHidden(fs::path const& path) {
    return path.filename().string().front() == '.';
}

bool isSame(fs::path const& a, fs::path const& b) {
    std::error_code ignored;
    return fs::equivalent(a, b, ignored);
}

/** The regular files below a folder, sorted. @throws fs::filesystem_error */
std::vector<fs::path> filesBelow(fs::path const& folder, fs::path const& leftOut) {
    std::vector<fs::path> files;
    for (auto at = fs::recursive_directory_iterator(folder); at != fs::end(at); ++at) {
        bool const isFolder = at->is_directory() && !at->is_symlink();
        if (isHidden(at->path()) || (isFolder && isSame(at->path(), leftOut))) {
            at.disable_recursion_pending();
        } else if (at->is_regular_file()) {
            files.push_back(at->path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

/** Adds the pictures in a folder to the inputs. */
void addPictures(std::string const& folder, Options& options) {
    OutputKind const kind = options.format.value_or(OutputKind::Jpeg);
    size_t const before = options.inputs.size();
    if (isSame(folder, options.output)) {
        throw Failure(folder + ": is searched for inputs, and takes the outputs",
                      "name another folder with -o");
    }
    try {
        for (fs::path const& file : filesBelow(folder, options.output)) {
            if (isPictureToTake(file.string(), options.input, kind != OutputKind::Jpeg)) {
                options.inputs.push_back(file.string());
                options.subfolders[file.string()] =
                        file.parent_path().lexically_relative(folder).string();
            }
        }
    } catch (fs::filesystem_error const& error) {
        throw Failure(folder + ": cannot be searched: " + error.code().message());
    }
    if (options.inputs.size() == before) {
        throw Failure(folder + ": has no picture that can be taken",
                      "headerless ones need --size and --bayer");
    }
}

}  // namespace

void findInputFiles(Options& options) {
    auto const isStandard = [](std::string const& input) { return input == kStandardInput; };
    auto const timesStandard =
            std::count_if(options.inputs.begin(), options.inputs.end(), isStandard);
    if (timesStandard > 1) {
        throw Failure("-: standard input can be read once only");
    }
    if (timesStandard == 1) {
        readablePath(kStandardInput);
    }
    std::vector<std::string> const named = std::exchange(options.inputs, {});
    for (std::string const& input : named) {
        std::error_code ignored;
        if (!fs::is_directory(input, ignored)) {
            options.inputs.push_back(input);
        } else if (options.recursive) {
            addPictures(input, options);
        } else {
            throw Failure(input + ": is a folder", "give -r to take the pictures in it");
        }
    }
}

}  // namespace quen::reprocess
