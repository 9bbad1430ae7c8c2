// Measures RAW to JPEG as whole processes, quen-reprocess against LibRaw, and prints a table:
//   raw-to-jpeg QUEN_REPROCESS LIBRAW_DEVELOP DEMO_FRAMES FOLDER [REPETITIONS]
// FOLDER receives the frames and the pictures.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "support/Child.h"
#include "support/Table.h"

namespace quenbench {
namespace {

using Command = std::vector<std::string>;

struct Programs {
    std::string reprocess;
    std::string libraw;
    std::string frames;
    std::string folder;
};

struct Work {
    char const* name;
    char const* size;
    double pixels;
    bool headerless;
    double timesFaster;  ///< the goal against LibRaw's default

    std::string describe() const { return std::string(name) + ", " + size + ", quality 95"; }
};

constexpr Work kWorks[] = {
        {"12.dng", "4000x3000", 4000.0 * 3000, false, 8},
        {"50.dng", "8160x6120", 8160.0 * 6120, false, 10},
        {"12.raw", "4000x3000", 4000.0 * 3000, true, 8},
        {"50.raw", "8160x6120", 8160.0 * 6120, true, 10},
};

struct Peer {
    char const* name;
    char const* demosaic;  ///< LibRaw's user_qual
    double timesFaster;    ///< the goal; 0 for that of the work
};

constexpr Peer kPeers[] = {
        {"LibRaw bilinear", "0", 3},
        {"LibRaw default", "-1", 0},
};

std::string pictureOf(Programs const& programs, std::string const& who, Work const& work) {
    return programs.folder + "/" + who + "-" + work.name + ".jpg";
}

Command ourCommand(Programs const& programs, Work const& work) {
    Command command = {programs.reprocess,
                       programs.folder + "/" + work.name,
                       "-o",
                       pictureOf(programs, "ours", work),
                       "--quality",
                       "95"};
    if (work.headerless) {
        command.insert(command.end(), {"--size", work.size, "--bayer", "rggb", "--black", "64",
                                       "--wb", "1.9,1,1.6"});
    }
    return command;
}

Command peerCommand(Programs const& programs, Work const& work, Peer const& peer) {
    Command command = {programs.libraw, programs.folder + "/" + work.name,
                       pictureOf(programs, std::string("libraw") + peer.demosaic, work),
                       peer.demosaic};
    if (work.headerless) {
        command.insert(command.end(), {work.size, "64", "1023", "1.9", "1", "1.6"});
    }
    return command;
}

constexpr double kMostBytesPerPixel = 8;

Cost costOf(Command const& command) {
    Cost cost;
    if (!runChild(command, cost)) {
        std::fprintf(stderr, "raw-to-jpeg: %s failed\n", command[0].c_str());
        std::exit(1);
    }
    return cost;
}

/** Runs the commands in turn. */
std::vector<std::vector<Cost>> measure(std::vector<Command> const& commands, int repetitions) {
    std::vector<std::vector<Cost>> costs(commands.size());
    for (int round = 0; round < repetitions; ++round) {
        for (size_t i = 0; i < commands.size(); ++i) {
            costs[i].push_back(secondCost([&] { return costOf(commands[i]); }));
        }
    }
    return costs;
}

void measureWork(Programs const& programs, Work const& work, int repetitions) {
    std::vector<Command> commands = {ourCommand(programs, work)};
    for (Peer const& peer : kPeers) {
        commands.push_back(peerCommand(programs, work, peer));
    }
    auto const costs = measure(commands, repetitions);
    auto const printTime = [&](std::string const& what, size_t peer, double Cost::*figure,
                               Goal goal) {
        double const ours = median(costs[0], figure);
        double const peers = median(costs[peer + 1], figure);
        printRow(std::cout,
                 {what, work.describe(), timeText(ours),
                  std::string(kPeers[peer].name) + " " + timeText(peers), peers / ours, goal});
    };
    for (size_t i = 0; i < std::size(kPeers); ++i) {
        printTime("RAW to JPEG, times faster", i, &Cost::seconds,
                  Goal::atLeast(kPeers[i].timesFaster != 0 ? kPeers[i].timesFaster
                                                           : work.timesFaster));
    }
    for (size_t i = 0; i < std::size(kPeers); ++i) {
        printTime("RAW to JPEG, less processor time", i, &Cost::processorSeconds, Goal::none());
    }
    double const ours = median(costs[0], &Cost::peakBytes) / work.pixels;
    double const peers = median(costs[1], &Cost::peakBytes) / work.pixels;
    printRow(std::cout, {"RAW to JPEG, peak bytes a pixel", work.describe(), decimalText(ours),
                         std::string(kPeers[0].name) + " " + decimalText(peers), ours,
                         Goal::atMost(kMostBytesPerPixel)});
}

/** PSNR against the scene, of the capture with its whole calibration. */
void comparePictures(Programs const& programs, Work const& work) {
    Command command = {programs.frames, "compare", pictureOf(programs, "ours", work)};
    for (Peer const& peer : kPeers) {
        command.push_back(pictureOf(programs, std::string("libraw") + peer.demosaic, work));
    }
    std::string output;
    if (!readChild(command, output)) {
        std::fprintf(stderr, "raw-to-jpeg: the pictures cannot be compared\n");
        std::exit(1);
    }
    char* next = output.data();
    double const ours = std::strtod(next, &next);
    for (Peer const& peer : kPeers) {
        double const peers = std::strtod(next, &next);
        printRow(std::cout, {"RAW to JPEG, PSNR of the scene in dB", work.describe(),
                             decimalText(ours), std::string(peer.name) + " " + decimalText(peers),
                             ours / peers, Goal::atLeast(1)});
    }
}

int run(Programs const& programs, int repetitions) {
    std::string about;
    Cost ignored;
    if (!readChild({programs.libraw, "--about"}, about) ||
        !runChild({programs.frames, "write", programs.folder}, ignored)) {
        std::fprintf(stderr, "raw-to-jpeg: the frames cannot be made\n");
        return 1;
    }
    std::cerr << "Whole processes; medians of " << repetitions << " interleaved runs; the peer is "
              << about;
    printTableHead(std::cout);
    for (Work const& work : kWorks) {
        measureWork(programs, work, repetitions);
    }
    comparePictures(programs, kWorks[0]);
    return 0;
}

}  // namespace
}  // namespace quenbench

int main(int argc, char** argv) {
    if (argc < 5) {
        std::fprintf(stderr,
                     "usage: raw-to-jpeg QUEN_REPROCESS LIBRAW_DEVELOP DEMO_FRAMES FOLDER "
                     "[REPETITIONS]\n");
        return 2;
    }
    return quenbench::run({argv[1], argv[2], argv[3], argv[4]},
                          argc > 5 ? std::max(1, std::atoi(argv[5])) : 5);
}
