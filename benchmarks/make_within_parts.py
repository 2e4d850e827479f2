"""Makes the parts of `scripts/bench within` as a CAD host draws them, in the directory OUT.

    OUT=DIR freecadcmd make_within_parts.py

Each is a solid, or a face, tessellated by OpenCASCADE by the distance from the true surface alone. Lengths
in millimetres. Debian's package freecad-python3 has the command.
"""

import math
import os
import pathlib
import struct

import FreeCAD
import Part
from FreeCAD import Vector

OUT = pathlib.Path(os.environ["OUT"])
X, Y, Z = Vector(1, 0, 0), Vector(0, 1, 0), Vector(0, 0, 1)


def cylinder(radius, length, center, axis=Z):
    return Part.makeCylinder(radius, length, Vector(*center), axis)


def box(dx, dy, dz, corner=(0, 0, 0)):
    return Part.makeBox(dx, dy, dz, Vector(*corner))


def polar(radius, angle):
    return radius * math.cos(angle), radius * math.sin(angle)


def plate():
    return box(100, 60, 5).cut(cylinder(3, 20, (30, 20, -5))).cut(cylinder(6, 20, (70, 40, -5)))


def flange():
    solid = cylinder(60, 12, (0, 0, 0)).fuse(cylinder(25, 40, (0, 0, 0)))
    solid = solid.cut(cylinder(15, 60, (0, 0, -5)))
    for i in range(6):
        solid = solid.cut(cylinder(4, 30, (*polar(45, i * math.pi / 3), -5)))
    return solid


def chamfered():
    solid = box(100, 60, 20)
    edges = [e for e in solid.Edges if e.BoundBox.ZMin > 19.9 and e.BoundBox.XMin > 99.9]
    return solid.makeChamfer(0.2, edges)


def wall():
    return box(100, 60, 3).fuse(box(1, 60, 30, (50, 0, 0))).removeSplitter()


def grooves():
    solid = box(300, 100, 10)
    for x in (150, 152):
        solid = solid.cut(box(1, 100, 3, (x, 0, 7)))
    return solid


def engraved():
    solid = box(120, 80, 6)
    for i in range(5):
        solid = solid.cut(box(12, 1.5, 2, (15 + 20 * i, 40, 4.5)))
        solid = solid.cut(cylinder(1.2, 2, (21 + 20 * i, 50, 4.5)))
    return solid


def perforated():
    solid = box(120, 60, 2)
    for i in range(10):
        for j in range(5):
            solid = solid.cut(cylinder(2.5, 10, (12 + 10.5 * i, 10 + 10 * j, -4)))
    return solid


def filleted():
    solid = box(80, 50, 30)
    return solid.makeFillet(6, solid.Edges)


def turned():
    """A solid of revolution with a waist and a cone."""
    points = [Vector(0, 0, 0), Vector(20, 0, 0), Vector(20, 0, 10)]
    profile = [Part.makeLine(points[0], points[1]), Part.makeLine(points[1], points[2])]
    profile.append(Part.Arc(points[2], Vector(8, 0, 40), Vector(20, 0, 70)).toShape())
    profile.append(Part.makeLine(Vector(20, 0, 70), Vector(2, 0, 120)))
    profile.append(Part.makeLine(Vector(2, 0, 120), Vector(0, 0, 120)))
    profile.append(Part.makeLine(Vector(0, 0, 120), points[0]))
    return Part.Face(Part.Wire(profile)).revolve(Vector(0, 0, 0), Z, 360)


def spring():
    helix = Part.makeHelix(12, 36, 20)
    ring = Part.Wire([Part.makeCircle(2, Vector(20, 0, 0), Y)])
    return Part.Wire(helix).makePipeShell([ring], True, True)


def sheet():
    """An L of sheet metal without thickness, with a slit."""
    corners = [(0, 0), (100, 0), (100, 30), (30, 30), (30, 100), (0, 100)]
    wire = Part.makePolygon([Vector(x, y, 0) for x, y in corners + corners[:1]])
    slit = Part.Face(Part.makePolygon(
        [Vector(x, y, 0) for x, y in ((40, 14.9), (90, 14.9), (90, 15.1), (40, 15.1), (40, 14.9))]))
    return Part.Face(wire).cut(slit)


def two_bodies():
    return Part.makeCompound([box(40, 30, 10), cylinder(8, 50, (60, 15, 0))])


def tube():
    return cylinder(20, 100, (0, 0, 0)).cut(cylinder(18, 120, (0, 0, -5)))


def crossed_tubes():
    solid = cylinder(15, 160, (-80, 0, 0), X).fuse(cylinder(9, 60, (0, 0, 0)))
    return solid.cut(cylinder(13, 180, (-90, 0, 0), X)).cut(cylinder(7, 80, (0, 0, 0)))


def write(name, shape, deflection):
    points, triangles = shape.tessellate(deflection)
    with open(OUT / f"{name}.stl", "wb") as file:
        file.write(f"{name}, raw tessellation to {deflection} mm".encode().ljust(80))
        file.write(struct.pack("<I", len(triangles)))
        for triangle in triangles:
            corners = [x for i in triangle for x in points[i]]
            file.write(struct.pack("<12fH", 0, 0, 0, *corners, 0))
    print(name, len(triangles), "triangles")


for name, shape, deflection in (
        ("plate", plate(), 0.1),
        ("big_plate", box(300, 200, 4).cut(cylinder(1, 20, (80, 90, -5))), 0.02),
        ("flange", flange(), 0.1),
        ("thin_box", box(100, 80, 1), 0.1),
        ("chamfered", chamfered(), 0.1),
        ("wall", wall(), 0.1),
        ("grooves", grooves(), 0.1),
        ("torus", Part.makeTorus(40, 12), 0.1),
        ("sphere", Part.makeSphere(30), 0.1),
        ("engraved", engraved(), 0.1),
        ("cylinder", cylinder(20, 150, (0, 0, 0)), 0.05),
        ("cone", Part.makeCone(20, 2, 80), 0.05),
        ("tube", tube(), 0.02),
        ("perforated", perforated(), 0.1),
        ("filleted", filleted(), 0.1),
        ("turned", turned(), 0.05),
        ("spring", spring(), 0.1),
        ("sheet", sheet(), 0.1),
        ("two_bodies", two_bodies(), 0.1),
        ("crossed_tubes", crossed_tubes(), 0.05)):
    write(name, shape, deflection)
