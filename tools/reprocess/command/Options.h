#pragma once

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
    size_t jobs = 0;              ///< inputs in work at a time; 0: as many as there are processors
    Shard shard;
};

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
