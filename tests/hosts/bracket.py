"""A solid to solve on, in FreeCAD, and its plane faces."""

import Part
from FreeCAD import Vector


def bracket():
    """A plate with a wall and a bored boss, 80 x 50 x 45."""
    solid = Part.makeBox(80, 50, 8).fuse(Part.makeBox(8, 50, 45))
    solid = solid.fuse(Part.makeCylinder(14, 14, Vector(50, 25, 8))).removeSplitter()
    return solid.cut(Part.makeCylinder(7, 40, Vector(50, 25, -5)))


def faces_at(solid, axis, at):
    """The numbers, from 0, of the plane faces that lie at this coordinate of "X", "Y" or "Z"."""
    return [number for number, face in enumerate(solid.Faces)
            if abs(getattr(face.BoundBox, axis + "Min") - at) < 1e-6
            and abs(getattr(face.BoundBox, axis + "Max") - at) < 1e-6]
