// quen-reprocess with many inputs, several of them in work at a time.

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "command/Pipeline.h"
#include "support/Cli.h"

namespace {

using namespace quentest;
using quen::reprocess::Pipeline;
using quen::reprocess::PipelineStages;
using testing::HasSubstr;

constexpr char kHeaderless[] = " --size 64x48 --bayer rggb --black 64 --wb 2,1,1.5 ";
constexpr size_t kRawBytes = 64 * 48 * 2;
constexpr size_t kPictureBytes = 64 * 48 * 3 / 2;

class CliBatchTest : public CliTest {
  protected:
    // A frame unlike any other number's.
    std::string putFrame(int number, size_t bytes = kRawBytes) const {
        std::string const name = "f" + std::to_string(number) + ".raw";
        std::vector<uint16_t> samples(kRawBytes / 2);
        for (size_t i = 0; i < samples.size(); ++i) {
            samples[i] = 64 + (i * static_cast<size_t>(number + 3) + i / 64 * 5) % 900;
        }
        put(name, bytesOf(samples).substr(0, bytes));
        return " " + name;
    }

    // The contents of a folder's files by their names, hidden ones included.
    std::map<std::string, std::string> files(std::string const& folder) const {
        std::map<std::string, std::string> found;
        for (std::string const& name : names()) {
            if (fs::path(name).parent_path() == folder) {
                found[fs::path(name).filename()] = get(name);
            }
        }
        return found;
    }
};

// The lines about inputs, without times and the name of the output's folder.
std::vector<std::string> inputsOf(std::string const& text) {
    std::vector<std::string> names;
    for (size_t at = 0; at < text.size(); at = text.find('\n', at) + 1) {
        names.push_back(text.substr(at, text.find(".raw", at) - at));
    }
    return names;
}

}  // namespace

TEST_F(CliBatchTest, JobsChangeNeitherPicturesNorTheOrderOfWhatIsTold) {
    std::string inputs;
    for (int i = 0; i < 24; ++i) {
        // Two that cannot be read, and one that is not there.
        inputs += i == 20 ? " f20.raw" : putFrame(i, i == 5 || i == 6 ? 100 : kRawBytes);
    }
    for (int const jobs : {1, 2, 7}) {
        std::string const name = std::to_string(jobs);
        Outcome const outcome =
                run(inputs + kHeaderless + "--format nv21 --jobs " + name + " -o " + name);
        EXPECT_EQ(1, outcome.exitCode);
        EXPECT_EQ(inputsOf(outcome.err),
                  (std::vector<std::string>{"quen-reprocess: f5", "quen-reprocess: f6",
                                            "quen-reprocess: f20"}));
        std::vector<std::string> const lines = inputsOf(outcome.out);
        ASSERT_EQ(lines.size(), 22u);
        EXPECT_EQ(lines[4], "f4");
        EXPECT_EQ(lines[5], "f7");
        EXPECT_EQ(lines[20], "f23");
        EXPECT_THAT(lines[21], HasSubstr("21 of 24 reprocessed, 3 failed"));
        EXPECT_EQ(files(name), files("1")) << jobs;
    }
    auto const made = files("1");
    EXPECT_EQ(made.size(), 21u);
    EXPECT_NE(made.at("f1.nv21"), made.at("f2.nv21"));
}

TEST_F(CliBatchTest, JpegsOfAllKindsOfInputsComeBesideEachOther) {
    std::string const frame = putFrame(1);
    ASSERT_EQ(0, run(frame + kHeaderless + "-o a.nv21").exitCode);
    ASSERT_EQ(0, run("a.nv21 --size 64x48 -o b.jpg").exitCode);
    std::string inputs;
    for (int i = 0; i < 8; ++i) {
        inputs += frame + " a.nv21 b.jpg";
    }
    Outcome const outcome = run(inputs + kHeaderless + "--jobs 3 --info -o made");
    ASSERT_EQ(0, outcome.exitCode);
    auto const made = files("made");
    EXPECT_EQ(made.size(), 24u);
    for (auto const& [name, bytes] : made) {
        EXPECT_EQ(bytes.substr(0, 2), "\xff\xd8") << name;
        EXPECT_EQ(bytes.substr(bytes.size() - 2), "\xff\xd9") << name;
    }
    // What is told of an input follows its line: a mosaic has two requests, a picture one.
    std::string const& out = outcome.out;
    size_t results = 0;
    for (size_t at = out.find("ISP result"); at != std::string::npos;
         at = out.find("ISP result", at + 1)) {
        ++results;
    }
    EXPECT_EQ(results, 8u * 4);

    // Buffers go from frame to frame where they are of one shape.
    put("wide.dng", asDng(kGrey, "rggb"));
    put("tall.dng", asDng(kGrey, "rggb", {{256, 4, 1, 48}, {257, 4, 1, 64}, {278, 4, 1, 64}}));
    EXPECT_EQ(0, run("wide.dng tall.dng wide.dng tall.dng --jobs 1 -o shapes").exitCode);
}

