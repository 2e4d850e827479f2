"""Puts pictures of one size side by side, with 256 colours: beside.py PNG PNG..., the first one is made."""

import sys

import numpy as np
from PIL import Image

made, *pictures = sys.argv[1:]
pixels = np.hstack([np.asarray(Image.open(picture).convert("RGB")) for picture in pictures])
Image.fromarray(pixels).quantize(256).save(made, optimize=True)
