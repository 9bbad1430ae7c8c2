// quen-reprocess: what it tells of its work as JSON, the timeline of --trace and the --info=json.

#include <algorithm>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "support/Cli.h"

namespace {

using namespace quentest;
using nlohmann::json;
using testing::HasSubstr;
using testing::IsSubsetOf;
using testing::IsSupersetOf;

constexpr double kRounding = 0.01;  // microseconds

struct Span {
    std::string name, category;
    double begin, end;
};

double beginOf(json const& event) {
    return event.at("ts").get<double>();
}

// The spans of each thread, outer ones before those in them.
std::map<int, std::vector<Span>> spansOf(json const& events) {
    std::map<int, std::vector<Span>> spans;
    for (json const& event : events) {
        if (event.at("ph") == "X") {
            double const begin = beginOf(event);
            spans[event.at("tid")].push_back({event.at("name"), event.at("cat"), begin,
                                              begin + event.at("dur").get<double>()});
        }
    }
    for (auto& [thread, all] : spans) {
        std::stable_sort(all.begin(), all.end(), [](Span const& a, Span const& b) {
            return a.begin != b.begin ? a.begin < b.begin : a.end > b.end;
        });
    }
    return spans;
}

// Spans of a thread lie in each other or apart: a viewer can show no others.
void expectNested(std::vector<Span> const& spans) {
    std::vector<Span> open;
    for (Span const& span : spans) {
        EXPECT_LE(span.begin, span.end) << span.name;
        while (!open.empty() && open.back().end <= span.begin + kRounding) {
            open.pop_back();
        }
        if (!open.empty()) {
            EXPECT_LE(span.end, open.back().end + kRounding)
                    << span.name << " leaves " << open.back().name;
        }
        open.push_back(span);
    }
}

// The names of the spans that an event lies in.
std::set<std::string> around(json const& event, std::map<int, std::vector<Span>> const& spans) {
    std::set<std::string> names;
    for (Span const& span : spans.at(event.at("tid"))) {
        if (span.begin <= beginOf(event) + kRounding && beginOf(event) <= span.end + kRounding) {
            names.insert(span.category + " " + span.name);
        }
    }
    return names;
}

// What --info tells of tags: "0xc0030014 currentMode int64[1] 2".
std::multiset<std::string> tagLines(std::string const& text) {
    static std::regex const tag(R"(0x[0-9a-f]{8} \S+ \w+\[\d+\][^\n]*)");
    return {std::sregex_token_iterator(text.begin(), text.end(), tag),
            std::sregex_token_iterator()};
}

// The same of all tags in a document.
void addTagLines(json const& value, std::multiset<std::string>& lines) {
    if (!value.is_object() || !value.contains("tag")) {
        for (json const& part : value) {
            if (part.is_structured()) {
                addTagLines(part, lines);
            }
        }
        return;
    }
    json const& values = value.at("values");
    std::string line = value.at("tag").get<std::string>() + " " +
                       (value.at("name").is_null() ? "?" : value.at("name").get<std::string>()) +
                       " " + value.at("type").get<std::string>() + "[" +
                       std::to_string(values.size()) + "]";
    for (size_t i = 0; i < std::min<size_t>(values.size(), 16); ++i) {
        char text[40];
        std::snprintf(text, sizeof(text), " %.6g", values[i].get<double>());
        line += values[i].is_number_float() ? text : " " + values[i].dump();
    }
    lines.insert(line + (values.size() > 16 ? " ..." : ""));
}

class CliReportTest : public CliTest {
  protected:
    // Five inputs, of which one cannot be read; seven requests.
    void putInputs() const {
        for (char const* const name : {"a.dng", "b.dng", "c.dng"}) {
            put(name, asDng(kBrick, "rggb"));
        }
        ASSERT_EQ(0, run("a.dng -o d.jpg").exitCode);
        put("broken.dng", "no picture");
    }

    json document(std::string const& name) const { return json::parse(get(name)); }
};

}  // namespace