TEST_F(CliBatchTest, AnInterruptedBatchEndsWhatIsInWork) {
    std::string inputs;
    for (int i = 0; i < 300; ++i) {
        inputs += putFrame(i);
    }
    int const exitCode = shell("mkfifo said && { " QUEN_REPROCESS + inputs + kHeaderless +
                               "--format nv21 --jobs 2 -o made >said & } && "
                               "{ read first; kill -TERM $!; cat; } <said >out.txt; wait $!");
    EXPECT_EQ(exitCode, 128 + 15);
    auto const made = files("made");
    EXPECT_LT(made.size(), 300u);
    for (auto const& [name, bytes] : made) {
        EXPECT_EQ(bytes.size(), kPictureBytes) << name;
    }
    EXPECT_THAT(get("out.txt"), HasSubstr(std::to_string(made.size()) + " of 300 reprocessed"));
    EXPECT_THAT(get("out.txt"), HasSubstr("not begun: interrupted"));
}

namespace {

// Notes the order of the stages, and how many frames were held at a time.
class NotingStages : public PipelineStages {
  public:
    size_t read(size_t) override {
        std::lock_guard<std::mutex> const guard(mLock);
        ++mHeld;
        mostHeld = std::max(mostHeld, mHeld);
        mostUnwritten = std::max(mostUnwritten, ++mRead - written.size());
        mHasRead.notify_all();
        return 100;
    }
    void submit(size_t frame) override { submitted.push_back(frame); }
    void finish(size_t frame) override {
        std::unique_lock<std::mutex> guard(mLock);
        mHasRead.wait_for(guard, std::chrono::seconds(20), [&] { return mRead >= readAhead; });
        --mHeld;
        mostAhead = std::max(mostAhead, submitted.size() - finished.size());
        finished.push_back(frame);
        if (frame == last) {
            mStopped = true;
        }
    }
    void write(size_t frame) override {
        std::this_thread::sleep_for(writingTakes);
        std::lock_guard<std::mutex> const guard(mLock);
        written.push_back(frame);
    }
    bool isStopped() override {
        std::lock_guard<std::mutex> const guard(mLock);
        return mStopped;
    }

    size_t last = SIZE_MAX;  // to be finished before the stop
    size_t readAhead = 0;    // before the first one is finished
    std::vector<size_t> submitted, finished, written;
    size_t mostHeld = 0;
    size_t mostAhead = 0;
    size_t mostUnwritten = 0;
    std::chrono::milliseconds writingTakes{0};

  private:
    std::mutex mLock;
    std::condition_variable mHasRead;
    size_t mHeld = 0;
    size_t mRead = 0;
    bool mStopped = false;
};

}  // namespace

TEST(PipelineTest, TakesFramesInOrderAndHoldsNoMoreThanItMay) {
    struct {
        size_t jobs, memory, mostHeld, mostAhead;
    } const cases[] = {
            {2, SIZE_MAX, 3, 2},
            {16, SIZE_MAX, 17, 4},
            {16, 250, 2, 2},
            {4, 50, 1, 1},
    };
    for (auto const& [jobs, memory, mostHeld, mostAhead] : cases) {
        SCOPED_TRACE(jobs);
        NotingStages stages;
        stages.readAhead = mostHeld;
        EXPECT_EQ(Pipeline(200, jobs, memory, stages).run(), 200u);
        EXPECT_EQ(stages.mostHeld, mostHeld);
        EXPECT_LE(stages.mostAhead, mostAhead);
        EXPECT_GE(stages.mostAhead, std::min(mostAhead, mostHeld - 1));
        EXPECT_EQ(stages.written.size(), 200u);
        EXPECT_TRUE(std::is_sorted(stages.written.begin(), stages.written.end()));
        EXPECT_EQ(stages.submitted, stages.written);
        EXPECT_EQ(stages.finished, stages.written);
    }
}

TEST(PipelineTest, WritesWhatWasReadBeforeAStop) {
    NotingStages stages;
    stages.last = 50;
    size_t const done = Pipeline(200, 3, SIZE_MAX, stages).run();
    EXPECT_GE(done, 51u);
    EXPECT_LE(done, 51u + 4);
    EXPECT_EQ(stages.written.size(), done);

    // What waits for a slow disk is limited, too.
    NotingStages slow;
    slow.writingTakes = std::chrono::milliseconds(2);
    Pipeline(60, 2, SIZE_MAX, slow).run();
    EXPECT_LE(slow.mostUnwritten, 2u + 1 + 2 + 1);
}
