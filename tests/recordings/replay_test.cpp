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
            {"reconfigurations",
             [](Crossing& crossing) {
                 if (crossing.isp_call().output_streams_size() == 0) {
                     return false;
                 }
                 crossing.mutable_isp_call()->mutable_output_streams(0)->add_stride(7);
                 return true;
             },
             "outputStream[0].stride[3]: recorded 7, now absent"},
            {"reconfigurations",
             [](Crossing& crossing) {
                 if (crossing.isp_call().output_streams_size() == 0) {
                     return false;
                 }
                 crossing.mutable_isp_call()->mutable_output_streams(0)->clear_stride();
                 return true;
             },
             "outputStream[0].stride[0]: recorded absent, now 32"},
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
            {"modes",
             [](Crossing& crossing) {
                 if (crossing.isp_call().requests_size() == 0) {
                     return false;
                 }
                 crossing.mutable_isp_call()
                         ->mutable_requests(0)
                         ->mutable_outputs(0)
                         ->clear_tuning();
                 return true;
             },
             "3A buffers that the ISP was not given: recorded none, now 1"},
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

TEST_F(ReplayTest, NoMoreDifferencesAreToldThanAskedFor) {
    std::vector<Crossing> crossings = wholeOf(kept("lost_signal"));
    auto& stream = *crossings[6].mutable_isp_call()->mutable_output_streams(0);
    stream.set_stride(0, 1);
    stream.set_width(2);
    stream.set_height(3);
    put("changed.rec", bytesOf(crossings));
    std::string const all = replay("changed.rec").out;
    auto const count = static_cast<size_t>(std::count(all.begin(), all.end(), '\n')) - 1;
    ASSERT_GE(count, 3u);
    EXPECT_THAT(all, HasSubstr("20 crossings, " + std::to_string(count) + " differences\n"));
    EXPECT_EQ(replay("changed.rec --differences " + std::to_string(count)).out, all);
    std::string const first = all.substr(0, all.find('\n', all.find('\n') + 1) + 1);
    EXPECT_EQ(replay("changed.rec --differences 2").out,
              first + "and " + std::to_string(count - 2) + " more\n" +
                      all.substr(all.rfind("20 crossings")));
}

