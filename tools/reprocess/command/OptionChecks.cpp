#include "command/OptionChecks.h"

#include <unistd.h>

#include <algorithm>

#include "command/FileNames.h"
#include "inputs/InputKind.h"
#include "inputs/OptionUse.h"
#include "support/Failure.h"
#include "support/FileExtension.h"

namespace quen::reprocess {
namespace {

/** Whether a kind is developed from a mosaic. */
bool isMosaic(InputKind kind) {
    return kind == InputKind::HeaderlessBayer || kind == InputKind::CameraRaw;
}

/** Throws for options that the demo makes no use of. */
void checkDemo(Options const& options) {
    if (!options.inputs.empty()) {
        throw Failure("demo: takes no input; '" + options.inputs.front() + "' was given");
    }
    auto unused = unusedOptions(options.input, {});
    struct {
        bool isGiven;
        char const* name;
    } const ofBatches[] = {{options.jobs != 0, "--jobs"},
                           {options.recursive, "--recursive"},
                           {options.skipExisting, "--skip-existing"},
                           {options.setsDepth, "--depth"}};
    for (auto const& option : ofBatches) {
        if (option.isGiven) {
            unused.emplace_back(option.name);
        }
    }
    if (!options.shard.isWhole()) {
        unused.emplace_back("--shard");
    }
    if (!unused.empty()) {
        throw Failure(unused.front() + ": the demo renders one capture of its own", "leave it out");
    }
    bool const wantsJpeg = options.format.value_or(OutputKind::Jpeg) == OutputKind::Jpeg;
    bool const namesJpeg = options.output.empty() || lowerExtension(options.output).empty() ||
                           outputKindOf(options.output) == OutputKind::Jpeg;
    if (!wantsJpeg || !namesJpeg) {
        throw Failure(wantsJpeg ? options.output + ": the demo makes a JPEG"
                                : std::string("--format: the demo makes a JPEG"),
                      "end OUT in .jpg");
    }
}

/** Throws for a size beside a file that has its own, unless that is what its user left out. */
void checkSizes(Options const& options, std::vector<std::string> const& inputs,
                std::vector<InputKind> const& kinds) {
    auto const guessed = std::find(kinds.begin(), kinds.end(), InputKind::CameraRaw);
    if (options.input.size && guessed != kinds.end()) {
        std::string const& input = inputs[static_cast<size_t>(guessed - kinds.begin())];
        throw Failure("--size: " + input + " is neither a JPEG nor named .nv21 or .yuv",
                      "add --bayer ORDER if it is a headerless mosaic, --yuv LAYOUT if it is YUV, "
                      "leave --size out if it is a camera's raw file");
    }
    if ((options.input.bayer || options.input.yuv) && !options.input.size) {
        throw Failure(std::string(options.input.bayer ? "--bayer" : "--yuv") +
                              ": needs --size, for a headerless file does not tell its own",
                      "leave it out if the file has a header");
    }
}

/** Throws when it is said twice what the headerless inputs are, and not the same. */
void checkContradictions(InputOptions const& options, std::vector<std::string> const& inputs) {
    if (options.bayer && options.yuv) {
        throw Failure("--yuv: contradicts --bayer", "leave one of them out");
    }
    for (std::string const& input : inputs) {
        if (options.yuv.value_or(YuvLayout::Nv21) != YuvLayout::Nv21 &&
            lowerExtension(input) == ".nv21") {
            throw Failure(input + ": contradicts --yuv",
                          "leave --yuv out or change the name's ending");
        }
    }
}

/** Throws for options that nothing on the command line makes use of. */
void checkUse(Options const& options, std::vector<std::string> const& inputs,
              std::vector<InputKind> const& kinds) {
    auto unused = unusedOptions(options.input, kinds);
    if (options.request.raw16 && std::none_of(kinds.begin(), kinds.end(), isMosaic)) {
        unused.emplace_back("--raw16");
    }
    if (!unused.empty()) {
        throw Failure(unused.front() + ": no input makes use of it; " + inputs.front() + " is " +
                              kindText(kinds.front()),
                      "leave it out");
    }
    OutputKind const kind =
            options.format.value_or(outputKindOf(options.output).value_or(OutputKind::Jpeg));
    if (options.setsQuality && kind != OutputKind::Jpeg) {
        throw Failure("--quality: no JPEG is made", "leave it out");
    }
    if (options.setsDepth && !isRgb(kind)) {
        throw Failure("--depth: no PNG, TIFF or PPM is made", "leave it out");
    }
}

/** Throws when standard output cannot take the picture. */
void checkStandardOutput(Options const& options) {
    if (options.output != kStandardOutput) {
        return;
    }
    if (options.inputs.size() > 1 || !options.subfolders.empty()) {
        throw Failure("-o -: standard output takes one picture", "name a folder for several");
    }
    if (!options.format && !options.demo) {
        throw Failure("-o -: does not tell what to make", "give --format");
    }
    if (options.info == InfoFormat::Json) {
        throw Failure("--info=json: standard output takes the picture",
                      "name a file with -o, or give --info, which then goes to standard error");
    }
    if (options.skipExisting) {
        throw Failure("--skip-existing: standard output is never there already", "leave it out");
    }
    if (::isatty(STDOUT_FILENO) == 1) {
        throw Failure("-o -: standard output is a terminal", "redirect it, or name a file");
    }
}

}  // namespace

void checkOptions(Options const& options) {
    checkStandardOutput(options);
    if (options.demo) {
        checkDemo(options);
        return;
    }
    if (options.inputs.empty()) {
        throw Failure("INPUT is missing");
    }
    if (options.output.empty()) {
        throw Failure("-o is missing");
    }
    std::vector<std::string> inputs;  // those that are there
    std::vector<InputKind> kinds;
    for (std::string const& input : options.inputs) {
        if (options.problems.count(input) == 0) {
            inputs.push_back(input);
            kinds.push_back(inputKind(input, options.input));
        }
    }
    checkContradictions(options.input, inputs);
    if (!inputs.empty()) {
        checkSizes(options, inputs, kinds);
        checkUse(options, inputs, kinds);
    }
}

}  // namespace quen::reprocess
