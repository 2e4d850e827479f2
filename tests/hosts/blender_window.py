"""The Blender add-on in a window, from the menu: progress, Esc, the result as it is seen.

    blender --factory-startup --enable-event-simulate -P blender_window.py

The module quor and its library lie where a user puts them. QUOR_PICTURES is a directory for what is to
be seen, blender.png.
"""

import os
import pathlib
import sys

import bpy
import mathutils

sys.path.append(str(pathlib.Path(__file__).resolve().parent))
from blender_part import install, load_part  # noqa: E402
from model_checks import ROOT, end  # noqa: E402


def steps():
    """The test, step by step; each yields what is to be waited for."""
    add_on = install(ROOT / "plugins/blender/heat_map.py")
    item, window = load_part(), bpy.context.window
    area = next(area for area in window.screen.areas if area.type == "VIEW_3D")
    region = next(region for region in area.regions if region.type == "WINDOW")

    def call(operator, *arguments):
        with bpy.context.temp_override(window=window, area=area, region=region):
            return operator(*arguments)

    # Blender forgets an operator that is done.
    fractions, problems = set(), []
    go_on, finish = add_on.HeatMap.go_on, add_on.HeatMap.finish
    add_on.HeatMap.go_on = lambda self, done: fractions.add(done) or go_on(self, done)
    add_on.HeatMap.finish = lambda self, context: problems.append(self.problem) or finish(self, context)

    def press_escape():
        window.event_simulate(type="ESC", value="PRESS", x=400, y=400)

    press_escape()  # the splash screen
    yield lambda: True
    add_on.EDGES_PER_DIAGONAL *= 4  # long enough to see it work
    assert call(bpy.ops.object.heat_map, "INVOKE_DEFAULT") == {"RUNNING_MODAL"}
    yield lambda: fractions
    press_escape()
    yield lambda: problems
    assert problems == ["cancelled"] and not bpy.data.objects.get("bracket heat")

    fractions.clear()
    assert call(bpy.ops.object.heat_map, "INVOKE_DEFAULT") == {"RUNNING_MODAL"}
    yield lambda: bpy.data.objects.get("bracket heat")
    print(f"{len(add_on.HeatMap.last[1].triangles):,} triangles, told {len(fractions)} fractions")
    assert problems == ["cancelled", None] and len(fractions) > 5 and item.hide_get()

    add_on.EDGES_PER_DIAGONAL //= 4  # a picture is drawn by the processor
    add_on.HeatMap.last = None
    bpy.context.view_layer.objects.active = item
    assert call(bpy.ops.object.heat_map) == {"FINISHED"}
    result, space = bpy.data.objects["bracket heat"], area.spaces.active
    space.shading.type, space.overlay.show_overlays = "MATERIAL", False
    toward = mathutils.Vector((1, -1.3, 0.8)).normalized()
    space.region_3d.view_rotation = toward.to_track_quat("Z", "Y")
    space.region_3d.view_perspective = "ORTHO"
    bpy.ops.object.select_all(action="DESELECT")
    result.select_set(True)
    call(bpy.ops.view3d.view_selected)
    for _ in range(20):  # the view moves, the shaders are compiled
        yield lambda: True
    bpy.ops.screen.screenshot(filepath=os.environ["QUOR_PICTURES"] + "/blender.png")


def drive(waiting):
    """Takes the next step whenever what the last one waits for has come, called by the window."""
    is_ready, left = next(waiting), 9000

    def tick():
        nonlocal is_ready, left
        try:
            left -= 1
            assert left, "waited in vain"
            if is_ready():
                is_ready = next(waiting)
        except StopIteration:
            end("blender_window")
        except BaseException as error:
            end("blender_window", error)
        return 0.01

    bpy.app.timers.register(tick)


drive(steps())
