// quen-reprocess: files through both stages, and what becomes of bad ones.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <string>
#include <utility>

#include "support/Cli.h"

namespace {

using namespace quentest;
using testing::ContainsRegex;
using testing::ElementsAre;
using testing::HasSubstr;

TEST_F(CliTest, EveryBayerOrderAndContainerGivesTheSurfaceItsColour) {
    for (Colour const& colour : {kGrey, kBrick}) {
        for (std::string const order : {"rggb", "grbg", "gbrg", "bggr"}) {
            std::string const headerless = " --size 64x48 --wb 2,1,1.5 --bayer " + order;
            auto const ten = mosaic(colour, order, 10, 64);
            put("words.raw", bytesOf(ten));
            put("packed.raw", packed(ten, 4, 10));
            put("twelve.raw", bytesOf(mosaic(colour, order, 12, 256)));
            put("camera.dng", asDng(colour, order));
            for (std::string const& input :
                 {"words.raw --black 64" + headerless, "words.raw --black 64 --raw16" + headerless,
                  "packed.raw --black 64" + headerless,
                  "twelve.raw --bits 12 --black 256" + headerless, std::string("camera.dng")}) {
                SCOPED_TRACE(order + " " + input);
                Outcome const outcome = run(input + " -o out.nv21");
                ASSERT_EQ(0, outcome.exitCode) << outcome.err;
                expectColour("out.nv21", colour);
                fs::remove(path("out.nv21"));
            }
        }
    }
}

TEST_F(CliTest, ARealSensorFrameOfAChartHasTheChartsColours) {
    constexpr size_t kChartWidth = 1920;
    constexpr size_t kChartHeight = 1080;
    if (!fs::exists(QUEN_CHART)) {
        GTEST_SKIP() << "the frame is not there: " QUEN_CHART;
    }
    Outcome const outcome = run("'" QUEN_CHART
                                "' -o chart.nv21 --size 1920x1080 --bayer rggb --bits 10 "
                                "--wb 1.816,1,1.25");
    ASSERT_EQ(0, outcome.exitCode) << outcome.err;
    std::string const picture = get("chart.nv21");
    ASSERT_EQ(kChartWidth * kChartHeight * 3 / 2, picture.size());

    struct Patch {
        char const* name;
        size_t x, y;
        char const* order;  // "rgb": red is larger than green, and green than blue
    };
    for (Patch const& patch : {Patch{"orange", 756, 368, "rgb"},
                               {"purple", 820, 368, "rg bg"},
                               {"sky", 884, 364, "bgr"},
                               {"navy", 948, 362, "bg br"},
                               {"green", 1012, 360, "gr gb"},
                               {"brick", 1076, 360, "rg rb"},
                               {"grey", 850, 500, ""},
                               {"grey", 1250, 600, ""}}) {
        SCOPED_TRACE(std::string(patch.name) + " " + patch.order);
        auto const at = [&](size_t offset) { return double(uint8_t(picture[offset])); };
        size_t const pair = kChartWidth * (kChartHeight + patch.y / 2) + patch.x / 2 * 2;
        double const luma = at(kChartWidth * patch.y + patch.x);
        double const cr = at(pair) - 128;
        double const cb = at(pair + 1) - 128;
        std::map<char, double> const rgb = {{'r', luma + 1.402 * cr},
                                            {'g', luma - 0.344 * cb - 0.714 * cr},
                                            {'b', luma + 1.772 * cb}};
        for (char const* channel = patch.order; channel[0] != 0 && channel[1] != 0; ++channel) {
            if (channel[0] != ' ' && channel[1] != ' ') {
                EXPECT_GT(rgb.at(channel[0]), rgb.at(channel[1]) + 15);
            }
        }
        if (patch.order[0] == 0) {
            EXPECT_LT(std::hypot(cb, cr), 8);
        }
    }
}

TEST_F(CliTest, PicturesGoOnToJpegAndTheWayIsToldByInfo) {
    put("shot.dng", asDng(kBrick, "rggb"));
    Outcome const both =
            run("shot.dng -o shot.jpg --info --set 0x800b000e=7 --mode 0X2 --scene -2147483648 "
                "--set android.control.aeCompensationStep=1/3");
    ASSERT_EQ(0, both.exitCode) << both.err;
    // Bit 1 of the mode chooses tuning 6003, whatever the client says.
    for (char const* const line :
         {"tuningMode[^\n]* 6003\n", " Engineermode int32", "REQUESTNO int32.1. 1\n",
          "\nclient result\n", "\ntime\n", "stream 0, tuning data attached", "levels of 14 bits",
          "rawBitDepth[^\n]* 14\n", "currentMode[^\n]* 2\n", "RAW2YUV", "YUV2JPEG",
          "sceneMode[^\n]* -2147483648\n", "aeCompensationStep[^\n]* 1/3\n",
          "requestNo 1, frameNumber 1, totalUsedBytes [1-9]", "stride 128, usage",
          "stride 64 32 32,", "noise shot 0.0004, read 1.6e-05", "gains R Gr Gb B 2 1 1 1.[45]",
          "black R Gr Gb B 512 512 512 512"}) {
        EXPECT_THAT(both.out, ContainsRegex(line));
    }
    Outcome const plain = run("shot.dng -o shot.nv21 --info --ui-mode 16");
    EXPECT_THAT(plain.out, ContainsRegex("rawBitDepth[^\n]* 10\n"));
    EXPECT_THAT(plain.out, ContainsRegex("cameraId[^\n]* 0\n[^\n]*currentUiMode[^\n]* 16\n"))
            << "the session's settings";
    EXPECT_THAT(plain.out, HasSubstr("64x48  4.6 kB"));
    expectColour("shot.nv21", kBrick);
    // More than a request's metadata has room for at first.
    std::string many = "1";
    for (int i = 0; i < 1100; ++i) {
        many += ",1";
    }
    EXPECT_EQ(0, shell("umask 0 && " QUEN_REPROCESS " shot.dng -o many.jpg --set rawTuningData=" +
                       many));
    EXPECT_EQ(fs::status(path("many.jpg")).permissions(), fs::perms(0666));

    EXPECT_EQ(0, run("shot.nv21 --size 64x48 -o folder/").exitCode);
    Outcome const encoded = run("shot.nv21 --size 64x48 -o from-nv21.jpg");
    EXPECT_EQ(get("folder/shot.jpg"), get("from-nv21.jpg"));
    EXPECT_EQ(0, encoded.exitCode);
    EXPECT_EQ(1, std::count(encoded.out.begin(), encoded.out.end(), '\n')) << "no sum of one";
    EXPECT_EQ(0, run("shot.dng -o shot.YUV --ui-mode 16").exitCode);
    EXPECT_EQ(0, run("shot.YUV --size 64x48 -o from-yuv.jpg").exitCode);
    EXPECT_EQ(get("from-nv21.jpg"), get("from-yuv.jpg"));
    // The camera was turned: both encodings say so, the second because the first did.
    EXPECT_EQ(0, run("shot.jpg -o again.jpg").exitCode);
    EXPECT_THAT(get("again.jpg"), HasSubstr(std::string("\0\x11\x08\0\x30\0\x40", 7)));  // 64x48
    EXPECT_THAT(run("again.jpg -o third.jpg --info").out, ContainsRegex("orientation[^\n]* 90\n"));
}

TEST_F(CliTest, ABadFileStopsNoOtherAndLeavesNothingBehind) {
    fs::create_directory(mFolder / "a");
    put("good.dng", asDng(kGrey, "rggb"));
    put("a/good.dng", asDng(kGrey, "bggr"));
    put("broken.jpg", std::string("\xff\xd8\xff\xe0\0\x10J", 7));
    put("noise.dng", std::string(5000, 7));
    Outcome const outcome = run("good.dng broken.jpg noise.dng a/good.dng missing.dng -o out");
    EXPECT_EQ(1, outcome.exitCode);
    for (char const* const name : {"broken.jpg: ", "noise.dng: ", "missing.dng: "}) {
        EXPECT_THAT(outcome.err, HasSubstr(name));
    }
    EXPECT_THAT(outcome.out, HasSubstr("2 of 5 reprocessed, 3 failed"));
    EXPECT_THAT(names(), ElementsAre("a/good.dng", "broken.jpg", "good.dng", "noise.dng",
                                     "out/good-2.jpg", "out/good.jpg"));

    // What stood there before a failure stays.
    put("kept.jpg", "kept");
    EXPECT_EQ(1, run("noise.dng -o kept.jpg").exitCode);
    // The ISP says why, and the tool repeats it.
    std::string const refused = " -o kept.jpg --log error --timeout 3600";
    expectErrors(1, {
                            {"good.dng --set 0x000d0000=0,0,-5,9" + refused,
                             "the ISP refused it with ILLEGAL_ARGUMENT: the crop is not"},
                            {"good.dng --set 0x000d0000=64,0,5,5" + refused,
                             "outside stream 0 of 64x48"},
                            {"out/good.jpg --set android.jpeg.orientation=7" + refused,
                             "orientation is none of 0 to 270"},
                            {"out/good.jpg --set android.jpeg.orientation=7" + refused,
                             "quen-isp: a request is refused"},
                            {"good.dng -o nowhere/x.jpg", "its output nowhere/x.jpg cannot"},
                            {"out/good.jpg -o out/good.jpg", ""},
                            {"out/good.jpg -o decoded.nv21", ""},
                    });
    EXPECT_EQ("kept", get("kept.jpg"));
    // What a link names is written, and the link stays.
    shell("cd a && ln -s linked.jpg link.jpg && ln -s link.jpg chain.jpg");
    EXPECT_EQ(0, run("good.dng -o a/chain.jpg").exitCode);
    EXPECT_TRUE(fs::is_symlink(path("a/link.jpg")));
    EXPECT_EQ(get("a/linked.jpg"), get("out/good.jpg"));
}

TEST_F(CliTest, WhatCannotBeWrittenIsToldAndLeavesNothing) {
    put("shot.dng", asDng(kGrey, "rggb"));
    ASSERT_EQ(0, run("shot.dng -o shot.jpg").exitCode);
    EXPECT_EQ(1, run("shot.dng -o /dev/full --format jpg").exitCode);
    EXPECT_EQ(1, run("shot.dng -o x.jpg --info >/dev/full 2>err.txt #").exitCode);
    EXPECT_THAT(get("err.txt"), HasSubstr("standard output cannot be written"));
    fs::remove(path("x.jpg"));
    EXPECT_EQ(1, shell("ulimit -f 1 && " QUEN_REPROCESS " shot.dng -o x.nv21 2>err.txt"));
    EXPECT_THAT(get("err.txt"), HasSubstr("shot.dng: cannot"));

    // A disk with room for a page.
    put("full.sh", "mkdir disk && mount -t tmpfs -o size=4096 none disk || exit 77\n" QUEN_REPROCESS
                   " shot.dng -o disk/shot.nv21 2>err.txt && exit 1\nls -A disk | wc -l >out.txt");
    bool const isMounted = shell("unshare -rm sh full.sh 2>unshared.txt") == 0;
    if (isMounted) {
        EXPECT_THAT(get("err.txt"), HasSubstr("cannot be written"));
        EXPECT_EQ("0\n", get("out.txt"));
    }
    fs::remove(path("full.sh"));
    EXPECT_THAT(names(), ElementsAre("shot.dng", "shot.jpg"));
    if (!isMounted) {
        GTEST_SKIP() << "no disk could be mounted: " << get("unshared.txt");
    }
}

TEST_F(CliTest, NothingIsPrintedThatATerminalObeysNorWithoutNeed) {
    put("shot.dng", asDng(kGrey, "rggb"));
    ASSERT_EQ(0, run("shot.dng -o shot.jpe").exitCode);
    Outcome const healthy = run("shot.jpe -o again.jpg --log error");
    EXPECT_EQ(0, healthy.exitCode);
    EXPECT_EQ("", healthy.err);

    put("a\x1b[31m\xc2\x9bz\xc3\xa9", get("shot.jpe"));  // no suffix: a JPEG by its content
    put("b\x1b[31m\x7f.jpg", "no picture");
    Outcome const outcome = run("a* b* -o out");
    EXPECT_THAT(outcome.out, HasSubstr("a\\x1b[31m\\xc2\\x9bz\xc3\xa9 -> "));
    EXPECT_THAT(outcome.err, HasSubstr("b\\x1b[31m\\x7f.jpg: is no JPEG"));
    EXPECT_EQ(std::string::npos, (outcome.out + outcome.err).find('\x1b'));
    EXPECT_EQ(1, outcome.exitCode);
}

// Figures that nothing behind them bears out; a reader that believes them takes all memory there
// is.
TEST_F(CliTest, DamagedFiguresAreToldBeforeTheyAreUsed) {
    put("whole.dng", asDng(kGrey, "rggb"));
    ASSERT_EQ(0, run("whole.dng -o whole.jpg").exitCode);
    struct {
        char const* file;
        std::string figure, damaged;
        char const* says;
    } const cases[] = {
            {"whole.jpg", std::string("\0\x11\x08\0\x30\0\x40", 7),
             std::string("\0\x11\x08\xff\0\xff\0", 7), "65280x65280 pixels"},
            {"whole.dng", std::string("\0\1\4\0\1\0\0\0\x40\0\0\0\1\1\4\0\1\0\0\0\x30\0", 22),
             std::string("\0\1\4\0\1\0\0\0\0\x08\0\0\1\1\4\0\1\0\0\0\0\x08", 22),
             "2048x2048 pixels"},
            {"whole.dng", std::string("\3\0\1\0\0\0\0\2\0\0\x1d", 11),
             std::string("\4\0\1\0\0\0\xff\xff\xff\x7f\x1d", 11), "black level of 2147483648"},
    };
    for (auto const& c : cases) {
        std::string bytes = get(c.file);
        size_t const at = bytes.rfind(c.figure);  // behind a thumbnail
        ASSERT_NE(at, std::string::npos) << c.says;
        put(std::string("damaged-") + c.file, bytes.replace(at, c.damaged.size(), c.damaged));
        expectErrors(1, {{std::string("damaged-") + c.file + " -o out.jpg", c.says}});
    }
}

TEST_F(CliTest, HelpIsGivenAndClosedDescriptorsAreNoFiles) {
    put("in.dng", asDng(kGrey, "rggb"));
    EXPECT_EQ(0, run("--help").exitCode);
    EXPECT_THAT(run("--version").out, testing::MatchesRegex("quen-reprocess [0-9.]+\n"));
    Outcome const poor = run("demo --quality 1");
    EXPECT_EQ(3, poor.exitCode) << "below 30 dB";
    EXPECT_TRUE(fs::exists(path("demo.jpg")));
    EXPECT_EQ(2, std::count(poor.out.begin(), poor.out.end(), '\n')) << "and nothing else";
    double all = 0, red = 0, green = 0, blue = 0;
    std::sscanf(poor.out.c_str() + poor.out.find("PSNR"),
                "PSNR %lf dB %*[^R]RGB, all channels; R %lf, G %lf, B %lf", &all, &red, &green,
                &blue);
    EXPECT_TRUE(all > std::min({red, green, blue}) && all < std::max({red, green, blue}));
    // Without the three standard descriptors no file of the run takes their place.
    EXPECT_EQ(0, shell(QUEN_REPROCESS " in.dng -o x.nv21 0<&- 1>&- 2>&-"));
    expectColour("x.nv21", kGrey);
    EXPECT_EQ(1, shell(QUEN_REPROCESS " in.dng -o - --format jpg 1>&- 2>err.txt"));
    EXPECT_THAT(get("err.txt"), HasSubstr("standard output cannot be written: it is closed"));
}

}  // namespace
