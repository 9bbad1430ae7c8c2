// Recorded sessions, as quen-replay plays them: those that this folder keeps, new ones, changed and
// broken ones.

#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <google/protobuf/io/coded_stream.h>

#include "Comparison.h"
#include "CrashReport.h"
#include "Recording.h"
#include "support/Cli.h"

namespace {

using namespace quentest;
using quen::recording::Crossing;
using quen::replay::readRecording;
using quen::replay::Recording;
using testing::HasSubstr;

constexpr char kHeaderless[] = " --size 64x48 --bayer rggb --wb 2,1,1.5 --black 64 ";

std::string kept(std::string const& name) {
    return std::string(QUEN_RECORDINGS) + "/" + name + ".rec";
}

std::vector<std::string> keptNames() {
    std::vector<std::string> names;
    for (auto const& entry : fs::directory_iterator(QUEN_RECORDINGS)) {
        if (entry.path().extension() == ".rec") {
            names.push_back(entry.path().stem());
        }
    }
    return names;
}

/** A recording's bytes, each crossing behind its length. */
std::string bytesOf(std::vector<Crossing> const& crossings) {
    std::string bytes;
    for (Crossing const& crossing : crossings) {
        uint8_t prefix[10];
        auto const* const end = google::protobuf::io::CodedOutputStream::WriteVarint32ToArray(
                static_cast<uint32_t>(crossing.ByteSizeLong()), prefix);
        bytes.append(reinterpret_cast<char const*>(prefix), static_cast<size_t>(end - prefix));
        crossing.AppendToString(&bytes);
    }
    return bytes;
}

/** All crossings of a file, the header and the end included. */
std::vector<Crossing> wholeOf(std::string const& path) {
    Recording const recording = readRecording(path);
    std::vector<Crossing> crossings(1);
    crossings[0].mutable_header()->set_version(1);
    crossings[0].mutable_header()->set_pictures(
            quen::recording::Header::Pictures(recording.holdsPictures));
    crossings.insert(crossings.end(), recording.crossings.begin(), recording.crossings.end());
    crossings.emplace_back().mutable_end();
    return crossings;
}

class ReplayTest : public CliTest {
  protected:
    Outcome replay(std::string const& arguments) const {
        int const exitCode = shell(QUEN_REPLAY " " + arguments + " >out.txt 2>err.txt");
        return {exitCode, get("out.txt"), get("err.txt")};
    }

    void expectEqual(std::string const& file) const {
        Outcome const outcome = replay(file);
        EXPECT_EQ(0, outcome.exitCode) << file << "\n" << outcome.out << outcome.err;
        EXPECT_THAT(outcome.out, HasSubstr(" 0 differences")) << file;
    }

    void putMosaic(std::string const& name) const {
        put(name, quentest::bytesOf(mosaic(kBrick, "rggb", 10, 64)));
    }
};

/** Finds the first crossing that a test is about and changes it. */
struct Change {
    char const* recording;
    std::function<bool(Crossing&)> apply;  // whether it was the one
    char const* says;                      // in the first line that is printed
};

bool changeTag(std::string& buffer, uint32_t tag, char value) {
    std::string const id(reinterpret_cast<char const*>(&tag), sizeof(tag));
    size_t const at = buffer.find(id);
    if (at != std::string::npos) {
        buffer[at + 16] = value;
    }
    return at != std::string::npos;
}

}  // namespace

TEST_F(ReplayTest, LibrarySaysWhatItSaidInTheKeptRecordings) {
    EXPECT_GE(keptNames().size(), 6u);
    for (std::string const& name : keptNames()) {
        expectEqual(kept(name));
    }
}

TEST_F(ReplayTest, NewRecordingsAreEqualTooWholeOrNot) {
    ASSERT_EQ(0, shell(QUEN_MAKE_RECORDINGS " ."));
    for (std::string const& name : names()) {
        expectEqual(name);
    }
    std::string inputs;
    for (int i = 0; i < 4; ++i) {
        inputs += " f" + std::to_string(i) + ".raw";
        putMosaic("f" + std::to_string(i) + ".raw");
    }
    for (std::string const options : {"", " --record-pictures"}) {
        Outcome const outcome =
                run(inputs + " -o out/ --jobs 3 --record batch.rec" + kHeaderless + options);
        EXPECT_EQ(0, outcome.exitCode) << outcome.err;
        expectEqual("batch.rec");
        EXPECT_EQ(8u, readRecording(path("batch.rec")).crossings.back().session());
    }
}

