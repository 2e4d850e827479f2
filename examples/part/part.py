"""part FILE.stl RAMP: a part from a CAD system, 80 degrees at the low end of x and 30 at the
other: from the triangles to a coloured OBJ, part.obj, with numbers on its legend, part.json."""

import sys

import numpy as np
import quor


def read_stl(path):
    """The corners of all triangles. Binary STL is 80 bytes of anything, a count, and per triangle a normal,
    its corners, and two bytes; the other one is text, with the coordinates after the word vertex."""
    with open(path, "rb") as file:
        data = file.read()
    count = int.from_bytes(data[80:84], "little")
    if count > 0 and len(data) == 84 + 50 * count:
        facet = np.dtype([("normal", "<f4", 3), ("corners", "<f4", (3, 3)), ("bytes", "<u2")])
        return np.frombuffer(data, facet, offset=84)["corners"].reshape(-1, 3).astype(float)
    words = data.split()
    points = [words[k + 1:k + 4] for k, word in enumerate(words) if word == b"vertex"]
    if not points or len(points) % 3 != 0 or b"endsolid" not in words:
        raise ValueError("the part is not an STL file, or damaged")
    return np.array(points, float)


if len(sys.argv) != 3:
    sys.exit("part: usage: part FILE.stl viridis.PNG")
try:
    points = read_stl(sys.argv[1])
except (OSError, ValueError) as error:
    sys.exit(f"part: {error}")
triangles = np.arange(len(points)).reshape(-1, 3)  # every triangle owns its points

# Files have six digits and viewers floats, too few far away from zero: coordinates there become relative to
# whole numbers near the low corner.
report = quor.check(points, triangles)
if report.not_finite.count > 0:
    sys.exit("part: the part is damaged: a coordinate is not finite")
diagonal = report.diagonal
low = points.min(axis=0)
origin = np.where((abs(low) > 10 * diagonal) & (abs(low) < 1e15), np.trunc(low) + 0.0, 0.0)
points -= origin

# Welded, without flat triangles, and fine enough: no edge longer than a 32nd part of the diagonal.
soup = quor.weld(points, triangles, 1e-6 * diagonal)
clean = quor.clean(soup.vertices, soup.triangles)
if len(clean.triangles) <= len(triangles) // 2:
    sys.exit("part: most triangles have no area: export the part again, near zero or as text")
mesh = quor.refine(clean.vertices, clean.triangles, diagonal / 32)

# The outermost 2 % at both ends of x: 1 and 2 are prescribed, 0 is free.
x = mesh.vertices[:, 0]
share = (x - x.min()) / (x.max() - x.min())
tags = np.select([share <= 0.02, share >= 0.98], [1, 2], default=0)
degrees = np.where(tags == 1, 80.0, 30.0)  # read where the vertex is prescribed

with quor.Solver(mesh.vertices, mesh.triangles, tags) as solver:
    field = solver.solve(degrees)
quor.write(mesh.vertices, mesh.triangles, field, "part", ramp=sys.argv[2])
with open("part.json", "w", encoding="utf-8", newline="\n") as file:
    file.write('{"quor": 1, "field": "temperature", "unit": "°C", "minimum": 30, "maximum": 80, '
               f'"origin": [{origin[0]:.0f}, {origin[1]:.0f}, {origin[2]:.0f}]}}\n')
print(f"part.obj: {len(mesh.vertices)} vertices, {len(mesh.triangles)} triangles of {len(triangles)}")
