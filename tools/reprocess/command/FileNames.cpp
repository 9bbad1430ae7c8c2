#include "command/FileNames.h"

#include <filesystem>

#include "inputs/StandardInput.h"
#include "support/Failure.h"
#include "support/FileExtension.h"

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
        {".nv21", OutputKind::Nv21}, {".yuv", OutputKind::I420},  {".png", OutputKind::Png},
        {".tif", OutputKind::Tiff},  {".tiff", OutputKind::Tiff}, {".ppm", OutputKind::Ppm},
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
    if (options.output == kStandardOutput) {
        return false;
    }
    std::error_code ignored;
    return options.inputs.size() > 1 || !options.subfolders.empty() ||
           options.output.back() == '/' || fs::is_directory(options.output, ignored);
}

/** Creates a folder and its parents. @throws Failure when that fails */
void makeFolder(std::string const& path) {
    std::error_code error;
    fs::create_directories(path, error);
    std::error_code ignored;
    if (!fs::is_directory(path, ignored)) {
        throw Failure(path + ": cannot be made a folder" +
                              (error ? ": " + error.message() : std::string()),
                      "several inputs need a folder as their output");
    }
}

/** A path in a folder that no other input has taken, which it then takes. */
std::string freeName(fs::path const& folder, std::string const& stem, char const* extension,
                     std::set<std::string>& taken) {
    std::string name = (folder / (stem + extension)).string();
    for (int number = 2; !taken.insert(name).second; ++number) {
        name = (folder / (stem + "-" + std::to_string(number) + extension)).string();
    }
    return name;
}

/** The folder of an input's output, below the one that all have. */
fs::path folderOf(std::string const& input, Options const& options) {
    auto const found = options.subfolders.find(input);
    bool const isAbove = found == options.subfolders.end() || found->second == ".";
    return isAbove ? fs::path(options.output) : fs::path(options.output) / found->second;
}

std::string stemOf(std::string const& input) {
    return input == kStandardInput ? "stdin" : fs::path(input).stem().string();
}

/** Whether an output is there: it was written whole, or not at all. */
bool isThere(std::string const& output) {
    std::error_code error;
    return fs::is_regular_file(output, error) && fs::file_size(output, error) > 0 && !error;
}

/** The one job of an output that is no folder. */
Job planFile(Options const& options) {
    std::optional<OutputKind> const named = outputKindOf(options.output);
    if (!named && !options.format) {
        throw Failure(options.output + ": does not tell what to make",
                      "end it in .jpg, .nv21, .yuv, .png, .tif or .ppm, or give --format");
    }
    if (named && options.format && *named != *options.format) {
        throw Failure(options.output + ": contradicts --format",
                      "leave --format out or change the name's ending");
    }
    return {options.inputs.front(), options.output, named ? *named : *options.format, false, ""};
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

Plan planJobs(Options const& options) {
    Plan plan;
    if (!namesFolder(options)) {
        plan.jobs.push_back(planFile(options));
    } else {
        OutputKind const kind = options.format.value_or(OutputKind::Jpeg);
        std::set<std::string> taken;
        for (std::string const& input : options.inputs) {
            if (input.back() == '/') {
                plan.jobs.push_back({input, "", kind, false, ""});
                continue;
            }
            fs::path const folder = folderOf(input, options);
            plan.folders.insert(folder.string());
            plan.jobs.push_back({input, freeName(folder, stemOf(input), extensionOf(kind), taken),
                                 kind, false, ""});
        }
    }
    for (Job& job : plan.jobs) {
        job.isSkipped = options.skipExisting && isThere(job.output);
        auto const problem = options.problems.find(job.input);
        job.problem = problem == options.problems.end() ? std::string() : problem->second;
    }
    return plan;
}

void makeFolders(std::set<std::string> const& folders) {
    for (std::string const& folder : folders) {
        makeFolder(folder);
    }
}

}  // namespace quen::reprocess
