// Measures batches as whole processes and prints a table:
//   batch-costs QUEN_REPROCESS DEMO_FRAMES FOLDER [REPETITIONS [OLDER_QUEN_REPROCESS]]
// FOLDER receives the frames and the pictures; OLDER is another build to compare with.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "SamePictures.h"
#include "support/Child.h"
#include "support/Table.h"

namespace quenbench {
namespace {

namespace fs = std::filesystem;
using Command = std::vector<std::string>;

constexpr int kLargeFrames = 40;
constexpr int kSmallFrames = 1000;
constexpr int kStarts = 200;
constexpr double kMostStartSeconds = 4e-3;

/** Frames of one kind, and what the command line says of them. */
struct Frames {
    std::string work;  ///< as the table says it
    Command inputs;
    Command options;
};

Command reprocess(std::string const& program, Frames const& frames, size_t first, size_t last,
                  fs::path const& output, Command const& options = {}) {
    Command command = {program};
    command.insert(command.end(), frames.inputs.begin() + static_cast<std::ptrdiff_t>(first),
                   frames.inputs.begin() + static_cast<std::ptrdiff_t>(last));
    command.insert(command.end(), {"-o", output.string() + "/"});
    command.insert(command.end(), frames.options.begin(), frames.options.end());
    command.insert(command.end(), options.begin(), options.end());
    return command;
}

Command reprocessAll(std::string const& program, Frames const& frames, fs::path const& output,
                     Command const& options = {}) {
    return reprocess(program, frames, 0, frames.inputs.size(), output, options);
}

Cost costOf(Command const& command) {
    Cost cost;
    if (!runChild(command, cost)) {
        std::fprintf(stderr, "batch-costs: %s failed\n", command[0].c_str());
        std::exit(1);
    }
    return cost;
}

/** A folder without what an earlier run left: replacing files takes the system longer. */
fs::path fresh(fs::path const& folder) {
    fs::remove_all(folder);
    return folder;
}

/** A process for all frames. */
Cost batchCost(std::string const& program, Frames const& frames, fs::path const& output,
               Command const& options = {}) {
    return secondCost(
            [&] { return costOf(reprocessAll(program, frames, fresh(output), options)); });
}

/** Wall time of a piece of work, in `seconds`. */
template <typename Work>
Cost timed(Work const& work) {
    auto const begin = std::chrono::steady_clock::now();
    work();
    Cost cost;
    cost.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    return cost;
}

/** A process a frame. */
Cost oneByOne(std::string const& program, Frames const& frames, fs::path const& output) {
    return timed([&] {
        for (size_t i = 0; i < frames.inputs.size(); ++i) {
            costOf(reprocess(program, frames, i, i + 1, output));
        }
    });
}

/** Two processes at a time, half of the frames each. */
Cost inHalves(std::string const& program, Frames const& frames, fs::path const& output,
              Command const& options) {
    size_t const half = frames.inputs.size() / 2;
    return timed([&] {
        std::thread other(
                [&] { costOf(reprocess(program, frames, 0, half, output / "first", options)); });
        costOf(reprocess(program, frames, half, frames.inputs.size(), output / "second", options));
        other.join();
    });
}

/** Copies of a file, so that each frame is read from memory of its own. */
Frames framesOf(fs::path const& file, int count, std::string const& work, Command options) {
    Frames frames{work, {}, std::move(options)};
    fs::path const folder = file.parent_path() / ("copies" + file.extension().string());
    fs::create_directories(folder);
    for (int i = 0; i < count; ++i) {
        fs::path const copy = folder / (std::to_string(i) + file.extension().string());
        fs::copy_file(file, copy, fs::copy_options::overwrite_existing);
        frames.inputs.push_back(copy.string());
    }
    return frames;
}

void printTimes(std::string const& what, Frames const& frames, std::vector<Cost> const& ours,
                std::string const& peer, std::vector<Cost> const& peers, Goal goal) {
    double const seconds = median(ours, &Cost::seconds);
    double const others = median(peers, &Cost::seconds);
    printRow(std::cout, {what, frames.work, timeText(seconds), peer + " " + timeText(others),
                         others / seconds, goal});
}

void printProcessors(Frames const& frames, std::vector<Cost> const& costs, Goal goal) {
    double const used = median(costs, &Cost::processorSeconds) / median(costs, &Cost::seconds);
    printRow(std::cout,
             {"batch, processors in use", frames.work, decimalText(used),
              std::to_string(std::thread::hardware_concurrency()) + " there are", used, goal});
}

void measureLarge(std::string const& program, Frames const& frames, fs::path const& folder,
                  int repetitions) {
    std::vector<Cost> batch, single, alone, halves, plainHalves;
    Command const oneAtATime = {"--jobs", "1"};
    for (int round = 0; round < repetitions; ++round) {
        batch.push_back(batchCost(program, frames, folder / "batch"));
        single.push_back(
                secondCost([&] { return oneByOne(program, frames, fresh(folder / "single")); }));
        halves.push_back(secondCost(
                [&] { return inHalves(program, frames, fresh(folder / "halves"), {}); }));
        plainHalves.push_back(secondCost(
                [&] { return inHalves(program, frames, fresh(folder / "halves"), oneAtATime); }));
        alone.push_back(batchCost(program, frames, folder / "alone", oneAtATime));
    }
    printTimes("batch, times faster", frames, batch, "one by one", single, Goal::atLeast(1.45));
    printTimes("batch, times faster", frames, batch, "--jobs 1", alone, Goal::none());
    printTimes("batch, times faster", frames, batch, "two halves", halves, Goal::atLeast(1));
    printTimes("batch, times faster", frames, batch, "two halves, --jobs 1", plainHalves,
               Goal::atLeast(1));
    printProcessors(frames, batch, Goal::atLeast(1.85));
    double const peak = median(batch, &Cost::peakBytes);
    double const least = median(alone, &Cost::peakBytes);
    printRow(std::cout, {"batch, peak memory in MB", frames.work, decimalText(peak / 1e6),
                         "--jobs 1 " + decimalText(least / 1e6), peak / least, Goal::atMost(3)});
    int const others = countOthers(folder / "batch", folder / "single");
    printRow(std::cout, {"batch, pictures that differ", frames.work, std::to_string(others),
                         "one by one", static_cast<double>(others), Goal::atMost(0)});
}

void measureSmall(std::string const& program, std::string const& older, Frames const& frames,
                  fs::path const& folder, int repetitions) {
    std::vector<Cost> batch, alone, before;
    for (int round = 0; round < repetitions; ++round) {
        batch.push_back(batchCost(program, frames, folder / "batch"));
        alone.push_back(batchCost(program, frames, folder / "alone", {"--jobs", "1"}));
        if (!older.empty()) {
            before.push_back(batchCost(older, frames, folder / "older"));
        }
    }
    printTimes("batch, times faster", frames, batch, "--jobs 1", alone, Goal::none());
    if (!older.empty()) {
        printTimes("batch, times faster", frames, batch, "another build", before, Goal::atLeast(3));
    }
    printProcessors(frames, batch, Goal::none());
}

void measureStart(std::string const& program) {
    std::vector<Cost> starts;
    for (int i = 0; i < kStarts; ++i) {
        starts.push_back(costOf({program, "--help"}));
    }
    double const seconds = median(starts, &Cost::seconds);
    printRow(std::cout, {"start and end of quen-reprocess", "--help", timeText(seconds),
                         "limit " + timeText(kMostStartSeconds), seconds / kMostStartSeconds,
                         Goal::atMost(1)});
}

int run(std::string const& program, std::string const& makeFrames, fs::path const& folder,
        int repetitions, std::string const& older) {
    costOf({makeFrames, "write", folder.string()});
    Frames const large = framesOf(folder / "12.dng", kLargeFrames, "40 DNGs of 4000x3000", {});
    Frames const small = framesOf(
            folder / "04.raw", kSmallFrames, "1000 frames of 736x552",
            {"--size", "736x552", "--bayer", "rggb", "--black", "64", "--wb", "1.9,1,1.6"});
    std::cerr << "Whole processes; medians of " << repetitions << " interleaved runs\n";
    printTableHead(std::cout);
    measureStart(program);
    measureLarge(program, large, folder / "large", repetitions);
    measureSmall(program, older, small, folder / "small", repetitions);
    return 0;
}

}  // namespace
}  // namespace quenbench

int main(int argc, char** argv) {
    if (argc < 4) {
        std::fprintf(stderr,
                     "usage: batch-costs QUEN_REPROCESS DEMO_FRAMES FOLDER "
                     "[REPETITIONS [OLDER_QUEN_REPROCESS]]\n");
        return 2;
    }
    return quenbench::run(argv[1], argv[2], argv[3], argc > 4 ? std::max(1, std::atoi(argv[4])) : 3,
                          argc > 5 ? argv[5] : "");
}