// What no library can have been asked or have answered; "lost_signal" has one request.
TEST_F(ReplayTest, UnsoundRecordingIsRefusedWithItsPlace) {
    using Crossings = std::vector<Crossing>;
    auto const input = [](Crossings& all) {
        return all[9].mutable_client_call()->mutable_input()->mutable_buffer();
    };
    struct {
        std::function<void(Crossings&)> change;
        char const* says;
    } const cases[] = {
            {[](Crossings& all) { all[5].mutable_header(); },
             "no. 5, something that this program "
             "does not know: another recording "
             "begins"},
            {[](Crossings& all) { all[5].clear_isp_return(); },
             "no. 5, something that this program does not know: is of no kind that"},
            {[](Crossings& all) { all.erase(all.begin() + 2); },
             "no. 2, client: create: comes on a thread that is inside call 1 of the library"},
            {[](Crossings& all) { all[4].set_thread(2); },
             "no. 4, library to ISP: openISPDevice: has no call of the library before it on its"},
            {[](Crossings& all) { all[6].mutable_isp_call()->set_has_callback(false); },
             "no. 11, ISP to library: processResult: there is no receiver for this result"},
            {[](Crossings& all) {
                 Crossings const twice(all.begin() + 1, all.begin() + 3);
                 all.insert(all.begin() + 3, twice.begin(), twice.end());
             },
             "no. 3, client: constructs: its device object is there already"},
            {[](Crossings& all) { all.erase(all.begin() + 1, all.begin() + 3); },
             "no. 1, client: create: its device object was not constructed"},
            {[](Crossings& all) {
                 all[19].set_thread(2);
                 std::swap(all[18], all[19]);
             },
             "no. 18, client: destructs: its device object is inside another call"},
            {[](Crossings& all) { all[5].set_call(99); },
             "no. 5, ISP returns: answers no call that is open on its thread"},
            {[](Crossings& all) { all[5].set_session(2); }, "no. 5, ISP returns: answers no call"},
            {[](Crossings& all) { all[5].mutable_notify_return(); },
             "no. 5, client returns: answers no call"},
            {[&](Crossings& all) { input(all)->mutable_content()->set_size(1153); },
             "no. 9, client: process: its input: 1153 bytes of content are more than its 1152"},
            {[&](Crossings& all) { input(all)->mutable_content()->set_head_size(1153); },
             "its input: 1153 bytes at its begin and 0 at its end are more than its 1152 bytes"},
            {[&](Crossings& all) { input(all)->mutable_content()->set_tail("twelve bytes"); },
             "its input: 1152 bytes at its begin and 12 at its end are more than its 1152 bytes"},
            {[&](Crossings& all) { input(all)->mutable_content()->mutable_head()->pop_back(); },
             "its input: it holds 1151 bytes of 1152 bytes"},
            {[](Crossings& all) {
                 auto& output = *all[11].mutable_result_call()->mutable_outputs(0);
                 output.mutable_picture()->set_size((1u << 30) + 1);
             },
             "processResult: its output 0: 1073741825 bytes of content are more than a buffer has"},
            {[](Crossings& all) {
                 auto& output = *all[11].mutable_result_call()->mutable_outputs(0);
                 output.mutable_tuning()->set_head_size(1);
             },
             "processResult: its output 0: 1 bytes at its begin and 0 at its end are more than"},
            {[&](Crossings& all) { input(all)->set_descriptors(1025); },
             "its input: 1025 descriptors and 0 integers are more than a handle has"},
            {[&](Crossings& all) { input(all)->set_integers(1025); },
             "its input: 1 descriptors and 1025 integers are more than a handle has"},
            {[&](Crossings& all) {
                 auto& graphic = *input(all)->mutable_graphic();
                 graphic.set_width(1 << 14);
                 graphic.set_height(1 << 14);
                 graphic.set_layers(2);
             },
             "its input: 16384 x 16384 pixels in 2 layers are more than a picture has"},
            {[](Crossings& all) {
                 auto& output = *all[9].mutable_client_call()->mutable_outputs(0);
                 output.mutable_buffer()->mutable_graphic()->set_allocation_size((1u << 30) + 1);
             },
             "its output 0: its 1073741825 bytes are more than a buffer has"},
            {[](Crossings& all) { all[3].mutable_client_call()->set_metadata("short"); },
             "no. 3, client: create: its metadata of 5 bytes is no sound camera_metadata"},
            {[](Crossings& all) { all[14].mutable_client_return()->set_metadata("short"); },
             "no. 14, library returns to the client: its metadata of 5 bytes is no sound"},
            {[](Crossings& all) {
                 Crossings const object(all.begin() + 1, all.begin() + 3);
                 for (uint32_t i = 2; i <= 1025; ++i) {
                     for (Crossing crossing : object) {
                         crossing.set_thread(i);
                         crossing.set_session(i);
                         all.insert(all.end() - 1, crossing);
                     }
                 }
             },
             "client: constructs: there are too many threads"},
    };
    for (auto const& c : cases) {
        std::vector<Crossing> crossings = wholeOf(kept("lost_signal"));
        c.change(crossings);
        put("unsound.rec", bytesOf(crossings));
        Outcome const outcome = replay("unsound.rec --patience 1");
        EXPECT_EQ(2, outcome.exitCode) << c.says;
        EXPECT_THAT(outcome.err, HasSubstr(c.says));
        EXPECT_THAT(outcome.err, HasSubstr("unsound.rec: cannot be played: no. "));
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

    crossings = wholeOf(kept("lost_signal"));
    crossings.erase(crossings.begin() + 16, crossings.end() - 1);  // from within the destroy on
    put("shorter.rec", bytesOf(crossings));
    EXPECT_THAT(replay("shorter.rec").out, HasSubstr("goes on where the recording has ended\n"));
}

TEST_F(ReplayTest, AnAnswerThatEndsTheProcessEndsTheReplayToo) {
    for (bool const opens : {false, true}) {
        for (bool const isLast : {false, true}) {
            std::vector<Crossing> crossings = wholeOf(kept("errors"));
            auto const answer =
                    std::find_if(crossings.begin(), crossings.end(), [&](Crossing const& one) {
                        return one.has_isp_return() && one.isp_return().has_answer() == opens;
                    });
            opens ? answer->mutable_isp_return()->set_has_device(false)
                  : answer->mutable_isp_return()->set_status(5);
            if (isLast) {
                crossings.erase(answer + 1, crossings.end());
            }
            put("refused.rec", bytesOf(crossings));
            Outcome const outcome = replay("refused.rec");
            EXPECT_EQ(isLast ? 0 : 1, outcome.exitCode);
            EXPECT_THAT(outcome.out,
                        HasSubstr(isLast ? "The library ends the process here, as it did when"
                                         : "the library ends the process here, which went on"));
        }
    }
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
