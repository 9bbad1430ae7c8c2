#!/usr/bin/env python3
"""Writes develop, refine, resample: what the software ISP should give; properties:
how gralloc4 should encode the properties of a buffer; places: where samples lie in one.

Nothing here comes from the platform. Each value is computed in plain Python, one sample after the other, from
what the headers of platform/host/isp say, the published filters (Malvar, He, Cutler 2004 for the
demosaic; areas and cubics for scaling), sRGB, full-range BT.601 and Android's form of
a property (little-endian; counts and enumerations of 64 bits).

Usage: tests/host/golden/write.py
"""
import json
import math
import pathlib
import struct

HERE = pathlib.Path(__file__).parent
CODE_WHITE = 2728  # of companded samples
ORDERS = ["RGGB", "GRBG", "GBRG", "BGGR"]
NV12, NV21, PLANAR = range(3)
PACKED10, WORDS16, RGB48 = range(3)


def half_up(value):
    return math.floor(value + 0.5)


def clamp(value, low, high):
    return max(low, min(high, value))


def hashed(x, y):
    """Looks like noise, and is the same wherever this runs."""
    value = (x * 7919 + y * 104729 + x * y * 31) & 0xFFFFFFFF
    return value ^ value >> 7


# --- development ---


def colour_at(order, x, y):
    """0 R, 1 Gr, 2 Gb, 3 B; greens are told apart by their row."""
    row = ORDERS[order][y % 2 * 2 : y % 2 * 2 + 2]
    return {"R": 0, "B": 3}.get(row[x % 2], 1 if "R" in row else 2)


def companded(case, colour, sample):
    rescale = ((1 << case["bits"]) - 1) / ((1 << case["levelBits"]) - 1)
    black, white = case["black"][colour] * rescale, case["white"] * rescale
    gain = case["gains"][colour] / min(case["gains"]) * case["exposure"]
    light = clamp((min(sample, (1 << case["bits"]) - 1) - black) / (white - black) * gain, 0, 1)
    return half_up(CODE_WHITE * math.sqrt(light))


def bayer_codes(case, width, height):
    def raw(x, y):
        return companded(case, colour_at(case["order"], x, y), case["base"] + hashed(x, y) % case["range"])

    codes = [[raw(x, y) for x in range(width)] for y in range(height)]

    def at(x, y):
        return codes[mirrored(y, height)][mirrored(x, width)]

    return at


def mirrored(position, size):
    return abs(position) if position < size else 2 * size - 2 - position


def demosaiced(case, at, x, y):
    """Red, green and blue codes of a pixel; each of the two parts of a sum is rounded."""
    colour = colour_at(case["order"], x, y)
    here = at(x, y)
    beside = at(x - 1, y) + at(x + 1, y)
    above = at(x, y - 1) + at(x, y + 1)
    corners = sum(at(x + i, y + j) for i in (-1, 1) for j in (-1, 1))
    far_row = at(x - 2, y) + at(x + 2, y)
    far_column = at(x, y - 2) + at(x, y + 2)
    if colour in (0, 3):
        curvature = 4 * here - far_row - far_column
        green = half_up((2 * (beside + above) + curvature) / 8)
        other = half_up(corners / 4) + half_up(3 * curvature / 16)
        return (here, green, other) if colour == 0 else (other, green, here)
    in_row = half_up(beside / 2) + half_up((10 * here - 2 * corners - 2 * far_row + far_column) / 16)
    in_column = half_up(above / 2) + half_up((10 * here - 2 * corners - 2 * far_column + far_row) / 16)
    return (in_row, here, in_column) if colour == 1 else (in_column, here, in_row)


def tone(light):
    value = 12.92 * light if light <= 0.0031308 else 1.055 * light ** (1 / 2.4) - 0.055
    return half_up(255 * clamp(value, 0, 1))


def rendered(case, codes):
    light = [(clamp(code, 0, CODE_WHITE) / CODE_WHITE) ** 2 for code in codes]
    if case["matrix"] == IDENTITY:
        return [tone(value) for value in light]
    rows = [case["matrix"][i : i + 3] for i in (0, 3, 6)]
    mixed = [sum(m * value for m, value in zip(row, light)) for row in rows]
    return [tone(clamp(half_up(8191 * value), 0, 8191) / 8191) for value in mixed]  # 13 bits


