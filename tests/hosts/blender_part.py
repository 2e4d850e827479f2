"""A raw CAD part in Blender, with its two vertex groups."""

import pathlib

import bpy
import numpy as np

PART = pathlib.Path(__file__).resolve().parents[2] / "examples/data/bracket.stl"


def load_part():
    """The only mesh of the scene, active: the end of its plate hot, the top of its wall cold."""
    for item in [item for item in bpy.data.objects if item.type == "MESH"]:
        bpy.data.objects.remove(item)
    bpy.ops.preferences.addon_enable(module="io_mesh_stl")
    bpy.ops.import_mesh.stl(filepath=str(PART))
    item = bpy.context.object
    points = np.array([vertex.co for vertex in item.data.vertices])
    for name, axis in (("hot", 0), ("cold", 2)):
        inside = np.flatnonzero(points[:, axis] > points[:, axis].max() - 1e-3)
        item.vertex_groups.new(name=name).add(inside.tolist(), 1, "REPLACE")
    return item


def install(add_on):
    """As a user does in the preferences. Returns its module."""
    bpy.ops.preferences.addon_install(filepath=str(add_on))
    bpy.ops.preferences.addon_enable(module=add_on.stem)
    return __import__(add_on.stem)
