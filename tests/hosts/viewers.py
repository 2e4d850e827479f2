"""The colours of an OBJ file in viewers that others wrote, nothing set but where the camera stands:

    viewers.py OBJ DIRECTORY

Leaves NAME.f3d.png, NAME.vtk.png and NAME.blender.png in the directory, and prints for each what it shows
in the middle of what is hottest and of what is coldest: that end of the ramp, the other one, or a mixture
of both, as viewers do that repeat the texture. Fails if one of them is wrong.
"""

import pathlib
import subprocess
import sys

import numpy as np
from PIL import Image

HERE = pathlib.Path(__file__).resolve().parent
SIZE, ANGLE = (600, 400), 30  # pixels; degrees from the bottom of the picture to its top
TOWARD = np.array([1, -1.3, 0.8]) / np.linalg.norm([1, -1.3, 0.8])
COLOURS = {"hottest": (253, 231, 36), "coldest": (68, 1, 84), "both": (160, 116, 60)}  # of viridis.PNG


def read(obj):
    """Vertices, and which of them are hottest and coldest: u is 1 less the share of the range."""
    lines = [line.split() for line in open(obj)]
    vertices = np.array([line[1:] for line in lines if line[0] == "v"], float)
    u = np.array([line[1] for line in lines if line[0] == "vt"], float)
    return vertices, {"hottest": u == u.min(), "coldest": u == u.max()}


def camera(vertices):
    """Where it stands, where it looks, far enough to see all."""
    low, high = vertices.min(0), vertices.max(0)
    middle, radius = (low + high) / 2, np.linalg.norm(high - low) / 2
    return middle + radius / np.sin(np.radians(ANGLE / 2)) * TOWARD, middle


def pixel(point, position, focus):
    """Column and row of a point as the camera sees it, z upwards."""
    forward = (focus - position) / np.linalg.norm(focus - position)
    right = np.cross(forward, (0, 0, 1))
    right /= np.linalg.norm(right)
    depth = forward @ (point - position)
    scale = SIZE[1] / 2 / np.tan(np.radians(ANGLE / 2)) / depth
    across, up = right @ (point - position), np.cross(right, forward) @ (point - position)
    return round(SIZE[0] / 2 + scale * across), round(SIZE[1] / 2 - scale * up)


def render(obj, base, position, focus):
    """The pictures by the viewer's name."""
    def text(vector):
        return ",".join(f"{number:.9g}" for number in vector)

    pictures = {name: f"{base}.{name}.png" for name in ("f3d", "vtk", "blender")}
    place = [obj, text(position), text(focus), str(ANGLE)]
    for command in (
            ["f3d", obj, f"--output={pictures['f3d']}", f"--resolution={SIZE[0]},{SIZE[1]}",
             f"--camera-position={text(position)}", f"--camera-focal-point={text(focus)}",
             "--camera-view-up=0,0,1", f"--camera-view-angle={ANGLE}"],
            [sys.executable, HERE / "render_in_vtk.py", pictures["vtk"], *place],
            ["blender", "--background", "--factory-startup", "--python-exit-code", "1", "-P",
             HERE / "render_in_blender.py", "--", pictures["blender"], *place]):
        subprocess.run(command, check=True, stdout=subprocess.DEVNULL)
    return pictures


def shown(colour):
    """Which of COLOURS it is, under any white light."""
    cosines = {name: np.dot(colour, pure) / np.linalg.norm(pure) for name, pure in COLOURS.items()}
    return max(cosines, key=cosines.get)


def main(obj, directory):
    vertices, places = read(obj)
    position, focus = camera(vertices)
    base = pathlib.Path(directory) / pathlib.Path(obj).stem
    right = True
    for viewer, picture in render(obj, base, position, focus).items():
        image = np.asarray(Image.open(picture).convert("RGB"), float)
        for end, there in places.items():
            column, row = pixel(vertices[there].mean(0), position, focus)
            seen = np.median(image[row - 2:row + 3, column - 2:column + 3].reshape(-1, 3), axis=0)
            print(f"{viewer} shows what is {end} as {shown(seen)}: {seen}")
            right = right and shown(seen) == end
    sys.exit(0 if right else 1)


main(*sys.argv[1:])