TEST_F(CliReportTest, TheTimelineShowsThreadsRequestsAndTheWorkOnThem) {
    putInputs();
    for (int const jobs : {1, 2}) {
        SCOPED_TRACE(jobs);
        Outcome const outcome =
                run("a.dng broken.dng b.dng c.dng d.jpg -o made --trace t.json "
                    "--jobs " +
                    std::to_string(jobs));
        EXPECT_EQ(1, outcome.exitCode);
        EXPECT_EQ(1, std::count(outcome.err.begin(), outcome.err.end(), '\n')) << outcome.err;
        json const events = document("t.json").at("traceEvents");
        auto const spans = spansOf(events);

        std::map<int, std::string> threads;
        std::map<int, std::map<std::string, json>> ways;  // of requests, by id and point
        std::vector<int> outstanding;
        for (json const& event : events) {
            std::string const phase = event.at("ph");
            if (phase == "M" && event.at("name") == "thread_name") {
                threads[event.at("tid")] = event.at("args").at("name");
            } else if (phase == "s" || phase == "t" || phase == "f") {
                EXPECT_TRUE(ways[event.at("id")].emplace(phase, event).second);
            } else if (phase == "C" && event.at("name") == "outstanding requests") {
                outstanding.push_back(event.at("args").at("requests"));
            } else if (phase == "C") {
                EXPECT_GT(event.at("args").at("bytes"), 1 << 20);
            }
        }
        std::set<std::string> kinds;
        std::set<std::string> names;
        for (auto const& [thread, all] : spans) {
            expectNested(all);
            kinds.insert(threads.at(thread));
            for (Span const& span : all) {
                names.insert(span.category + " " + span.name);
            }
        }
        EXPECT_THAT(kinds, IsSupersetOf({"client", "ISP 1"}));
        if (jobs == 2) {
            EXPECT_THAT(kinds, IsSupersetOf({"reader 1", "writer 1"}));
        }
        EXPECT_THAT(names,
                    IsSupersetOf({"tool read", "tool write", "library create", "library config",
                                  "library convertToISPBuffer", "library uinit", "isp develop",
                                  "isp encode", "isp hold"}));

        EXPECT_EQ(7u, ways.size());
        for (auto const& [id, way] : ways) {
            ASSERT_EQ(3u, way.size()) << id;
            EXPECT_LE(beginOf(way.at("s")), beginOf(way.at("t")));
            EXPECT_LE(beginOf(way.at("t")), beginOf(way.at("f")));
            EXPECT_EQ(way.at("s").at("args"), way.at("f").at("args"));
            EXPECT_EQ("client", threads.at(way.at("s").at("tid")));
            EXPECT_EQ(way.at("t").at("tid"), way.at("f").at("tid"));
            EXPECT_EQ(1u, around(way.at("s"), spans).count("library process"));
            EXPECT_EQ(1u, around(way.at("t"), spans).count("isp ISP request"));
            EXPECT_EQ(1u, around(way.at("f"), spans).count("library processResult"));
        }
        ASSERT_EQ(14u, outstanding.size());
        EXPECT_GE(*std::min_element(outstanding.begin(), outstanding.end()), 0);
        EXPECT_EQ(1, outstanding.front());
    }
}

TEST_F(CliReportTest, TheTimelineIsWholeOrToldToBeMissingAndChangesNoOtherWord) {
    putInputs();
    expectErrors(1, {{"a.dng -o x.jpg --trace /dev/full", "timeline /dev/full cannot be written"}});
    EXPECT_EQ(get("d.jpg"), get("x.jpg"));
    // The library logs its operations for the timeline; the words of its errors alone are shown.
    std::string const failing = "a.dng -o x.jpg --log error --set 0x000d0000=0,0,-5,9";
    Outcome const plain = run(failing);
    Outcome const traced = run(failing + " --trace t.json");
    EXPECT_EQ(std::count(plain.err.begin(), plain.err.end(), '\n'),
              std::count(traced.err.begin(), traced.err.end(), '\n'));
    EXPECT_THAT(get("t.json"), HasSubstr("refused request"));
    EXPECT_THAT(run("a.dng -o x.jpg --log info --trace t.json").err, HasSubstr("process() "));

    // An interrupted run has one as well, of what was done.
    std::string inputs;
    for (int i = 0; i < 200; ++i) {
        inputs += " a.dng b.dng";
    }
    EXPECT_EQ(128 + 15, shell("mkfifo said && { " QUEN_REPROCESS + inputs +
                              " --info=json --trace t.json -o made 2>said >info.txt & } && "
                              "{ read first; kill -TERM $!; cat >err.txt; } <said; wait $!"));
    json const summary = document("info.txt").at("summary");
    size_t written = 0;
    json const trace = document("t.json");
    for (json const& event : trace.at("traceEvents")) {
        written += event.at("name") == "write" ? 1 : 0;
    }
    EXPECT_EQ(summary.at("reprocessed"), written);
    EXPECT_GT(summary.at("not_begun"), 0);
}

