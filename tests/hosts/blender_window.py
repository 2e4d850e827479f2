"""The Blender add-on in a window, from the menu: progress, Esc, the result as it is seen.

    blender --factory-startup --enable-event-simulate -P blender_window.py

The module quor and its library lie where a user puts them. QUOR_PICTURES is a directory for what is to
be seen, blender.png.
"""

import os
import pathlib
import sys
import threading

import bpy
import mathutils
import numpy as np
import quor

sys.path.append(str(pathlib.Path(__file__).resolve().parent))
from blender_part import install, load_part  # noqa: E402
from model_checks import ROOT, end  # noqa: E402

PATIENCE = 120  # seconds, for what never comes


def steps():
    """The test, step by step; each yields what is to be waited for."""
    add_on = install(ROOT / "plugins/blender/heat_map.py")
    item, window = load_part(), bpy.context.window
    area = next(area for area in window.screen.areas if area.type == "VIEW_3D")
    region = next(region for region in area.regions if region.type == "WINDOW")

    def call(operator, *arguments):
        with bpy.context.temp_override(window=window, area=area, region=region):
            return operator(*arguments)

    # Blender forgets an operator that is done. Its thread is held at each report until it may go on.
    fractions, problems, may_go_on = set(), [], threading.Event()
    go_on, finish, modal = add_on.HeatMap.go_on, add_on.HeatMap.finish, add_on.HeatMap.modal

    def slow_go_on(self, fraction):
        fractions.add(fraction)
        may_go_on.wait(PATIENCE)
        return go_on(self, fraction)

    def watched_modal(self, context, event):
        if event.type == "ESC":
            seen = modal(self, context, event)
            may_go_on.set()
            return seen
        if event.type == "TIMER" and fractions:
            ticks.append(self.thread.is_alive())
        return modal(self, context, event)

    ticks = []
    add_on.HeatMap.go_on, add_on.HeatMap.modal = slow_go_on, watched_modal
    add_on.HeatMap.finish = lambda self, context: problems.append(self.problem) or finish(self, context)

    def press_escape():
        window.event_simulate(type="ESC", value="PRESS", x=400, y=400)

    press_escape()  # the splash screen
    yield lambda: True
    assert call(bpy.ops.object.heat_map, "INVOKE_DEFAULT") == {"RUNNING_MODAL"}
    yield lambda: fractions
    press_escape()
    yield lambda: problems
    assert problems == ["cancelled"] and not bpy.data.objects.get("bracket heat")

    fractions.clear()
    may_go_on.clear()
    assert call(bpy.ops.object.heat_map, "INVOKE_DEFAULT") == {"RUNNING_MODAL"}
    yield lambda: sum(ticks) > 3  # the window lives while the thread works
    may_go_on.set()
    yield lambda: bpy.data.objects.get("bracket heat")
    print(f"{len(add_on.HeatMap.last[1].triangles):,} triangles, told {len(fractions)} fractions")
    assert problems == ["cancelled", None] and len(fractions) > 5 and item.hide_get()

    result, space = bpy.data.objects["bracket heat"], area.spaces.active
    space.shading.type, space.overlay.show_overlays = "SOLID", False
    toward = mathutils.Vector((1, -1.3, 0.8)).normalized()
    space.region_3d.view_rotation = toward.to_track_quat("Z", "Y")
    space.region_3d.view_perspective = "ORTHO"
    bpy.ops.object.select_all(action="DESELECT")
    result.select_set(True)
    call(bpy.ops.view3d.view_selected)
    for _ in range(20):  # the view moves, the shaders are compiled
        yield lambda: True
    picture = os.environ["QUOR_PICTURES"] + "/blender.png"
    bpy.ops.screen.screenshot(filepath=picture)
    has_the_colours_of_the_legend(picture, area)


def has_the_colours_of_the_legend(picture, area):
    """Solid shading shows the colours of the ramp, without light on them."""
    image = bpy.data.images.load(picture)
    width, height = image.size
    pixels = np.array(image.pixels).reshape(height, width, 4)[area.y:area.y + area.height, area.x:area.x + area.width, :3]
    pixels = np.rint(255 * pixels.reshape(-1, 3)).astype(int)
    ramp = quor.colours(np.linspace(0, 1, 512))[:, :3].astype(int)
    coloured = pixels[np.ptp(pixels, axis=1) > 60]
    off = abs(coloured[::max(1, len(coloured) // 3000), None] - ramp[None]).max(axis=2).min(axis=1)
    print(f"{len(coloured)} coloured pixels, {np.mean(off <= 4):.1%} of them of the ramp")
    assert len(coloured) > 20000 and np.mean(off <= 4) > 0.9


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
