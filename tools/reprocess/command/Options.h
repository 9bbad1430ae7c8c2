#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "inputs/Capture.h"

namespace quen::reprocess {

/** What is made of an input. */
enum class OutputKind { Jpeg, Nv21, I420 };

/** What a headerless file holds, and corrections to what a camera's file says of itself. */
struct InputOptions {
    std::optional<std::array<uint32_t, 2>> size;  ///< width, height
    std::optional<BayerOrder> bayer;
    int bits = 10;
    std::optional<std::array<float, 3>> wb;     ///< red, green, blue
    std::optional<std::array<float, 4>> black;  ///< red, green of red rows, of blue rows, blue
};

/** What the requests carry. */
struct RequestOptions {
    bool raw16 = false;  ///< RAW16 buffers whatever the depth of the samples
    int64_t mode = 0;
    int32_t uiMode = 0;
    int32_t scene = 0;
    int quality = 95;
    int timeoutSeconds = 30;
    std::vector<std::string> assignments;  ///< TAG=VALUE
};

/** The command line. */
struct Options {
    bool demo = false;
    std::vector<std::string> inputs;
    std::string output;
    std::optional<OutputKind> format;
    InputOptions input;
    RequestOptions request;
    std::string logLevel = "silent";
    bool info = false;
};

/**
 * Reads the command line.
 *
 * Help is printed to standard output, a wrong line's error to standard error.
 *
 * @param exitCode set when nothing is left to do
 * @return the options, none when the process should end with `exitCode`
 */
std::optional<Options> parseOptions(int argc, char** argv, int& exitCode);

}  // namespace quen::reprocess
