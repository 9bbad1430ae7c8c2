#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iostream>
#include <string>

#include <CLI/CLI.hpp>

#include "CrashReport.h"
#include "Fields.h"
#include "Recording.h"
#include "Replay.h"
#include "Soundness.h"
#include "host/log/LogControl.h"
#include "terminal/Printable.h"

namespace quen::replay {
namespace {

// Exit codes, also told in the help.
constexpr int kEqual = 0;
constexpr int kDifferent = 1;
constexpr int kUsage = 2;

constexpr char kDescription[] =
        "Plays a recorded session against the library of this build: its client and its ISP come\n"
        "from the recording. Everything that the library says to either is compared with what it\n"
        "said when it was recorded.";

constexpr char kFooter[] =
        R"(A recording is made with quen-reprocess --record, or by any client that links the
recorder. One without whole pictures is played with made-up ones: pictures are then
not compared, everything else is. A recording that is cut off is played up to its last
whole crossing.

Exit codes:
  0  the library said what it said in the recording
  1  it said something else; the differences are printed, the first one first. Or it
     crashed, or standard output cannot be written
  2  the command line is wrong, or the file is no recording or a damaged one

Examples:
  quen-reprocess shot.dng -o shot.jpg --record shot.rec --record-pictures
  quen-replay shot.rec
  quen-replay --show shot.rec)";

struct Options {
    std::string file;
    bool shows = false;
    std::string logLevel = "silent";
    int patience = 10;
    size_t most = 50;
};

/**
 * Opens /dev/null for standard streams that are closed: a buffer of the replay would take their
 * place, and what is printed end up in it. For reading, so that what is printed is known to be
 * lost.
 */
void occupyStandardStreams() {
    int fd = 0;
    do {
        fd = ::open("/dev/null", O_RDONLY);
    } while (fd >= 0 && fd <= STDERR_FILENO);
    if (fd > STDERR_FILENO) {
        ::close(fd);
    }
}

/** @return -1 for options that can be used; else the exit code */
int parse(int argc, char** argv, Options& options) {
    CLI::App app(kDescription, "quen-replay");
    app.footer(kFooter);
    app.set_version_flag("--version", "quen-replay " QUEN_VERSION, "Print the version and exit");
    app.get_formatter()->column_width(30);
    app.failure_message([](CLI::App const*, CLI::Error const& error) {
        return "quen-replay: " + printable(error.what()) + "; --help tells what there is\n";
    });
    app.add_option("FILE", options.file, "The recording")->required()->type_name("");
    app.add_flag("--show", options.shows,
                 "Print the recording, a line for each crossing, and play\nnothing");
    app.add_option("--patience", options.patience,
                   "How long to wait for a call that the library does not\nmake")
            ->check(CLI::Range(1, 3600).description(""))
            ->type_name("SECONDS")
            ->capture_default_str();
    app.add_option("--differences", options.most, "Print as many differences at most")
            ->check(CLI::Range(1, 1000000).description(""))
            ->type_name("N")
            ->capture_default_str();
    app.add_option("--log", options.logLevel, "Show the library's messages down to a level")
            ->check(CLI::IsMember(
                            std::vector<std::string>{"silent", "error", "warning", "info", "debug"})
                            .description(""))
            ->type_name("silent|error|warning|info|debug")
            ->capture_default_str();
    try {
        app.parse(argc, argv);
    } catch (CLI::ParseError const& error) {
        return app.exit(error) == 0 ? kEqual : kUsage;
    }
    return -1;
}

void show(Recording const& recording) {
    size_t number = 0;
    for (recording::Crossing const& crossing : recording.crossings) {
        std::string line = titleOf(crossing);
        char const* separator = ": ";
        for (Field const& field : fieldsOf(crossing, true)) {
            if (!field.isSummary) {
                line += separator + field.name + " = " + field.value;
                separator = "; ";
            }
        }
        std::printf("%zu  %.6f s  thread %u  session %u  call %llu  %s\n", ++number,
                    static_cast<double>(crossing.time_ns()) / 1e9, crossing.thread(),
                    crossing.session(), static_cast<unsigned long long>(crossing.call()),
                    printable(line).c_str());
    }
}

/** Says what a reader of the result has to know of the recording. */
void describe(Recording const& recording) {
    if (recording.isCut) {
        std::printf("The recording is cut off: it has no end after its %zu whole crossings.\n",
                    recording.crossings.size());
    }
    if (!recording.holdsPictures) {
        std::printf("The recording has no pictures: made-up ones are used and not compared.\n");
    }
}

/** Tells when what was printed could not be written. @return the exit code, which tells that too */
int checkPrinted(int exitCode) {
    errno = 0;
    std::cout.flush();
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0 && std::cout) {
        return exitCode;
    }
    std::fprintf(stderr, "quen-replay: standard output cannot be written%s%s\n",
                 errno != 0 ? ": " : "", errno != 0 ? std::strerror(errno) : "");
    return exitCode == kEqual ? kDifferent : exitCode;
}

/** Plays a recording and prints what differs. Does not return when threads are left blocked. */
int play(Recording const& recording, Options const& options) {
    std::fflush(stdout);  // what is told in a crash comes after it
    reportCrashes(kDifferent, options.most);
    Outcome const outcome = replay(recording, std::chrono::seconds(options.patience));
    size_t const count = outcome.differences.size();
    for (size_t i = 0; i < count && i < options.most; ++i) {
        std::printf("%s\n", printable(outcome.differences[i]).c_str());
    }
    if (count > options.most) {
        std::printf("and %zu more\n", count - options.most);
    }
    if (outcome.endsProcess) {
        std::printf("The library ends the process here, as it did when it was recorded.\n");
    }
    std::printf("%zu crossings, %zu differences\n", recording.crossings.size(), count);
    int const exitCode = count == 0 ? kEqual : kDifferent;
    if (outcome.isBlocked) {
        std::_Exit(checkPrinted(exitCode));
    }
    return exitCode;
}

/** Runs the tool; whatever is thrown ends in words and an exit code. */
int run(int argc, char** argv) {
    try {
        Options options;
        int const exitCode = parse(argc, argv, options);
        if (exitCode >= 0) {
            return exitCode;
        }
        Recording const recording = readRecording(options.file);
        host::setLogLevel(options.logLevel);
        if (!options.shows) {
            checkSound(options.file, recording);
        }
        describe(recording);
        if (options.shows) {
            show(recording);
            return kEqual;
        }
        return play(recording, options);
    } catch (Unreadable const& error) {
        std::fprintf(stderr, "quen-replay: %s\n", printable(error.what()).c_str());
        return kUsage;
    } catch (std::exception const& error) {
        std::fprintf(stderr, "quen-replay: cannot go on: %s\n", printable(error.what()).c_str());
        return kDifferent;
    }
}

}  // namespace
}  // namespace quen::replay

int main(int argc, char** argv) {
    quen::replay::occupyStandardStreams();
    return quen::replay::checkPrinted(quen::replay::run(argc, argv));
}
