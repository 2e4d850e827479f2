"""The Blender add-on without a window: blender --background --factory-startup -P blender_add_on.py

The module quor and its library lie where a user puts them.
"""

import pathlib
import resource
import sys

import bpy
import numpy as np

sys.path.append(str(pathlib.Path(__file__).resolve().parent))
from blender_part import install, load_part  # noqa: E402
from model_checks import ROOT, check, run  # noqa: E402


def temperatures(name):
    data = bpy.data.objects[name].data.attributes["temperature"].data
    values = np.empty(len(data), np.float32)
    data.foreach_get("value", values)
    return values


def refusal(**options):
    """What the operator says when it does not work."""
    try:
        bpy.ops.object.heat_map(**options)
    except RuntimeError as error:
        return str(error)
    raise AssertionError("done all the same")


def test():
    add_on = install(ROOT / "plugins/blender/heat_map.py")
    item = load_part()
    soup = add_on.Soup(item, "hot", "cold")
    check(add_on, lambda progress=None: add_on.Model(soup, progress))

    assert bpy.ops.object.heat_map() == {"FINISHED"}
    first, model = temperatures("bracket heat"), add_on.HeatMap.last[1]
    assert (first.min(), first.max()) == (20, 80)
    mesh = bpy.data.objects["bracket heat"].data
    colours = np.empty(4 * len(first), np.float32)
    mesh.color_attributes["heat"].data.foreach_get("color_srgb", colours)
    hottest, coldest = np.rint(255 * colours.reshape(-1, 4))[[first.argmax(), first.argmin()], :3]
    assert (hottest == (253, 231, 36)).all() and (coldest == (68, 1, 84)).all()
    assert mesh.materials[0].name == "Heat Map"
    bpy.context.view_layer.objects.active = item
    assert bpy.ops.object.heat_map(hot_value=100, cold_value=0) == {"FINISHED"}
    assert add_on.HeatMap.last[1] is model, "built anew for other values"
    np.testing.assert_allclose(temperatures("bracket heat"), (first - 20) / 60 * 100, atol=1e-4)
    assert [found.name for found in bpy.data.objects if "heat" in found.name] == ["bracket heat"]

    bpy.context.view_layer.objects.active = item
    assert 'has no vertex group "warm"' in refusal(hot="warm")
    item.vertex_groups["cold"].remove(range(len(item.data.vertices)))
    assert 'vertex group "cold" of bracket is empty' in refusal()
    item.vertex_groups["cold"].add([0], 1, "REPLACE")
    add_on.EDGES_PER_DIAGONAL *= 8
    limits = resource.getrlimit(resource.RLIMIT_AS)
    pages = int(open("/proc/self/statm").read().split()[0])
    resource.setrlimit(resource.RLIMIT_AS, (pages * resource.getpagesize() + (8 << 20), limits[1]))
    try:
        assert "memory" in refusal()
    finally:
        resource.setrlimit(resource.RLIMIT_AS, limits)
        add_on.EDGES_PER_DIAGONAL //= 8
    assert bpy.ops.object.heat_map() == {"FINISHED"}


run("blender_add_on", test)
