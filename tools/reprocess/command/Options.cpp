#include "command/Options.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "command/ExitCode.h"
#include "command/InputFiles.h"
#include "command/OptionChecks.h"
#include "command/OptionValues.h"
#include "inputs/StandardInput.h"
#include "support/Failure.h"
#include "terminal/Printable.h"

namespace quen::reprocess {
namespace {

constexpr char kDescription[] =
        "Develops camera frames through the offline device library: RAW becomes YUV or JPEG, YUV "
        "and\n"
        "JPEG become JPEG. The stages are chosen by what goes in and what comes out.";

constexpr char kFooter[] = R"(Inputs, by name:
  *.jpg *.jpeg *.jpe  JPEG
  *.nv21 *.yuv        packed NV21 or planar I420, full range; needs --size
  anything else       headerless Bayer when --bayer is given, headerless YUV when --yuv
                      is; otherwise, by what is in it, JPEG or a camera's raw file (DNG
                      and the makers' own)
  -                   standard input, as "anything else"
  a folder, with -r   the files in it and below it that are any of these by their name
                      or content; not hidden ones, and not those in OUT
Outputs, by name:
  *.jpg *.jpeg *.jpe  JPEG
  *.nv21 *.yuv        packed NV21, planar I420
  *.png *.tif *.tiff *.ppm
                      RGB, turned upright
  -                   standard output; needs --format. What is told goes to standard
                      error then
Several inputs, a folder, or a name that ends in '/' make a folder of outputs; those of
the files in a folder go to the same sub-folders of it. A file is written whole or not
at all.

Headerless samples are little-endian words of 16 bits, or packed RAW10, RAW12 or RAW14
when that is what the file's size amounts to; --layout says so where it does not.

Exit codes:
  0  everything was reprocessed, or skipped
  1  at least one input was not, the others are there; or the timeline, the
     recording or what was to be printed is not whole
  2  the command line is wrong, or a file of --trace or --record cannot be written;
     nothing was done
  3  the demo's picture differs too much from its scene (below 30 dB)

Examples:
  quen-reprocess demo -o demo.jpg
  quen-reprocess shot.dng -o shot.jpg --quality 90 --info
  quen-reprocess shot.dng -o shot.nv21 --mode 0x2 --set fusion=1
  quen-reprocess frame.raw -o frame.jpg --size 1920x1080 --bayer rggb --bits 10 \
                 --wb 1.8,1,1.3 --black 64
  quen-reprocess card/*.dng -o developed/ --log warning
  quen-reprocess -r card -o developed/ --format tif --depth 16 --skip-existing
  quen-reprocess - -o - --format png <shot.dng >shot.png
  quen-reprocess - -o frame.jpg --size 1920x1080 --yuv nv12 <frame)";

std::map<std::string, BayerOrder> const kBayerNames = {
        {"rggb", BayerOrder::RGGB},
        {"grbg", BayerOrder::GRBG},
        {"gbrg", BayerOrder::GBRG},
        {"bggr", BayerOrder::BGGR},
};

std::map<std::string, YuvLayout> const kYuvNames = {
        {"nv21", YuvLayout::Nv21},
        {"nv12", YuvLayout::Nv12},
        {"i420", YuvLayout::I420},
        {"yv12", YuvLayout::Yv12},
};

std::map<std::string, SampleLayout> const kLayoutNames = {
        {"words", SampleLayout::Words}, {"words-be", SampleLayout::BigEndianWords},
        {"raw10", SampleLayout::Raw10}, {"raw12", SampleLayout::Raw12},
        {"raw14", SampleLayout::Raw14},
};

std::map<std::string, OutputKind> const kOutputNames = {
        {"jpg", OutputKind::Jpeg}, {"nv21", OutputKind::Nv21}, {"yuv", OutputKind::I420},
        {"png", OutputKind::Png},  {"tif", OutputKind::Tiff},  {"ppm", OutputKind::Ppm},
};

/** CLI11's help, with both usage lines and without double empty lines. */
class HelpFormatter : public CLI::Formatter {
  public:
    std::string make_usage(CLI::App const*, std::string) const override {
        return "Usage: quen-reprocess INPUT... -o OUT [OPTIONS]\n"
               "       quen-reprocess demo [-o demo.jpg] [OPTIONS]\n";
    }

