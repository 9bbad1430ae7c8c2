// quen-reprocess with folders as inputs, and with outputs that are there already.

#include <string>

#include "support/Cli.h"

namespace {

using namespace quentest;
using testing::ElementsAre;
using testing::HasSubstr;

class CliFoldersTest : public CliTest {
  protected:
    void SetUp() override {
        CliTest::SetUp();
        fs::create_directories(mFolder / "card/b/c");
        fs::create_directories(mFolder / "card/.trash");
        for (char const* const name : {"card/z.dng", "card/b/c/z.dng", "card/b/unnamed",
                                       "card/.hidden.dng", "card/.trash/y.dng"}) {
            put(name, asDng(kGrey, "rggb"));
        }
        put("card/b/readme.md", "no picture");
        put("card/b/frame.raw", bytesOf(mosaic(kGrey, "rggb", 10, 64)));
        put("card/frame.nv21", std::string(kWidth * kHeight * 3 / 2, '\x40'));
    }

    std::set<std::string> namesIn(std::string const& folder) const {
        std::set<std::string> found;
        for (std::string const& name : names()) {
            if (name.rfind(folder + "/", 0) == 0) {
                found.insert(name.substr(folder.size() + 1));
            }
        }
        return found;
    }
};

}  // namespace

TEST_F(CliFoldersTest, PicturesInFoldersKeepTheirSubfolders) {
    // The second time, what the first one made is no input.
    for (int time = 0; time < 2; ++time) {
        Outcome const outcome = run("-r card -o card/made");
        ASSERT_EQ(0, outcome.exitCode) << outcome.err;
        EXPECT_THAT(outcome.out, HasSubstr("3 of 3 reprocessed"));
        EXPECT_LT(outcome.out.find("b/c/z.dng"), outcome.out.find("card/z.dng"));
        EXPECT_THAT(namesIn("card/made"), ElementsAre("b/c/z.jpg", "b/unnamed.jpg", "z.jpg"));
    }
    fs::remove_all(mFolder / "card/made");
    // What headerless files need is given: those are taken, camera's files no longer.
    EXPECT_EQ(0, run("card/b -r -o raw --bayer rggb --size 64x48").exitCode);
    EXPECT_THAT(namesIn("raw"), ElementsAre("frame.jpg"));
    // Of two inputs with one name each has its picture; no YUV is made of YUV.
    EXPECT_EQ(0, run("-r card card/z.dng -o both --format nv21").exitCode);
    EXPECT_THAT(namesIn("both"), ElementsAre("b/c/z.nv21", "b/unnamed.nv21", "z-2.nv21", "z.nv21"));

    fs::create_directory(mFolder / "empty");
    expectErrors(2, {{"card -o made", "card: is a folder; give -r"},
                     {"-r empty -o made", "empty: has no picture"},
                     {"-r card -o card", "name another folder"}});
    // Nor is a picture lost to that of another input.
    put("b.jpg", get("both/z.nv21"));
    put("b.dng", get("card/z.dng"));
    expectErrors(2, {{"b.dng b.jpg -o .", "b.jpg: would be overwritten"}});
}

TEST_F(CliFoldersTest, OutputsThatAreThereStay) {
    fs::create_directories(mFolder / "made/b/c");
    put("made/b/c/z.jpg", "kept");
    put("made/z.jpg", "");  // no picture: something else's trace
    Outcome const some = run("-r card -o made --skip-existing");
    EXPECT_EQ(0, some.exitCode) << some.err;
    EXPECT_THAT(some.out, HasSubstr("2 of 3 reprocessed, 0 failed, 1 skipped"));
    EXPECT_EQ("kept", get("made/b/c/z.jpg"));
    EXPECT_EQ("\xff\xd8", get("made/z.jpg").substr(0, 2));
    Outcome const none = run("-r card -o made --skip-existing --jobs 1");
    EXPECT_EQ(0, none.exitCode);
    EXPECT_THAT(none.out, HasSubstr("0 of 3 reprocessed, 0 failed, 3 skipped"));
    EXPECT_THAT(run("card/z.dng -o made/z.jpg --skip-existing").out, HasSubstr("skipped"));
}
