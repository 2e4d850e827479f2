"""The Blender add-on without a window: blender --background --factory-startup -P blender_add_on.py

The module quor and its library lie where a user puts them.
"""

import pathlib
import resource
import sys
import types

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


def follows_modifiers(add_on):
    """Three cubes of an array that are merged, hot and cold at both ends."""
    bpy.ops.mesh.primitive_cube_add(size=2)
    cube = bpy.context.object
    array = cube.modifiers.new("array", "ARRAY")
    array.count, array.use_merge_vertices = 3, True
    for name, side in (("hot", -1), ("cold", 1)):
        inside = [v.index for v in cube.data.vertices if v.co.x == side]
        cube.vertex_groups.new(name=name).add(inside, 1, "REPLACE")
    soup = add_on.Soup(cube, "hot", "cold")
    assert len(soup.points) > 8 and np.ptp(soup.points[:, 0]) == 6
    array.count = 1
    assert np.ptp(add_on.Soup(cube, "hot", "cold").points[:, 0]) == 2
    bpy.data.objects.remove(cube)


def says_that_the_module_is_missing(add_on):
    """Loaded where there is none, the add-on loads, and says what to do when it is called."""
    source, names = pathlib.Path(add_on.__file__).read_text(), {"__name__": "lonely"}
    held, sys.modules["quor"] = sys.modules["quor"], None
    try:
        exec(compile(source, "heat_map.py", "exec"), names)
    finally:
        sys.modules["quor"] = held
    assert names["quor"] is None
    add_on.quor, add_on.why_not = None, names["why_not"]
    try:
        said = refusal()
    finally:
        add_on.quor = held
    assert "module quor cannot be loaded" in said and "addons/modules" in said and "Traceback" not in said, said


def has_a_material_in_any_version(add_on):
    """Blender 4 has no input "Specular"."""
    made = add_on.material()
    surface = next(node for node in made.node_tree.nodes if node.type == "BSDF_PRINCIPLED")
    assert surface.inputs["Base Color"].is_linked and surface.inputs["Roughness"].default_value == 1
    later = {name: types.SimpleNamespace(default_value=0.5) for name in ("Roughness", "Specular IOR Level")}
    add_on.take_gloss_away(later)
    assert [given.default_value for given in later.values()] == [1, 0]


def test():
    add_on = install(ROOT / "plugins/blender/heat_map.py")
    item = load_part()
    soup = add_on.Soup(item, "hot", "cold")
    follows_modifiers(add_on)
    bpy.context.view_layer.objects.active = item
    says_that_the_module_is_missing(add_on)
    has_a_material_in_any_version(add_on)
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
    assert mesh.color_attributes.active_color.name == "heat"
    shown = [area.spaces.active.shading for screen in bpy.data.screens for area in screen.areas
             if area.type == "VIEW_3D"]
    assert shown and all(shading.color_type == "VERTEX" for shading in shown)
    lines = add_on.Legend.lines(bpy.context)
    assert lines[:-1] == ["20", "35", "50", "65", "80"] and lines[-1].startswith("\u00b1 0."), lines
    assert float(lines[-1][2:]) >= model.error(80, 20)
    bpy.context.view_layer.objects.active = item
    assert bpy.ops.object.heat_map(hot_value=100, cold_value=0) == {"FINISHED"}
    assert add_on.HeatMap.last[1] is model, "built anew for other values"
    np.testing.assert_allclose(temperatures("bracket heat"), (first - 20) / 60 * 100, atol=1e-4)
    assert [found.name for found in bpy.data.objects if "heat" in found.name] == ["bracket heat"]

    bpy.context.view_layer.objects.active = item
    assert 'has no vertex group "warm"' in refusal(hot="warm")
    group = item.vertex_groups["cold"].index
    cold = [v.index for v in item.data.vertices if any(g.group == group for g in v.groups)]
    item.vertex_groups["cold"].remove(range(len(item.data.vertices)))
    assert 'vertex group "cold" of bracket is empty' in refusal()
    item.vertex_groups["cold"].add([0], 1, "REPLACE")
    assert 'vertex group "cold" of bracket has no edge' in refusal()
    item.vertex_groups["cold"].add(cold, 1, "REPLACE")
    limits = resource.getrlimit(resource.RLIMIT_AS)
    pages = int(open("/proc/self/statm").read().split()[0])
    resource.setrlimit(resource.RLIMIT_AS, (pages * resource.getpagesize() + (8 << 20), limits[1]))
    try:
        assert "memory" in refusal(within=0.02)
    finally:
        resource.setrlimit(resource.RLIMIT_AS, limits)
    assert bpy.ops.object.heat_map() == {"FINISHED"}


run("blender_add_on", test)
