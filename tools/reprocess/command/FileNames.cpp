#include "command/FileNames.h"

#include <filesystem>
#include <set>

#include "support/Failure.h"
#include "support/FileExtension.h"
#include "support/Text.h"

namespace quen::reprocess {
namespace {

namespace fs = std::filesystem;

struct OutputName {
    char const* extension;
    OutputKind kind;
};

// Files in a folder get the first extension of their kind.
constexpr OutputName kOutputNames[] = {
        {".jpg", OutputKind::Jpeg},  {".jpeg", OutputKind::Jpeg}, {".jpe", OutputKind::Jpeg},
        {".nv21", OutputKind::Nv21}, {".yuv", OutputKind::I420},
};

/** The extension of files of a kind in a folder. */
char const* extensionOf(OutputKind kind) {
    for (OutputName const& name : kOutputNames) {
        if (name.kind == kind) {
            return name.extension;
        }
    }
    return "";
}

/** Whether the output is a folder. */
bool namesFolder(Options const& options) {
    std::error_code ignored;
    return options.inputs.size() > 1 || options.output.back() == '/' ||
           fs::is_directory(options.output, ignored);
}

/** Creates a folder and its parents. @throws Failure when that fails */
void makeFolder(std::string const& path) {
    std::error_code error;
    fs::create_directories(path, error);
    std::error_code ignored;
    if (!fs::is_directory(path, ignored)) {
        throw Failure(printable(path) + ": cannot be made a folder" +
                              (error ? ": " + error.message() : std::string()),
                      "several inputs need a folder as their output");
    }
}

/** A path in a folder that no other input has taken, which it then takes. */
std::string freeName(fs::path const& folder, std::string const& stem, char const* extension,
                     std::set<std::string>& taken) {
    std::string name = stem + extension;
    for (int number = 2; !taken.insert(name).second; ++number) {
        name = stem + "-" + std::to_string(number) + extension;
    }
    return (folder / name).string();
}

}  // namespace

std::optional<OutputKind> outputKindOf(std::string const& path) {
    std::string const extension = lowerExtension(path);
    for (OutputName const& name : kOutputNames) {
        if (extension == name.extension) {
            return name.kind;
        }
    }
    return std::nullopt;
}

std::vector<Job> planJobs(Options const& options) {
    std::vector<Job> jobs;
    if (!namesFolder(options)) {
        std::optional<OutputKind> const named = outputKindOf(options.output);
        if (!named && !options.format) {
            throw Failure(printable(options.output) + ": does not tell what to make",
                          "end it in .jpg, .nv21 or .yuv, or give --format");
        }
        if (named && options.format && *named != *options.format) {
            throw Failure(printable(options.output) + ": contradicts --format",
                          "leave --format out or change the name's ending");
        }
        jobs.push_back({options.inputs.front(), options.output, named.value_or(*options.format)});
        return jobs;
    }

    makeFolder(options.output);
    OutputKind const kind = options.format.value_or(OutputKind::Jpeg);
    std::set<std::string> taken;
    for (std::string const& input : options.inputs) {
        jobs.push_back({input,
                        freeName(options.output, fs::path(input).stem().string(), extensionOf(kind),
                                 taken),
                        kind});
    }
    return jobs;
}

}  // namespace quen::reprocess
