#!/usr/bin/python3
"""Writes the colour ramp in its two forms: viridis.PNG beside this file, yellow at the left end and
dark violet at the right, and the table of the kit, src/kit/ramp_table.h, from dark violet to yellow.

The library puts the largest value of a field at the left end (u = 0) and the smallest at the right
(u = 1), so high is yellow and low is violet. Needs Debian's python3-matplotlib.
"""

import pathlib

import matplotlib
import numpy
from PIL import Image

WIDTH, HEIGHT = 1024, 16
HERE = pathlib.Path(__file__).resolve().parent
TABLE = """// The colours of assets/viridis.PNG, from low to high. Written by assets/make_ramp.py.
#pragma once

#include <array>
#include <cstdint>

namespace quorkit {{

constexpr std::array<std::array<std::uint8_t, 3>, {count}> kRamp = {{{{
{rows}
}}}};

}}  // namespace quorkit
"""

colours = matplotlib.colormaps["viridis"]
ramp = colours(numpy.linspace(1.0, 0.0, WIDTH), bytes=True)[:, :3]
image = numpy.broadcast_to(ramp, (HEIGHT, WIDTH, 3))
Image.fromarray(image).save(HERE / "viridis.PNG", format="png")

rows = ["{%d, %d, %d}," % tuple(colours(i, bytes=True)[:3]) for i in range(colours.N)]
lines = [""]
for row in rows:
    if len(lines[-1]) + 1 + len(row) > 96:
        lines.append("")
    lines[-1] += " " * bool(lines[-1]) + row
table = TABLE.format(count=colours.N, rows="\n".join("    " + line for line in lines)[:-1])
(HERE.parent / "src/kit/ramp_table.h").write_text(table)
