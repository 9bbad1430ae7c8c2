#!/usr/bin/env python3
"""Draws a timeline of quen-reprocess --trace as a picture: threads, spans in each other, the ways of
requests, counters. For documents; Perfetto shows more. Needs Debian's python3-matplotlib.
Usage: /usr/bin/python3 scripts/draw_trace.py TRACE.json PICTURE.png [FROM_MS TO_MS]
"""

import json
import sys

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt

COLOURS = {"tool": "#b7c7de", "library": "#f0a35e", "isp": "#7fb685"}
COUNTERS = {"outstanding requests": ("requests", 1, "#8c4a8c"),
            "resident memory": ("bytes", 1e-6, "#777777")}


def milliseconds(event):
    return event["ts"] / 1000


def nested(spans):
    """Spans with their depth: outer ones first."""
    open_ends = []
    for span in sorted(spans, key=lambda s: (s["ts"], -s["dur"])):
        while open_ends and open_ends[-1] <= span["ts"] + 0.01:
            open_ends.pop()
        yield span, len(open_ends)
        open_ends.append(span["ts"] + span["dur"])


def draw_thread(axis, spans, top, first, last, lines):
    """Draws a thread's spans below a line. Returns where the next thread may begin."""
    deepest = 0
    for span, depth in nested(spans):
        begin, length = milliseconds(span), span["dur"] / 1000
        axis.broken_barh([(begin, length)], (top - depth - 1, 0.92), linewidth=0.3, edgecolor="white",
                         facecolor=COLOURS[span["cat"]])
        shown = min(begin + length, last) - max(begin, first)
        letters = int(shown / (last - first) * lines)
        if letters >= 4:
            text = axis.text(max(begin, first) + shown / 2, top - depth - 0.56, span["name"][:letters],
                             ha="center", va="center", fontsize=6)
            text.set_clip_on(True)
        deepest = max(deepest, depth)
    return top - deepest - 1


def depth_at(spans, time):
    return max([d for s, d in nested(spans) if s["ts"] - 0.01 <= time <= s["ts"] + s["dur"] + 0.01],
               default=0)


def draw_threads(axis, events, first, last):
    names = {e["tid"]: e["args"]["name"] for e in events if e["name"] == "thread_name"}
    order = {e["tid"]: e["args"]["sort_index"] for e in events if e["name"] == "thread_sort_index"}
    spans = {tid: [e for e in events if e["ph"] == "X" and e["tid"] == tid] for tid in names}
    top, tops, ticks = 0, {}, []
    for tid in sorted((t for t in names if spans[t]), key=order.get):
        tops[tid] = top
        bottom = draw_thread(axis, spans[tid], top, first, last, 200)
        ticks.append(((top + bottom) / 2, names[tid]))
        axis.axhline(bottom - 0.15, color="#cccccc", linewidth=0.5)
        top = bottom - 0.3
    points = {}
    for event in events:
        if event["ph"] in "stf":
            tid = event["tid"]
            height = tops[tid] - depth_at(spans[tid], event["ts"]) - 0.5
            points.setdefault(event["id"], []).append((milliseconds(event), height))
    for way in points.values():
        for begin, end in zip(way, way[1:]):
            axis.annotate("", end, begin, annotation_clip=True,
                          arrowprops={"arrowstyle": "->", "color": "#b03030", "linewidth": 0.7,
                                      "connectionstyle": "arc3,rad=0.12"})
    axis.set_yticks([y for y, _ in ticks], [name for _, name in ticks], fontsize=7)
    axis.set_ylim(top, 0.3)


def draw_counter(axis, events, name):
    unit, scale, colour = COUNTERS[name]
    values = [(milliseconds(e), e["args"][unit] * scale) for e in events
              if e["ph"] == "C" and e["name"] == name]
    axis.fill_between([t for t, _ in values], [v for _, v in values], step="post", color=colour,
                      alpha=0.5, linewidth=0)
    axis.set_ylabel(name + (", MB" if scale != 1 else ""), fontsize=7, rotation=0, ha="right",
                    va="center")
    axis.tick_params(labelsize=6)
    axis.set_ylim(0)


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        events = json.load(file)["traceEvents"]
    ends = [e["ts"] + e.get("dur", 0) for e in events if "ts" in e]
    first, last = (float(a) for a in sys.argv[3:5]) if len(sys.argv) > 3 else (0, max(ends) / 1000)
    figure, axes = plt.subplots(3, 1, sharex=True, figsize=(11, 5.2),
                                gridspec_kw={"height_ratios": [12, 1, 1], "hspace": 0.08})
    draw_threads(axes[0], events, first, last)
    for axis, name in zip(axes[1:], COUNTERS):
        draw_counter(axis, events, name)
    axes[0].set_xlim(first, last)
    axes[0].legend([plt.Rectangle((0, 0), 1, 1, color=c) for c in COLOURS.values()],
                   ["command line", "library, from its log", "software ISP"], fontsize=7, ncol=3,
                   loc="lower right", bbox_to_anchor=(1, 1), frameon=False)
    axes[-1].set_xlabel("milliseconds", fontsize=7)
    figure.savefig(sys.argv[2], dpi=120, bbox_inches="tight", pil_kwargs={"optimize": True})


main()