    std::string make_help(CLI::App const* app, std::string name,
                          CLI::AppFormatMode mode) const override {
        std::string text = CLI::Formatter::make_help(app, name, mode);
        for (size_t at = text.find("\n\n\n"); at != std::string::npos; at = text.find("\n\n\n")) {
            text.erase(at, 1);
        }
        return text;
    }
};

/** What is printed about a wrong command line. */
std::string usageProblem(std::string const& problem) {
    return "quen-reprocess: " + printable(problem) + "; --help tells what there is\n";
}

/** The checks have no description: the type name of an option states its values. */
template <typename Names>
CLI::Validator oneOf(Names const& names) {
    return CLI::IsMember(names, CLI::ignore_case).description("");
}

/** Accepts numbers from `least` to `most`. */
CLI::Validator range(int least, int most) {
    return CLI::Range(least, most).description("");
}

/** Refuses an empty name of a file, as an unset variable of a script leaves it. */
CLI::Validator named() {
    auto const check = [](std::string const& name) {
        return name.empty() ? std::string("the file's name is empty") : std::string();
    };
    return CLI::Validator(check, "");
}

/** What the system calls a standard stream, beside "-". */
struct StreamNames {
    char const* names[3];
    char const* name;
};

constexpr StreamNames kInputNames = {{"/dev/stdin", "/dev/fd/0", "/proc/self/fd/0"},
                                     kStandardInput};
constexpr StreamNames kOutputStreamNames = {{"/dev/stdout", "/dev/fd/1", "/proc/self/fd/1"},
                                            kStandardOutput};

/** Takes the system's names of a standard stream for "-": what is opened anew has another end. */
void nameStream(StreamNames const& stream, std::string& path) {
    auto const* const end = std::end(stream.names);
    if (std::find(std::begin(stream.names), end, path) != end) {
        path = stream.name;
    }
}

/** An option whose value a function reads from its text; it throws Failure. */
template <typename Read>
CLI::Option* addRead(CLI::App& app, char const* name, Read const& read, char const* description) {
    auto const checked = [name, read](std::string const& text) {
        try {
            read(text);
        } catch (Failure const& failure) {
            throw CLI::ValidationError(name, failure.what());
        }
    };
    return app.add_option_function<std::string>(name, checked, description);
}

/** Adds the options about headerless inputs and corrections. */
void addInputOptions(CLI::App& app, InputOptions& options) {
    constexpr char kGroup[] = "What the input is";
    addRead(
            app, "--size", [&](std::string const& text) { options.size = parseSize(text); },
            "Size of a headerless Bayer or YUV picture in pixels")
            ->type_name("WxH")
            ->group(kGroup);
    app.add_option_function<std::string>(
               "--bayer", [&](std::string const& text) { options.bayer = kBayerNames.at(text); },
               "Colours of a headerless mosaic's top left 2 x 2 pixels")
            ->transform(oneOf(kBayerNames))
            ->type_name("rggb|grbg|gbrg|bggr")
            ->group(kGroup);
    app.add_option_function<std::string>(
               "--yuv", [&](std::string const& text) { options.yuv = kYuvNames.at(text); },
               "Layout of headerless 4:2:0 YUV whose name does not\ntell it, and of *.yuv")
            ->transform(oneOf(kYuvNames))
            ->type_name("nv21|nv12|i420|yv12")
            ->group(kGroup);
    app.add_option("--bits", options.bits, "Depth of headerless Bayer samples; 10 unless given")
            ->check(range(8, 16))
            ->type_name("8..16")
            ->group(kGroup);
    app.add_option_function<std::string>(
               "--layout", [&](std::string const& text) { options.layout = kLayoutNames.at(text); },
               "How headerless samples lie: 16-bit words, the same\nbig-endian, or packed; by the "
               "file's size unless given")
            ->transform(oneOf(kLayoutNames))
            ->type_name("words|words-be|raw10|raw12|raw14")
            ->group(kGroup);
    app.add_option("--stride", options.stride, "Bytes from row to row of headerless samples")
            ->check(range(1, 1 << 30))
            ->type_name("BYTES")
            ->group(kGroup);
    app.add_option("--offset", options.offset, "Bytes before the first row of headerless samples")
            ->check(range(0, 1 << 30))
            ->type_name("BYTES")
            ->group(kGroup);
    addRead(
            app, "--wb", [&](std::string const& text) { options.wb = parseWhiteBalance(text); },
            "White-balance gains, in place of a raw file's own;\n1,1,1 when headerless")
            ->type_name("R,G,B")
            ->group(kGroup);
    addRead(
            app, "--black", [&](std::string const& text) { options.black = parseBlack(text); },
            "Black level, one or R,Gr,Gb,B, in place of a raw\nfile's own; 0 when headerless")
            ->type_name("N")
            ->group(kGroup);
    app.add_option("--white", options.white,
                   "White level, in place of a raw file's own; the\nlargest sample of --bits when "
                   "headerless")
            ->check(range(1, 65535))
            ->type_name("N")
            ->group(kGroup);
    addRead(
            app, "--matrix", [&](std::string const& text) { options.matrix = parseMatrix(text); },
            "White-balanced camera RGB to linear sRGB, nine\nnumbers row by row, in place of a "
            "raw file's own")
            ->type_name("M,...")
            ->group(kGroup);
    app.add_option("--rotate", options.rotate,
                   "Clockwise turn that shows the picture upright, in\nplace of the file's own; "
                   "told in a JPEG, applied to RGB")
            ->check(CLI::IsMember(std::vector<int>{0, 90, 180, 270}).description(""))
            ->type_name("0|90|180|270")
            ->group(kGroup);
}

constexpr char kRequestGroup[] = "What the request carries";

/** An option that takes any bit pattern of its type. */
template <typename T>
CLI::Option* addBits(CLI::App& app, char const* name, T& value, char const* description) {
    auto const read = [&value](std::string const& text) { value = parseBits<T>(text); };
    return addRead(app, name, read, description)->default_str("0")->group(kRequestGroup);
}

/** Adds the options about the contents of requests. */
void addRequestOptions(CLI::App& app, RequestOptions& options) {
    constexpr auto& kGroup = kRequestGroup;
    addBits(app, "--mode", options.mode, "currentMode, a set of 64 bits; 0x... is hexadecimal")
            ->type_name("BITS");
    addBits(app, "--ui-mode", options.uiMode, "currentUiMode; 16 turns the 14-bit path off")
            ->type_name("N");
    addBits(app, "--scene", options.scene, "sceneMode; 0x... is hexadecimal")->type_name("CODE");
    app.add_option("--quality", options.quality, "JPEG quality")
            ->check(range(1, 100))
            ->type_name("1..100")
            ->capture_default_str()
            ->group(kGroup);
    app.add_option("--set", options.assignments,
                   "Sets a request tag, by name or 0x id, to a value or\n"
                   "several with commas between them; may be repeated")
            ->allow_extra_args(false)
            ->type_name("TAG=VALUE")
            ->group(kGroup);
    app.add_flag("--raw16", options.raw16, "Hand RAW16 to the ISP even where RAW10 would do")
            ->group(kGroup);
    app.add_option("--timeout", options.timeoutSeconds,
                   "How long to wait for the ISP, in seconds\n(vendor.debug.camera.jpeg.timeout)")
            ->check(range(1, 3600))
            ->type_name("SECONDS")
            ->capture_default_str()
            ->group(kGroup);
}

/** Adds the options about the output of the tool. @param infoName the value of --info */
void addReportOptions(CLI::App& app, Options& options, std::string& infoName) {
    constexpr char kGroup[] = "What is shown";
    app.add_flag("--info", infoName,
                 "Print what the ISP was given and gave back, and\nwhere the time went; as one "
                 "JSON document with =json")
            ->type_name("[=json]")
            ->group(kGroup);
    app.add_option("--trace", options.trace,
                   "Write a timeline of threads, requests and the ISP's\nwork, for Perfetto or "
                   "chrome://tracing")
            ->check(named())
            ->type_name("FILE")
            ->group(kGroup);
    app.add_option("--log", options.logLevel, "Show the library's messages down to a level")
            ->check(oneOf(std::vector<std::string>{"silent", "error", "warning", "info", "debug"}))
            ->type_name("silent|error|warning|info|debug")
            ->capture_default_str()
            ->group(kGroup);
    CLI::Option* const record =
            app.add_option("--record", options.record,
                           "Write down all that crosses between this tool, the\nlibrary and the "
                           "ISP; quen-replay runs it again")
                    ->check(named())
                    ->type_name("FILE")
                    ->group(kGroup);
    app.add_flag("--record-pictures", options.recordPictures,
                 "Have the recording hold the pictures, not their hashes")
            ->needs(record)
            ->group(kGroup);
}

}  // namespace

std::optional<Options> parseOptions(int argc, char** argv, int& exitCode) {
    Options options;
    CLI::App app(kDescription, "quen-reprocess");
    app.footer(kFooter);
    auto const formatter = std::make_shared<HelpFormatter>();
    formatter->column_width(30);
    app.formatter(formatter);
    app.failure_message(
            [](CLI::App const*, CLI::Error const& error) { return usageProblem(error.what()); });
    app.set_version_flag("--version", "quen-reprocess " QUEN_VERSION, "Print the version and exit");
    app.add_option("INPUT", options.inputs, "Files to reprocess")->type_name("");
    app.add_option("-o,--output", options.output,
                   "Where the picture goes: a file, a folder, or - for\nstandard output")
            ->type_name("OUT");
    app.add_option_function<std::string>(
               "--format", [&](std::string const& text) { options.format = kOutputNames.at(text); },
               "What to make where OUT's name does not tell: in a\nfolder jpg, unless this says "
               "otherwise")
            ->transform(oneOf(kOutputNames))
            ->type_name("jpg|nv21|yuv|png|tif|ppm");
    app.add_option("--depth", options.depth, "Bits of a sample of png, tif and ppm")
            ->check(CLI::IsMember(std::vector<int>{8, 16}).description(""))
            ->type_name("8|16")
            ->capture_default_str();
    app.add_flag("-r,--recursive", options.recursive,
                 "Take the pictures in folders, and below them");
    app.add_flag("--skip-existing", options.skipExisting, "Leave inputs whose output is there");
    app.add_option("--jobs", options.jobs,
                   "Inputs in work at a time, as far as memory allows; one\nmore than there are "
                   "processors unless given")
            ->check(range(1, 64))
            ->type_name("N");
    addRead(
            app, "--shard", [&](std::string const& text) { options.shard = parseShard(text); },
            "Take the I-th of every N inputs, as listed: shards 1/N\nto N/N of one list take "
            "each input once")
            ->type_name("I/N");
    addInputOptions(app, options.input);
    addRequestOptions(app, options.request);
    std::string infoName;
    addReportOptions(app, options, infoName);
    CLI::App* const demo = app.add_subcommand(
            "demo",
            "Renders a test scene as a noisy 12-megapixel capture,\ndevelops it and measures the "
            "picture against the scene;\nOUT is demo.jpg unless given");
    demo->fallthrough();
    demo->footer(
            "Takes what is said under \"What the request carries\" and \"What is shown\" as well: "
            "see\n"
            "quen-reprocess --help.");

    try {
        app.parse(argc, argv);
        options.demo = demo->parsed();
        options.setsQuality = app.count("--quality") != 0;
        options.setsDepth = app.count("--depth") != 0;
        options.info = parseInfo(infoName);
        nameStream(kOutputStreamNames, options.output);
        for (std::string& input : options.inputs) {
            nameStream(kInputNames, input);
        }
        findInputFiles(options);
        checkOptions(options);
    } catch (CLI::ParseError const& error) {
        exitCode = app.exit(error) == 0 ? kAllGood : kUsage;
        return std::nullopt;
    } catch (Failure const& failure) {
        std::fprintf(stderr, "%s", usageProblem(failure.what()).c_str());
        exitCode = kUsage;
        return std::nullopt;
    }
    if (options.demo && options.output.empty()) {
        options.output = "demo.jpg";
    }
    return options;
}

}  // namespace quen::reprocess