TEST_F(CliReportTest, NoFileOfARunTakesThePlaceOfAnother) {
    putInputs();
    put("kept.rec", "kept");
    fs::create_symlink("a.dng", path("link"));
    std::string const capture = get("a.dng");
    std::string const one = "a.dng -o x.jpg ";
    expectErrors(2, {{one + "--record a.dng", "--record: a.dng is an input; name another"},
                     {one + "--record link", "is an input"},
                     {one + "--trace a.dng", "--trace: a.dng is an input"},
                     {one + "--trace ./x.jpg", "is an output"},
                     {"a.dng b.dng -o made --record made/b.jpg", "is an output"},
                     {"a.dng b.dng -o made --trace made", "made is a folder"},
                     {one + "--trace t --record ./t", "./t is the file of --trace"},
                     {one + "--record ''", "--record: the file's name is empty"},
                     {one + "--trace nowhere/t", "nowhere/t cannot be written"},
                     {"a.dng -o x.bmp --record kept.rec", "does not tell what to make"}});
    EXPECT_EQ(capture, get("a.dng"));
    EXPECT_EQ("kept", get("kept.rec"));
    EXPECT_FALSE(fs::exists(path("x.jpg")) || fs::exists(path("made")));
    EXPECT_EQ(0, run("a.dng b.dng -o new/made --trace new/t --record new/r").exitCode);
    EXPECT_TRUE(fs::exists(path("new/t")) && fs::exists(path("new/r")));
}

TEST_F(CliReportTest, InfoSaysTheSameInJsonAsInText) {
    putInputs();
    std::string const options = " --mode 0x2 --set 0x800b000e=7 -o made --info";
    Outcome const text = run("a.dng d.jpg" + options);
    Outcome const both = run("a.dng d.jpg broken.dng" + options + "=json");
    EXPECT_EQ(1, both.exitCode);
    EXPECT_THAT(both.err, HasSubstr("a.dng -> made/a.jpg"));
    json const whole = json::parse(both.out);
    json const& inputs = whole.at("inputs");
    ASSERT_EQ(3u, inputs.size());
    std::multiset<std::string> lines;
    addTagLines(inputs, lines);
    EXPECT_EQ(tagLines(text.out), lines);
    EXPECT_LT(30u, lines.size());

    json const& first = inputs[0];
    EXPECT_EQ("a.dng", first.at("input"));
    EXPECT_EQ("made/a.jpg", first.at("output"));
    EXPECT_EQ(64, first.at("width_px"));
    EXPECT_EQ(fs::file_size(path("made/a.jpg")), first.at("output_bytes"));
    EXPECT_EQ("RAW2YUV", first.at("configurations")[0].at("stage"));
    EXPECT_EQ("YUV2JPEG", first.at("configurations")[1].at("stage"));
    EXPECT_EQ(14, first.at("results")[0].at("sample_bits"));
    json const& facts = first.at("results")[0].at("capture_facts");
    EXPECT_THAT(text.out, HasSubstr("Bayer order " + facts.at("bayer_order").get<std::string>()));
    EXPECT_EQ(9u, facts.at("colour_matrix").size());
    EXPECT_EQ(facts, first.at("client_results")[0].at("three_a_buffer").at("capture_facts"));
    for (json const& leg : first.at("legs")) {
        EXPECT_THAT(text.out, HasSubstr("\n  " + leg.at("name").get<std::string>()));
        EXPECT_GE(leg.at("duration_ms"), 0);
    }
    EXPECT_THAT(inputs[2].at("error").get<std::string>(), HasSubstr("not even all of its header"));
    EXPECT_TRUE(inputs[2].at("requests").empty());
    EXPECT_EQ(2, whole.at("summary").at("reprocessed"));
    EXPECT_EQ(1, whole.at("summary").at("failed"));
    EXPECT_EQ(2, run("a.dng -o x.jpg --info=xml").exitCode);
    EXPECT_EQ(1, run("a.dng -o x.jpg --info=json >/dev/full 2>err.txt #").exitCode);
}