TEST_F(ReplayTest, ChangeIsToldByTagNameAndField) {
    Change const changes[] = {
            {"modes",
             [](Crossing& crossing) {
                 return crossing.isp_call().requests_size() > 0 &&
                        changeTag(*crossing.mutable_isp_call()
                                           ->mutable_requests(0)
                                           ->mutable_settings(),
                                  0x800b000e, 5);
             },
             "request[0].settings.tuningMode (0x800b000e): recorded int32[1] 5893, now int32[1] "
             "6003"},
            {"modes",
             [](Crossing& crossing) {
                 return crossing.isp_call().has_session_settings() &&
                        changeTag(*crossing.mutable_isp_call()->mutable_session_settings(),
                                  0xc0000005, 9);
             },
             "library to ISP: configureISPDevice: sessionSettings.ispCameraId (0xc0000005): "
             "recorded int32[1] 9, now int32[1] 2"},
            {"reconfigurations",
             [](Crossing& crossing) {
                 if (crossing.isp_call().output_streams_size() == 0) {
                     return false;
                 }
                 crossing.mutable_isp_call()->mutable_output_streams(0)->set_stride(0, 33);
                 return true;
             },
             "outputStream[0].stride[0]: recorded 33, now 32"},
            {"two_at_once",
             [](Crossing& crossing) {
                 if (crossing.client_return().result() == 0) {
                     return false;
                 }
                 crossing.mutable_client_return()->set_result(301);
                 return true;
             },
             "library returns to the client: result: recorded 301, now 300"},
            {"two_at_once",
             [](Crossing& crossing) {
                 if (!crossing.client_return().has_jpeg()) {
                     return false;
                 }
                 crossing.mutable_client_return()->mutable_jpeg()->set_hash(1);
                 return true;
             },
             "jpeg.hash: recorded 0000000000000001, now "},
            {"errors",
             [](Crossing& crossing) {
                 if (!crossing.has_notify_call()) {
                     return false;
                 }
                 crossing.mutable_notify_call()->set_status(3);
                 return true;
             },
             "notifyResultMetadata: status: recorded 3 REQUEST_ERROR, now 0 OK"},
            {"tuning",
             [](Crossing& crossing) {
                 // The input's first byte: what the ISP gets for it is another picture.
                 if (crossing.client_call().input().format() != 0x23) {
                     return false;
                 }
                 std::string& head = *crossing.mutable_client_call()
                                              ->mutable_input()
                                              ->mutable_buffer()
                                              ->mutable_content()
                                              ->mutable_head();
                 head[0] = static_cast<char>(head[0] + 1);
                 return true;
             },
             "request[0].input[0].buffer.content.hash: recorded "},
            {"errors",
             [](Crossing& crossing) {
                 if (!crossing.has_notify_call()) {
                     return false;
                 }
                 crossing.mutable_notify_call()->set_kind(quen::recording::NotifyCall::END);
                 return true;
             },
             "recorded \"library to client: notifyRequestResult\", now \"library to client: "
             "notifyResultMetadata\""},
    };
    for (Change const& change : changes) {
        std::vector<Crossing> crossings = wholeOf(kept(change.recording));
        auto const changed = std::find_if(crossings.begin(), crossings.end(), change.apply);
        ASSERT_NE(crossings.end(), changed) << change.says;
        put("changed.rec", bytesOf(crossings));
        Outcome const outcome = replay("changed.rec");
        EXPECT_EQ(1, outcome.exitCode) << change.says;
        EXPECT_THAT(outcome.out.substr(0, outcome.out.find('\n')), HasSubstr(change.says));
    }
}

TEST_F(ReplayTest, WhatDoesNotHappenIsWaitedForAndTold) {
    // The result that a call waited for is taken out: the call stands for its time-out.
    std::vector<Crossing> crossings = wholeOf(kept("two_at_once"));
    auto const waited = std::find_if(crossings.begin(), crossings.end(), [](Crossing const& one) {
        return one.client_return().has_jpeg();
    });
    auto result = waited;
    while (!result->has_result_call()) {
        --result;
    }
    uint64_t const call = result->call();
    crossings.erase(std::remove_if(crossings.begin(), crossings.end(),
                                   [call](Crossing const& one) { return one.call() == call; }),
                    crossings.end());
    put("shorter.rec", bytesOf(crossings));
    Outcome const outcome = replay("shorter.rec --patience 1");
    EXPECT_EQ(1, outcome.exitCode);
    EXPECT_THAT(outcome.out, HasSubstr("what comes next in the recording does not happen: no. "));
    EXPECT_THAT(outcome.out, HasSubstr("library returns to the client"));
}

