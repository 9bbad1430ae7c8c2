#include "command/InputFiles.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <map>
#include <string>
#include <system_error>
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

/** What was found in a folder: regular files, and the folders that cannot be searched. */
struct Findings {
    std::vector<fs::path> paths;
    std::map<std::string, std::string> problems;  // of folders, whose names end in '/'
};

void searchFolder(fs::path const& folder, fs::path const& leftOut, Findings& findings) {
    std::error_code error;
    auto at = fs::directory_iterator(folder, error);
    // Without the right to enter it, a folder's files can be listed but not read.
    if (!error && ::access(folder.c_str(), X_OK) != 0) {
        error.assign(errno, std::generic_category());
    }
    for (; !error && at != fs::end(at); at.increment(error)) {
        std::error_code ignored;
        if (isHidden(at->path())) {
            continue;
        }
        if (at->is_directory(ignored) && !at->is_symlink(ignored)) {
            if (!isSame(at->path(), leftOut)) {
                searchFolder(at->path(), leftOut, findings);
            }
        } else if (at->is_regular_file(ignored)) {
            findings.paths.push_back(at->path());
        }
    }
    if (error) {
        fs::path const name = folder / "";
        findings.paths.push_back(name);
        findings.problems[name.string()] = "cannot be searched: " + error.message();
    }
}

/** Adds the pictures in a folder to the inputs. */
void addPictures(std::string const& folder, Options& options) {
    OutputKind const kind = options.format.value_or(OutputKind::Jpeg);
    size_t const before = options.inputs.size();
    if (isSame(folder, options.output)) {
        throw Failure(folder + ": is searched for inputs, and takes the outputs",
                      "name another folder with -o");
    }
    Findings findings;
    searchFolder(folder, options.output, findings);
    std::sort(findings.paths.begin(), findings.paths.end());
    for (fs::path const& path : findings.paths) {
        bool const isFolder = findings.problems.count(path.string()) != 0;
        if (isFolder || isPictureToTake(path.string(), options.input, kind != OutputKind::Jpeg)) {
            options.inputs.push_back(path.string());
            options.subfolders[path.string()] =
                    path.parent_path().lexically_relative(folder).string();
        }
    }
    options.problems.merge(findings.problems);
    if (options.inputs.size() == before) {
        throw Failure(folder + ": has no picture that can be taken",
                      "headerless ones need --size, and --bayer or --yuv");
    }
}

/** Notes the problem of an input that is not there. */
void noteMissing(std::string const& input, Options& options) {
    struct stat status;
    if (input != kStandardInput && ::stat(input.c_str(), &status) != 0) {
        options.problems[input] = std::string("cannot be opened: ") + std::strerror(errno);
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
    if (std::count(options.inputs.begin(), options.inputs.end(), std::string()) != 0) {
        throw Failure("an input's name is empty", "name a file");
    }
    std::vector<std::string> const named = std::exchange(options.inputs, {});
    for (std::string const& input : named) {
        std::error_code ignored;
        if (!fs::is_directory(input, ignored)) {
            options.inputs.push_back(input);
            noteMissing(input, options);
        } else if (options.recursive) {
            addPictures(input, options);
        } else {
            throw Failure(input + ": is a folder", "give -r to take the pictures in it");
        }
    }
}

}  // namespace quen::reprocess
