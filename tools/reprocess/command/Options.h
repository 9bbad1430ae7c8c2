#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "buffers/Product.h"
#include "client/RequestOptions.h"
#include "command/Shard.h"
#include "inputs/InputOptions.h"
#include "report/FrameInfo.h"

namespace quen::reprocess {

/** The command line. */
struct Options {
    bool demo = false;
    std::vector<std::string> inputs;
    /** Of inputs that were found in a folder: where they lie in it. */
    std::map<std::string, std::string> subfolders;
    /** Of inputs that are known not to be readable: why. A folder's name ends in '/'. */
    std::map<std::string, std::string> problems;
    std::string output;
    std::optional<OutputKind> format;
    InputOptions input;
    RequestOptions request;
    bool setsQuality = false;  ///< whether --quality was given
    std::string logLevel = "silent";
    InfoFormat info = InfoFormat::None;
    std::string trace;            ///< the file of the timeline; empty for none
    std::string record;           ///< the file of the recording; empty for none
    bool recordPictures = false;  ///< whether the recording holds the pictures
    bool skipExisting = false;    ///< leaves inputs whose output is there
    bool recursive = false;       ///< takes the pictures in folders
    int depth = 8;                ///< bits of a sample of an RGB output
    bool setsDepth = false;       ///< whether --depth was given
    size_t jobs = 0;              ///< inputs in work at a time; 0: as many as there are processors
    Shard shard;
};

constexpr char kStandardOutput[] = "-";

/** Whether standard output takes something else than the lines about the inputs. */
inline bool takesStandardOutput(Options const& options) {
    return options.output == kStandardOutput || options.info == InfoFormat::Json;
}

/**
 * Reads the command line.
 *
 * Prints help to standard output, errors to standard error.
 *
 * @param exitCode set when there are no options
 * @return the options; none when the process should end with `exitCode`
 */
std::optional<Options> parseOptions(int argc, char** argv, int& exitCode);

}  // namespace quen::reprocess