TEST_F(ReplayTest, RefusedConfigurationEndsBothProcesses) {
    std::vector<Crossing> crossings = wholeOf(kept("errors"));
    auto const answer = std::find_if(crossings.begin(), crossings.end(), [&](Crossing const& one) {
        return one.has_isp_return() && !one.isp_return().has_answer();
    });
    answer->mutable_isp_return()->set_status(5);
    crossings.erase(answer + 1, crossings.end());
    put("refused.rec", bytesOf(crossings));
    Outcome const outcome = replay("refused.rec");
    EXPECT_EQ(0, outcome.exitCode);
    EXPECT_THAT(outcome.out, HasSubstr("The library ends the process here"));
}

TEST_F(ReplayTest, CutRecordingIsReadToItsLastWholeCrossing) {
    std::vector<Crossing> const crossings = wholeOf(kept("lost_signal"));
    std::string const whole = get(kept("lost_signal"));
    std::vector<size_t> ends;  // of each crossing but the header
    size_t end = bytesOf({crossings[0]}).size();
    for (size_t i = 1; i + 1 < crossings.size(); ++i) {
        ends.push_back(end += bytesOf({crossings[i]}).size());
    }
    put("cut.rec", whole);
    for (size_t size = whole.size() - 1; size >= ends[0]; --size) {
        fs::resize_file(path("cut.rec"), size);
        Recording const recording = readRecording(path("cut.rec"));
        auto const fitting =
                std::count_if(ends.begin(), ends.end(), [size](size_t at) { return at <= size; });
        ASSERT_EQ(static_cast<size_t>(fitting), recording.crossings.size()) << size;
        ASSERT_TRUE(recording.isCut) << size;
    }
}

TEST_F(ReplayTest, NothingDiffersWhereverARecordingIsCut) {
    for (char const* const name : {"lost_signal", "raw_to_jpeg"}) {
        std::vector<Crossing> crossings = wholeOf(kept(name));
        for (crossings.pop_back(); crossings.size() > 1; crossings.pop_back()) {
            put("cut.rec", bytesOf(crossings));
            expectEqual("cut.rec");
            EXPECT_THAT(get("out.txt"), HasSubstr("is cut off"));
        }
    }
}

TEST_F(ReplayTest, ChangedBytesCrashNothing) {
    std::string const whole = get(kept("lost_signal"));
    for (size_t at = 19; at < whole.size(); at += 56) {  // metadata among them
        put("changed.rec", std::string(whole).replace(at, 1, "\xff"));
        Outcome const outcome = replay("changed.rec --patience 1");
        EXPECT_TRUE(outcome.exitCode <= 2 && outcome.err.find("crashed") == std::string::npos)
                << at;
    }
}

TEST_F(ReplayTest, ACrashLosesNoDifferenceThatWasFound) {
    auto const crash = [] {
        ::dup2(STDERR_FILENO, STDOUT_FILENO);
        quen::replay::reportCrashes(1, 1);
        quen::replay::Comparison comparison(false);
        comparison.add(4, Crossing(), "found");
        std::abort();
    };
    EXPECT_EXIT(crash(), testing::ExitedWithCode(1), "no. 5.*: found\nquen-replay: .* signal 6");
}

TEST_F(ReplayTest, FullDiskEndsTheRecordingAndNothingElse) {
    // The largest file that is allowed has room for the 3A buffers, which are files too.
    std::string const options = " --size 640x480 --bayer rggb --jobs 1";
    std::vector<uint16_t> samples(640 * 480);
    for (size_t i = 0; i < samples.size(); ++i) {
        samples[i] = static_cast<uint16_t>(i * 7 % 1000);
    }
    std::string inputs;
    for (char const* const name : {" a.raw", " b.raw", " c.raw"}) {
        put(name + 1, quentest::bytesOf(samples));
        inputs += name;
    }
    ASSERT_EQ(0, run(inputs + " -o plain/" + options).exitCode);
    ASSERT_EQ(0, shell("(ulimit -f 4400; " QUEN_REPROCESS + inputs +
                       " -o told/ --record a.rec --record-pictures" + options +
                       " >out.txt 2>err.txt; echo $? >code.txt)"));
    EXPECT_EQ("1\n", get("code.txt"));
    std::string const recorded = get("err.txt");
    EXPECT_THAT(recorded, HasSubstr("the recording a.rec is not whole: its file took "));
    for (char const* const name : {"/a.jpg", "/b.jpg", "/c.jpg"}) {
        EXPECT_TRUE(get("plain" + std::string(name)) == get("told" + std::string(name))) << name;
    }
    Outcome const outcome = replay("a.rec");
    EXPECT_EQ(0, outcome.exitCode) << outcome.out << outcome.err;
    size_t const told = outcome.out.find("after its ") + 10;
    std::string const taken = outcome.out.substr(told, outcome.out.find(' ', told) - told);
    EXPECT_THAT(recorded, HasSubstr("its file took " + taken + " crossings"));
}