def refinement(case):
    """Thresholds for luma and chroma, sharpening: three sigmas at mid grey, on the slope of sRGB there."""
    sigma = 255 * 1.195 * case["exposure"]
    sigma *= math.sqrt(case["shot"] * 0.18 / case["exposure"] + case["read"])
    spread = max(case["gains"]) / min(case["gains"])
    return [
        min(half_up(3 * sigma * case["denoise"]), 30),
        min(half_up(3 * sigma * spread * case["denoise"]), 30),
        half_up(16 * min(case["sharpening"], 1)),
    ]


def refined(rows, threshold, sharpening):
    if threshold == 0 and sharpening == 0:
        return rows
    height, width = len(rows), len(rows[0])

    def sample(x, y):
        here = rows[y][x]
        near = far = 0
        for j in (-1, 0, 1):
            for i in (-1, 0, 1):
                step = rows[clamp(y + j, 0, height - 1)][clamp(x + i, 0, width - 1)] - here
                if abs(step) <= threshold:
                    near += step
                else:
                    far += step
        # The mean of nine as 28 of 256.
        return clamp(here + half_up((28 * near - sharpening * far) / 256), 0, 255)

    return [[sample(x, y) for x in range(width)] for y in range(height)]


def to_yuv(pixels):
    """Rows of RGB as planes of full-range BT.601 with the eight-bit weights of libyuv."""
    height, width = len(pixels), len(pixels[0])
    luma = [[(77 * r + 150 * g + 29 * b + 128) // 256 for r, g, b in row] for row in pixels]

    def chroma(x, y, weights):
        xs, ys = (x, min(x + 1, width - 1)), (y, min(y + 1, height - 1))
        means = [sum(pixels[j][i][c] for i in xs for j in ys) / 4 for c in range(3)]
        return half_up(128 + sum(w * mean for w, mean in zip(weights, means)) / 256)

    def plane(weights):
        return [[chroma(x, y, weights) for x in range(0, width, 2)] for y in range(0, height, 2)]

    return luma, plane((-43, -84, 127)), plane((127, -107, -20))


IDENTITY = [1, 0, 0, 0, 1, 0, 0, 0, 1]
WARM = [1.6, -0.4, -0.2, -0.3, 1.55, -0.25, 0.05, -0.6, 1.55]
PLAIN = {
    "layout": WORDS16, "bits": 10, "size": [16, 12], "padding": 0, "base": 0, "range": 1024,
    "crop": None, "order": 0, "levelBits": 10, "black": [0, 0, 0, 0], "white": 1023,
    "gains": [1, 1, 1, 1], "matrix": IDENTITY, "exposure": 1, "shot": 1e-4, "read": 1e-6,
    "denoise": 0, "sharpening": 0, "target": NV12,
}  # fmt: skip
LEVELS = {"levelBits": 12, "black": [256, 260, 272, 250], "white": 4000}
DEVELOPMENTS = {
    # Every order in every layout that has one; odd sizes; a crop at each parity of its corner.
    "rggb words": {},
    "grbg words": {"order": 1, "crop": [3, 2, 11, 9], "target": NV21},
    "gbrg words": {"order": 2, "crop": [4, 5, 12, 6], "target": PLANAR},
    "bggr words": {"order": 3, "crop": [5, 3, 9, 9]},
    "odd size": {"size": [23, 17], "order": 1, "target": PLANAR},
    "odd size of another order": {"size": [19, 9], "order": 2},
    "smallest": {"size": [8, 8], "order": 3, "target": NV21},
    "one pixel of a corner": {"size": [9, 9], "crop": [8, 8, 1, 1]},
    "rggb packed": {"layout": PACKED10, "padding": 3},
    "grbg packed": {"layout": PACKED10, "order": 1, "crop": [1, 0, 14, 12], "target": PLANAR},
    "bggr packed": {"layout": PACKED10, "order": 3, "size": [12, 11], "padding": 7},
    "rgb": {"layout": RGB48, "bits": 16, "base": 200, "range": 65000, "size": [13, 9], "padding": 10},
    "rgb of another order": {"layout": RGB48, "bits": 16, "range": 65536, "order": 3, "crop": [3, 2, 8, 7]},
    # Depths; words above the depth's maximum; levels of another depth than the samples.
    "eight bits": {"bits": 8, "range": 256, "levelBits": 8, "white": 255},
    "words beyond their depth": {"size": [15, 12], "bits": 12, "base": 3000, "range": 3000, "levelBits": 12, "white": 4095},
    "fourteen bits, levels of twelve": {"bits": 14, "base": 700, "range": 15600, **LEVELS},
    "ten bits, levels of twelve": {"order": 2, "gains": [2.1, 1, 1.1, 1.6], **LEVELS},
    "rgb, levels of twelve": {
        "layout": RGB48, "bits": 16, "range": 65536, "gains": [1.9, 1, 3, 1.4], "size": [12, 9], **LEVELS,
    },
    "sixteen bits": {"bits": 16, "range": 65536, "levelBits": 16, "white": 65535, "padding": 2},
    # Gains, exposure, matrix.
    "gains below one": {"order": 3, "gains": [0.5, 0.9, 0.8, 0.6]},
    "exposure": {"exposure": 3.5, "range": 300, "order": 1},
    "darker": {"exposure": 0.4},
    "matrix": {"matrix": WARM, "gains": [1.9, 1, 1, 1.5], "order": 2},
    "matrix of rgb": {"matrix": WARM, "layout": RGB48, "bits": 16, "range": 65536, "size": [14, 9]},
    # Noise reduction and sharpening; across the edges of bands; each of them alone.
    "denoised": {"base": 300, "range": 40, "denoise": 1, "shot": 1e-3, "read": 1e-4, "size": [72, 20]},
    "denoised, gains": {
        "base": 300, "range": 90, "denoise": 1, "shot": 5e-4, "gains": [2, 1, 1, 1.5], "order": 1, "exposure": 1.2,
    },
    "denoised twice as strong, with a crop": {
        "base": 200, "range": 60, "denoise": 2, "shot": 3e-4, "crop": [3, 5, 13, 6], "target": PLANAR,
    },
    "sharpened": {"base": 300, "range": 200, "sharpening": 0.5, "order": 2},
    "sharpened beyond the limit": {"base": 500, "range": 60, "sharpening": 3, "denoise": 0.6, "shot": 1e-3},
    "two bands": {"size": [9, 131], "base": 300, "range": 90, "denoise": 1, "shot": 1e-3, "sharpening": 0.3},
    "two bands, plain, with a crop": {"size": [10, 140], "crop": [1, 3, 8, 135], "order": 3, "target": NV21},
    "denoised and sharpened at their limits": {
        "base": 300, "range": 90, "denoise": 1, "shot": 9, "sharpening": 9, "order": 3, "target": PLANAR,
    },
    "denoised in chroma alone": {
        "size": [8, 70], "base": 12, "range": 6, "denoise": 0.3, "shot": 1e-5, "gains": [30, 1, 1, 20],
    },
    "no noise to reduce": {"sharpening": 0.02, "denoise": 0.1, "order": 1},
    "narrow and high": {"size": [8, 70], "order": 2},
}  # fmt: skip


def developed(case):
    width, height = case["size"]
    left, top, crop_width, crop_height = case["crop"]
    if case["layout"] == RGB48:

        def pixel(x, y):
            raw = [case["base"] + hashed(3 * x + c, y) % case["range"] for c in range(3)]
            return [companded(case, colour, sample) for colour, sample in zip((0, 1, 3), raw)]

    else:
        at = bayer_codes(case, width, height)

        def pixel(x, y):
            return demosaiced(case, at, x, y)

    pixels = [
        [rendered(case, pixel(x, y)) for x in range(left, left + crop_width)]
        for y in range(top, top + crop_height)
    ]
    luma, cb, cr = to_yuv(pixels)
    threshold, chroma_threshold, sharpening = refinement(case)
    return refined(luma, threshold, sharpening), refined(cb, chroma_threshold, 0), refined(cr, chroma_threshold, 0)


# --- scaling ---


def cubic(distance):
    """Keys' cubic, of slope 0.75."""
    d, a = abs(distance), -0.75
    if d < 1:
        return ((a + 2) * d - (a + 3)) * d * d + 1
    return ((a * d - 5 * a) * d + 8 * a) * d - 4 * a if d < 2 else 0


def weights(size, target):
    """By target sample: pairs of a source sample and its weight."""
    scale = size / target
    for i in range(target):
        centre = (i + 0.5) * scale
        if scale > 1:
            first, last = centre - scale / 2, centre + scale / 2
            found = [(at, min(at + 1, last) - max(at, first)) for at in range(size)]
        else:
            nearby = range(math.floor(centre) - 3, math.floor(centre) + 4)
            found = [(clamp(at, 0, size - 1), cubic(at + 0.5 - centre)) for at in nearby]
        found = [(at, weight) for at, weight in found if weight > 0 or scale <= 1]
        total = sum(weight for _, weight in found)
        yield [(at, weight / total) for at, weight in found]


def scaled(rows, width, height):
    columns = list(weights(len(rows[0]), width))
    tall = [
        [sum(weight * rows[at][x] for at, weight in taps) for x in range(len(rows[0]))]
        for taps in weights(len(rows), height)
    ]
    return [
        [clamp(half_up(sum(weight * row[at] for at, weight in taps)), 0, 255) for taps in columns] for row in tall
    ]


def plane_of(which, left, top, width, height):
    """A part of the source's luma (0), Cb (1) or Cr (2)."""
    return [[hashed(x + 1000 * which, y) % 256 for x in range(left, left + width)] for y in range(top, top + height)]


# source: arrangement, width, height; crop in it; target: arrangement, width, height
RESAMPLINGS = {
    f"{a} to {b}, {name}": ([a, 19, 13], crop, [b, width, height])
    for a in range(3)
    for b in range(3)
    for name, crop, width, height in [
        ("as large", [0, 0, 19, 13], 19, 13),
        ("smaller", [0, 0, 19, 13], 7, 6),
        ("a crop, wider and lower", [5, 3, 12, 9], 17, 4),
    ]
}
RESAMPLINGS.update(
    {
        "by a third": ([NV12, 36, 30], [0, 0, 36, 30], [NV12, 12, 10]),
        "by two": ([NV21, 9, 7], [0, 0, 9, 7], [NV21, 18, 14]),
        "to more of an odd size": ([PLANAR, 17, 5], [0, 0, 17, 5], [PLANAR, 33, 17]),
        "to a third of an odd size": ([NV12, 33, 17], [0, 0, 33, 17], [NV12, 11, 5]),
        "from one pixel": ([PLANAR, 1, 1], [0, 0, 1, 1], [NV12, 5, 3]),
        "from two and three": ([NV12, 2, 3], [0, 0, 2, 3], [PLANAR, 7, 8]),
        "to one pixel": ([NV21, 11, 9], [0, 0, 11, 9], [NV21, 1, 1]),
        "bands": ([NV12, 4, 40], [0, 0, 4, 40], [NV12, 6, 70]),
        "a crop at an odd corner as large": ([NV12, 16, 12], [3, 5, 9, 6], [PLANAR, 9, 6]),
    }
)


def resampled(source, crop, target):
    left, top, width, height = crop
    left, top = left - left % 2, top - top % 2  # chroma goes by pairs
    luma = plane_of(0, left, top, width, height)
    chroma = [plane_of(i, left // 2, top // 2, (width + 1) // 2, (height + 1) // 2) for i in (1, 2)]
    sizes = [target[1:]] + 2 * [[(side + 1) // 2 for side in target[1:]]]
    return [scaled(plane, *size) for plane, size in zip([luma] + chroma, sizes)]


# --- properties of a buffer ---

COMMON = "android.hardware.graphics.common."


def int64(*numbers):
    return struct.pack(f"<{len(numbers)}q", *numbers)


def uint64(*numbers):
    return struct.pack(f"<{len(numbers)}Q", *numbers)


def text(value):
    return int64(len(value)) + value.encode()


def kind(name, value):
    """A member of an enumeration that vendors may add to."""
    return text(COMMON + name) + int64(value)


def plane_layout(component, offset, stride, width, height, subsampling):
    parts = kind("PlaneLayoutComponentType", component) + int64(0, 8)
    rest = int64(offset, 8, stride, width, height, stride * height, subsampling, subsampling)
    return int64(1) + parts + rest


# Of a YV12 buffer of 65 x 3 pixels named "two", usage 1 << 40 | 3: rows of 128 and 64 bytes, Cr before Cb.
PROPERTIES = {
    2: text("two"),
    3: uint64(65),
    4: uint64(3),
    5: uint64(1),  # layers
    6: struct.pack("<i", 0x32315659),  # format asked for
    7: b"YV12",
    8: uint64(0),  # modifier
    9: uint64(1 << 40 | 3),
    10: uint64(128 * 3 + 2 * 64 * 2),
    11: uint64(0),  # protected
    12: kind("Compression", 0),
    13: kind("Interlaced", 0),
    14: kind("ChromaSiting", 2),  # interstitial
    15: int64(3) + plane_layout(1, 0, 128, 65, 3, 1) + plane_layout(4, 384, 64, 33, 2, 2) + plane_layout(2, 512, 64, 33, 2, 2),
    16: int64(3) + struct.pack("<12i", 0, 0, 65, 3, 0, 0, 33, 2, 0, 0, 33, 2),
    17: struct.pack("<i", 0x08C20000),  # the dataspace that the test sets: full-range BT.601, sRGB
    18: struct.pack("<i", 3),  # blend mode: coverage
    19: struct.pack("<10f", *range(1, 11)),  # red, green, blue, white; luminances
    20: struct.pack("<2f", 500, 200),
}  # fmt: skip


# --- where the ISP finds samples ---

Y, CB, CR, RAW = 1, 2, 4, 1 << 20
FIELDS = ["offset", "increment", "stride", "width", "height", "size"]
LAYOUTS = {
    # By plane the fields, then type, bits and place in bits of each component.
    "YV12": [[0, 8, 64, 64, 48, 3072, Y, 8, 0], [3072, 8, 32, 32, 24, 768, CR, 8, 0], [3840, 8, 32, 32, 24, 768, CB, 8, 0]],
    "NV12": [[0, 8, 64, 64, 48, 3072, Y, 8, 0], [3072, 16, 64, 32, 24, 1536, CB, 8, 0, CR, 8, 8]],
    "NV21": [[0, 8, 64, 64, 48, 3072, Y, 8, 0], [3072, 16, 64, 32, 24, 1536, CR, 8, 0, CB, 8, 8]],
    "RAW16": [[0, 16, 128, 64, 48, 6144, RAW, 16, 0]],
    "BLOB": [[0, 8, 4310, 4310, 1, 4310, RAW, 8, 0]],
}  # fmt: skip
# Layout, changes by plane, what is found. Of 4:2:0: the offsets of Y, Cb and Cr, both strides, the step of chroma.
# Otherwise, for 48 rows of 80 bytes, in a block 90 apart: offset and stride (or nothing), the size of a block.
PLACES = [
    ("YV12", {}, [0, 3840, 3072, 64, 32, 1]),
    ("NV12", {}, [0, 3072, 3073, 64, 64, 2]),
    ("NV21", {}, [0, 3073, 3072, 64, 64, 2]),
    ("YV12", {0: {"offset": 9}}, [9, 3840, 3072, 64, 32, 1]),
    ("YV12", {0: {"offset": -1}}, []),
    ("YV12", {0: {"width": 63}}, []),
    ("YV12", {1: {"width": 31}}, []),
    ("YV12", {0: {"height": 47}}, []),
    ("YV12", {2: {"height": 23}}, []),
    ("YV12", {2: {"stride": 31}}, []),
    ("YV12", {1: {"size": 767}}, []),
    ("YV12", {1: {"stride": 40, "size": 960}, 2: {"stride": 40, "size": 952}}, [0, 3840, 3072, 64, 40, 1]),
    ("YV12", {1: {"stride": 33, "size": 1000}}, []),  # one stride for both
    ("YV12", {0: {"bits": 10}}, []),
    ("YV12", {0: {"place": 4}}, []),
    ("YV12", {0: {"type": -1}}, []),  # a vendor's own
    ("YV12", {0: None}, []),
    ("YV12", {1: None}, []),
    ("YV12", {2: None}, []),
    ("YV12", {0: {"increment": 0}}, []),
    ("YV12", {1: {"increment": 0}}, []),
    ("YV12", {0: {"increment": 16, "stride": 128, "size": 6144}}, [0, 128]),  # no luma, but rows
    ("NV12", {1: {"place": 0}}, []),
    ("NV12", {1: {"place": 16}}, []),
    ("RAW16", {}, [0, 128]),
    ("RAW16", {0: {"offset": 64}}, [64, 128]),
    ("RAW16", {0: {"offset": -1}}, []),
    ("RAW16", {0: {"stride": 80, "size": 3840}}, [0, 80]),
    ("RAW16", {0: {"stride": 79}}, []),
    ("RAW16", {0: {"stride": 100, "size": 4780}}, [0, 100]),
    ("RAW16", {0: {"stride": 100, "size": 4779}}, []),
    ("RAW16", {0: {"height": 47}}, []),
    ("RAW16", {0: None}, []),
    ("BLOB", {}, [0, 90, 4310]),
    ("BLOB", {0: {"width": 4309}}, [4309]),
    ("BLOB", {0: {"offset": 8}}, [8, 90, 4310]),
    ("BLOB", {0: {"width": -3}}, [0]),
]


# --- files ---


def numbers(value):
    """A list of numbers as a line, a list of lists line by line."""
    if isinstance(value, list) and value and isinstance(value[0], list):
        return "[\n  " + ",\n  ".join(map(json.dumps, value)) + "]"
    return json.dumps(value)


def write(name, cases):
    texts = [",\n".join(f"{json.dumps(key)}: {numbers(value)}" for key, value in case.items()) for case in cases]
    (HERE / f"{name}.json").write_text("[{" + "},\n{".join(texts) + "}]\n")


def planes(of_picture):
    return dict(zip(("y", "cb", "cr"), of_picture))


def raw_rows(case):
    """The bytes of each row of the sensor's frame, padding included."""
    width, height = case["size"]
    for y in range(height):
        samples = [case["base"] + hashed(x, y) % case["range"] for x in range(width * (3 if case["layout"] == RGB48 else 1))]
        if case["layout"] == PACKED10:
            groups = [samples[x : x + 4] for x in range(0, width, 4)]
            row = [b for g in groups for b in [v >> 2 for v in g] + [sum((v & 3) << 2 * i for i, v in enumerate(g))]]
        else:
            row = [b for v in samples for b in (v & 255, v >> 8)]
        yield row + case["padding"] * [255]


def develop_cases():
    for name, changes in DEVELOPMENTS.items():
        case = {**PLAIN, **changes}
        case["crop"] = case["crop"] or [0, 0] + case["size"]
        yield {
            "name": name,
            "raw": [case["layout"], case["bits"], *case["size"]],
            "rows": list(raw_rows(case)),
            "crop": case["crop"],
            # As it lies in a tuning buffer: magic, version and two more integers, then floats.
            "calibration": [
                0x4E555451, 1, case["order"], case["levelBits"], *case["black"], case["white"], *case["gains"],
                *case["matrix"], case["exposure"], case["shot"], case["read"], case["denoise"], case["sharpening"],
            ],
            "target": case["target"],
            "refinement": refinement(case),
            **planes(developed(case)),
        }  # fmt: skip


def refine_cases():
    for width in (1, 2, 3, 65, 66, 67, 130):
        for threshold, sharpening in ((0, 5), (20, 0), (30, 16), (9, 8)):
            rows = [[hashed(x, y) % 256 for x in range(width)] for y in range(3)]
            yield {
                "rows": rows,
                "threshold": threshold,
                "sharpening": sharpening,
                "middle": refined(rows, threshold, sharpening)[1],
            }


def resample_cases():
    for name, (source, crop, target) in RESAMPLINGS.items():
        sizes = [source[1:]] + 2 * [[(side + 1) // 2 for side in source[1:]]]
        yield {
            "name": name,
            "source": source,
            "crop": crop,
            "target": target,
            "from": planes(plane_of(i, 0, 0, *sizes[i]) for i in range(3)),
            "to": planes(resampled(source, crop, target)),
        }


def place_cases():
    for layout, changes, found in PLACES:
        case = {"name": f"{layout} {changes}", "planes": [], "found": found}
        for index, fields in enumerate(LAYOUTS[layout]):
            changed = list(fields)
            for field, value in (changes.get(index, {}) or {}).items():
                at = {"type": -3, "bits": -2, "place": -1}.get(field)
                changed[FIELDS.index(field) if at is None else at] = value
            if changes.get(index, {}) is not None:
                case["planes"].append(changed)
        yield case


if __name__ == "__main__":
    write("develop", develop_cases())
    write("refine", refine_cases())
    write("resample", resample_cases())
    write("places", place_cases())
    lines = [f"{number} {(kind('StandardMetadataType', number) + payload).hex()}" for number, payload in PROPERTIES.items()]
    (HERE / "properties.txt").write_text("\n".join(lines) + "\n")
