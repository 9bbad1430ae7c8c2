#include "trace/TraceFile.h"

#include <unistd.h>

#include <set>

#include <nlohmann/json.hpp>

namespace quen::reprocess {
namespace {

using Json = nlohmann::ordered_json;
using Kind = TraceEvent::Kind;

// By TraceSource.
constexpr char const* kCategories[] = {"isp", "library", "tool"};

// By TraceEvent::Kind; a span is a "complete event", its end is in it.
constexpr char const* kPhases[] = {"X", "i", "s", "t", "f", "C"};

double microseconds(Trace::Clock::duration duration) {
    return std::chrono::duration<double, std::micro>(duration).count();
}

bool isFlow(Kind kind) {
    return kind == Kind::FlowStart || kind == Kind::FlowStep || kind == Kind::FlowEnd;
}

/** What all events of a track have. */
Json eventOf(char const* phase, char const* name, uint16_t track) {
    return {{"ph", phase}, {"name", name}, {"pid", ::getpid()}, {"tid", track + 1}};
}

/** An event that names or sorts a track, or the process. */
Json metadataOf(char const* name, uint16_t track, Json arguments) {
    Json event = eventOf("M", name, track);
    event["args"] = std::move(arguments);
    return event;
}

Json notesOf(TraceEvent const& event) {
    Json notes = Json::object();
    for (TraceNote const& note : event.notes) {
        if (note.text != nullptr) {
            notes[note.name] = note.text;
        } else if (note.name != nullptr) {
            notes[note.name] = note.number;
        }
    }
    return notes;
}

Json jsonOf(TraceEvent const& event, Trace::Clock::time_point begin) {
    Json json = eventOf(kPhases[static_cast<size_t>(event.kind)], event.name, event.track);
    json["ts"] = microseconds(event.time - begin);
    json["args"] = notesOf(event);
    if (event.kind == Kind::Counter) {
        return json;
    }
    json["cat"] = kCategories[static_cast<size_t>(event.source)];
    if (event.kind == Kind::Span) {
        json["dur"] = microseconds(event.duration);
    } else if (event.kind == Kind::Mark) {
        json["s"] = "t";  // of its thread
    } else {
        json["cat"] = "request";
        json["id"] = event.value;
        json["bp"] = "e";  // binds to the span that it lies in
    }
    return json;
}

/** The ids of flows that have all their points: not those of requests that had no result. */
std::set<int64_t> wholeFlows(std::deque<TraceEvent> const& events) {
    std::set<int64_t> whole;
    for (TraceEvent const& event : events) {
        if (event.kind == Kind::FlowEnd) {
            whole.insert(event.value);
        }
    }
    return whole;
}

void append(std::string& text, Json const& event) {
    text += text.back() == '[' ? "\n" : ",\n";
    // The names of files may be of any bytes.
    text += event.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

std::string traceText(Trace::Contents const& contents) {
    // Event by event: a document of all takes many times the memory.
    std::string text = "{\"traceEvents\":[";
    append(text, metadataOf("process_name", 0, {{"name", "quen-reprocess"}}));
    for (size_t i = 0; i < contents.tracks.size(); ++i) {
        Tracks::Track const& track = contents.tracks[i];
        auto const number = static_cast<uint16_t>(i);
        append(text, metadataOf("thread_name", number, {{"name", trackName(track)}}));
        append(text,
               metadataOf("thread_sort_index", number,
                          {{"sort_index", 100 * static_cast<int>(track.kind) + track.number}}));
    }
    std::set<int64_t> const whole = wholeFlows(contents.events);
    for (TraceEvent const& event : contents.events) {
        if (!isFlow(event.kind) || whole.count(event.value) != 0) {
            append(text, jsonOf(event, contents.begin));
        }
    }
    Json const rest = {{"events_left_out", contents.leftOut}};
    return text + "\n],\n\"displayTimeUnit\":\"ms\",\"otherData\":" + rest.dump() + "}\n";
}

}  // namespace quen::reprocess
