// quen-reprocess: the timeline of --trace.

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "support/Cli.h"

namespace {

using namespace quentest;
using nlohmann::json;
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
        std::set<std::string> names, onThreads;
        for (auto const& [thread, all] : spans) {
            expectNested(all);
            kinds.insert(threads.at(thread));
            for (Span const& span : all) {
                names.insert(span.category + " " + span.name);
                onThreads.insert(span.name + " on " + threads.at(thread).substr(0, 6));
            }
        }
        EXPECT_THAT(kinds, IsSupersetOf({"client", "ISP 1"}));
        if (jobs == 2) {
            EXPECT_THAT(kinds, IsSupersetOf({"reader 1", "writer 1"}));
            EXPECT_THAT(onThreads, IsSupersetOf({"read on reader", "write on writer"}));
            EXPECT_EQ(0u, onThreads.count("write on reader") + onThreads.count("read on writer"));
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

TEST_F(CliReportTest, AnInterruptedRunHasATimelineOfWhatWasDone) {
    putInputs();
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

TEST_F(CliReportTest, TimesOfTheDocumentAreThoseOfTheTimeline) {
    putInputs();
    ASSERT_EQ(0, run("a.dng d.jpg -o made --jobs 1 --info=json --trace t.json").exitCode);
    std::map<std::string, double> spans;  // sums in ms, by source, input and name
    json const trace = document("t.json");
    for (json const& event : trace.at("traceEvents")) {
        if (event.at("ph") == "X" && event.at("cat") != "library") {
            json const& notes = event.at("args");
            std::string const input = notes.value("frame", notes.value("request", json())).dump();
            spans[event.at("cat").get<std::string>() + input +
                  event.at("name").get<std::string>()] += event.at("dur").get<double>() / 1000;
        }
    }
    json const whole = document("out.txt");
    double all = 0;
    size_t legs = 0;
    for (size_t i = 0; i < 2; ++i) {
        json const& input = whole.at("inputs")[i];
        std::map<std::string, double> told;
        auto const add = [&](std::string const& source, json const& from) {
            for (json const& leg : from) {
                told[source + std::to_string(i + 1) + leg.at("name").get<std::string>()] +=
                        leg.at("duration_ms").get<double>();
            }
        };
        add("tool", input.at("legs"));
        double sum = 0;
        for (auto const& [name, time] : told) {
            sum += time;
        }
        EXPECT_LE(sum, 1000 * input.at("duration_s").get<double>());
        for (json const& result : input.at("results")) {
            add("isp", result.at("legs"));
        }
        for (auto const& [name, time] : told) {
            bool const waits = name.find("queue") != std::string::npos;  // on no thread
            EXPECT_NEAR(time, waits ? time : spans.at(name), 0.005) << name;
        }
        legs += told.size();
        all += input.at("duration_s").get<double>();
    }
    EXPECT_GE(legs, 20u);
    EXPECT_LE(all, whole.at("summary").at("duration_s").get<double>());
}
