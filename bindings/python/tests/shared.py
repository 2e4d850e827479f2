"""What the tests share: a mesh, their random numbers, another Python."""

import os
import subprocess
import sys
from pathlib import Path

import numpy as np
import quor

RANDOM = np.random.default_rng(7)


def bumpy_grid(nx=9, ny=7):
    """A mesh with its vertices shuffled, and tags of every kind."""
    x, y = np.meshgrid(np.arange(nx), np.arange(ny))
    vertices = np.stack([x, y, RANDOM.random(x.shape)], axis=-1).reshape(-1, 3).astype(float)
    a = (x + nx * y)[:-1, :-1].ravel()
    triangles = np.concatenate([np.stack([a, a + 1, a + nx + 1], 1),
                                np.stack([a, a + nx + 1, a + nx], 1)])
    place = RANDOM.permutation(nx * ny)
    vertices[place] = vertices.copy()
    tags = RANDOM.integers(-1, 6, nx * ny)
    return vertices, place[triangles], tags


def run(program, folder=Path(quor.__file__).parents[1], **environment):
    """A program in a process of its own, which finds the modules of this folder."""
    return subprocess.run([sys.executable, "-c", program], cwd=folder, capture_output=True, text=True,
                          env={**os.environ, "PYTHONPATH": str(folder), **environment})
