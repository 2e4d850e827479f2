"""Makes the raw parts beside this file: what a CAD host hands over for drawing, as STL.

    freecadcmd make_raw_parts.py

Each is a solid tessellated as FreeCAD draws it, by the distance from the true surface alone: flat faces
have no vertices inside. Lengths in millimetres. Debian's package freecad-python3 has the command.
"""

import math
import pathlib
import struct

import FreeCAD
import Part
from FreeCAD import Vector

HERE = pathlib.Path(__file__).resolve().parent
X, Y, Z = Vector(1, 0, 0), Vector(0, 1, 0), Vector(0, 0, 1)


def cylinder(radius, length, centre, axis=Z):
    return Part.makeCylinder(radius, length, centre, axis)


def bracket():
    """A plate with a wall, a boss on it, four holes, and fillets where they meet."""
    solid = Part.makeBox(80, 50, 8).fuse(Part.makeBox(8, 50, 45))
    solid = solid.fuse(cylinder(14, 14, Vector(50, 25, 8))).removeSplitter()
    inner = [edge for edge in solid.Edges
             if edge.BoundBox.ZMin > 7.9 and edge.BoundBox.ZMax < 8.1
             and (edge.Curve.TypeId == "Part::GeomCircle" or edge.BoundBox.XLength < 0.1
                  and abs(edge.BoundBox.XMin - 8) < 0.1)]
    solid = solid.makeFillet(4, inner)
    solid = solid.cut(cylinder(7, 40, Vector(50, 25, -5)))
    for y in (9, 41):
        solid = solid.cut(cylinder(3, 20, Vector(72, y, -5)))
        solid = solid.cut(cylinder(3, 20, Vector(-5, y, 35), X))
    return solid


def fins():
    """Twelve fins, 1 mm thick and 40 mm high, on a plate."""
    solid = Part.makeBox(70, 60, 5)
    for i in range(12):
        solid = solid.fuse(Part.makeBox(70, 1, 42, Vector(0, i * 59 / 11, 3)))
    return solid.removeSplitter()


def shaft():
    """A stepped shaft, 400 mm long, with a cross hole, a keyway and chamfers at its ends."""
    solid = cylinder(10, 120, Vector(0, 0, 0), X)
    solid = solid.fuse(cylinder(14, 160, Vector(120, 0, 0), X))
    solid = solid.fuse(cylinder(8, 120, Vector(280, 0, 0), X)).removeSplitter()
    ends = [edge for edge in solid.Edges
            if edge.Curve.TypeId == "Part::GeomCircle" and edge.BoundBox.XLength < 0.1
            and (edge.BoundBox.XMin < 0.1 or edge.BoundBox.XMax > 399.9)]
    solid = solid.makeChamfer(1.5, ends)
    solid = solid.cut(cylinder(3, 40, Vector(200, 0, -20), Z))
    return solid.cut(Part.makeBox(60, 5, 6, Vector(300, -2.5, 4.5)))


def write(name, solid, deflection):
    points, triangles = solid.tessellate(deflection)
    with open(HERE / f"{name}.stl", "wb") as file:
        file.write(f"{name}, raw tessellation to {deflection} mm".encode().ljust(80))
        file.write(struct.pack("<I", len(triangles)))
        for triangle in triangles:
            a, b, c = (points[i] for i in triangle)
            normal = (b - a).cross(c - a)
            if normal.Length > 0:
                normal.normalize()
            numbers = [x for vector in (normal, a, b, c) for x in vector]
            file.write(struct.pack("<12fH", *numbers, 0))
    print(name, len(triangles), "triangles, volume", round(solid.Volume, 1))


for name, solid, deflection in (("bracket", bracket(), 0.1), ("fins", fins(), 0.1),
                                ("shaft", shaft(), 0.02)):
    assert solid.isValid() and math.isfinite(solid.Volume)
    write(name, solid, deflection)
