#!/usr/bin/python3
"""Writes viridis.PNG, the colour ramp beside this file: yellow at the left end, dark violet at the right.

The library puts the largest value of a field at the left end (u = 0) and the smallest at the right
(u = 1), so high is yellow and low is violet. Needs Debian's python3-matplotlib.
"""

import pathlib

import matplotlib
import numpy
from PIL import Image

WIDTH, HEIGHT = 1024, 16

ramp = matplotlib.colormaps["viridis"](numpy.linspace(1.0, 0.0, WIDTH), bytes=True)[:, :3]
image = numpy.broadcast_to(ramp, (HEIGHT, WIDTH, 3))
Image.fromarray(image).save(pathlib.Path(__file__).with_name("viridis.PNG"), format="png")
