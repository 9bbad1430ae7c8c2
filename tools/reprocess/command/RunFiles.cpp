#include "command/RunFiles.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <map>

#include "command/OutputFile.h"
#include "inputs/StandardInput.h"
#include "support/Failure.h"
#include "support/Text.h"

namespace quen::reprocess {
namespace {

namespace fs = std::filesystem;

/** A file that an option names beside the pictures. */
struct SideFile {
    char const* option;
    std::string path;
    bool isReplaced;  // by a new file in its folder; else the file itself is written
};

std::vector<SideFile> sideFiles(Options const& options) {
    std::vector<SideFile> files = {{"--trace", options.trace, true},
                                   {"--record", options.record, false}};
    files.erase(std::remove_if(files.begin(), files.end(),
                               [](SideFile const& file) { return file.path.empty(); }),
                files.end());
    return files;
}

/** What a file is to the run. */
struct Use {
    std::string what;
    Job const* reader;  // the job that it is the input of
    Job const* writer;  // the job that it is the output of
};

/** The place of a path, without links, whether a file is there or not. */
std::string placeOf(std::string const& path) {
    std::error_code ignored;
    return fs::weakly_canonical(fs::absolute(outputTarget(path), ignored), ignored).string();
}

/** The files of a run, each with its use. */
class RunFiles {
  public:
    /** @param comparesPlaces whether files that are not there yet are told apart as well */
    explicit RunFiles(bool comparesPlaces) : mComparesPlaces(comparesPlaces) {}

    /** Adds a file, unless it is there. @return what it is already; null when it is new */
    Use const* add(std::string const& path, Use const& use) {
        std::string const identity = identityOf(path);
        if (identity.empty()) {
            return nullptr;
        }
        auto const [at, isNew] = mUses.emplace(identity, use);
        return isNew ? nullptr : &at->second;
    }

  private:
    /** Empty for what is no file: standard streams, devices and pipes serve several uses. */
    std::string identityOf(std::string const& path) {
        if (path.empty() || path == kStandardInput) {
            return {};
        }
        struct stat status;
        if (::stat(path.c_str(), &status) != 0) {
            return mComparesPlaces ? placeInFolder(path) : std::string();
        }
        return S_ISREG(status.st_mode)
                       ? format("%ju:%ju", uintmax_t{status.st_dev}, uintmax_t{status.st_ino})
                       : std::string();
    }

    /** The place of a file that is not there. Folders have many: each is looked at once. */
    std::string placeInFolder(std::string const& path) {
        fs::path const target = outputTarget(path);
        std::string const folder = target.parent_path().string();
        auto const [at, isNew] = mPlaces.try_emplace(folder);
        if (isNew) {
            at->second = placeOf(folder.empty() ? "." : folder);
        }
        return at->second + "/" + target.filename().string();
    }

    bool const mComparesPlaces;
    std::map<std::string, Use> mUses;            // by identity
    std::map<std::string, std::string> mPlaces;  // of folders
};

/** Whether paths of one file are two of its names: a file that is written takes one of them. */
bool areNames(std::string const& path, std::string const& other) {
    std::error_code ignored;
    return fs::hard_link_count(path, ignored) > 1 && placeOf(path) != placeOf(other);
}

/** Throws when a job's output is a file that another job reads or writes. */
void checkOutput(Job const& job, Use const& taken) {
    bool const isRead = taken.reader != nullptr && taken.reader->problem.empty();
    if (isRead && taken.reader->input != job.input) {
        throw Failure(taken.reader->input + ": would be overwritten by the picture of " + job.input,
                      "choose another output");
    }
    if (taken.writer != nullptr && !areNames(job.output, taken.writer->output)) {
        throw Failure(
                job.output + ": is the same file as " + taken.writer->output + ", through a link",
                "remove the link or choose another output");
    }
}

/** Throws when a file would take the place of another. */
void checkApart(std::vector<Job> const& jobs, std::vector<SideFile> const& side) {
    RunFiles files(jobs.size() > 1 || !side.empty());
    for (Job const& job : jobs) {
        files.add(job.input, {"an input", &job, nullptr});
    }
    for (Job const& job : jobs) {
        Use const* const taken = files.add(job.output, {"an output", nullptr, &job});
        if (taken != nullptr && !job.isSkipped) {
            checkOutput(job, *taken);
        }
    }
    for (SideFile const& file : side) {
        Use const use = {std::string("the file of ") + file.option, nullptr, nullptr};
        if (Use const* const taken = files.add(file.path, use)) {
            throw Failure(std::string(file.option) + ": " + file.path + " is " + taken->what,
                          "name another file");
        }
    }
}

/** Whether a path is one of the folders that will be made, or above one. */
bool willBeFolder(std::string const& path, std::set<std::string> const& folders) {
    std::string const place = placeOf(path) + "/";
    return std::any_of(folders.begin(), folders.end(), [&](std::string const& folder) {
        return (placeOf(folder) + "/").compare(0, place.size(), place) == 0;
    });
}

/** Throws when a file cannot be written where it is named. */
void checkWritable(SideFile const& file, std::set<std::string> const& folders) {
    std::string const name = std::string(file.option) + ": " + file.path;
    if (file.path == kStandardOutput) {
        throw Failure(name + " is no file", "name one");
    }
    fs::path const target = outputTarget(file.path);
    std::error_code ignored;
    fs::file_status const status = fs::status(target, ignored);
    if (fs::is_directory(status) || (!fs::exists(status) && willBeFolder(target, folders))) {
        throw Failure(name + " is a folder", "name a file in it");
    }
    bool const isWritten = fs::exists(status) && !(file.isReplaced && fs::is_regular_file(status));
    fs::path const folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
    if (!isWritten && !fs::exists(folder, ignored) && willBeFolder(folder, folders)) {
        return;
    }
    if (::access(isWritten ? target.c_str() : (folder / ".").c_str(), W_OK) != 0) {
        throw Failure(name + " cannot be written: " + std::strerror(errno),
                      "name a file in a folder that is there and can be written");
    }
}

}  // namespace

void checkRunFiles(Options const& options, Plan const& plan) {
    std::vector<SideFile> const side = sideFiles(options);
    checkApart(plan.jobs, side);
    for (SideFile const& file : side) {
        checkWritable(file, plan.folders);
    }
}

}  // namespace quen::reprocess
