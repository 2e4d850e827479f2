"""Renders an OBJ file as Blender imports it, nothing set but where the camera stands:

    blender --background --factory-startup -P render_in_blender.py -- PNG OBJ POSITION FOCUS ANGLE
"""

import math
import sys

import bpy
import mathutils


def vector(text):
    return mathutils.Vector(float(number) for number in text.split(","))


SCALE = 0.04  # so large that the scene's lamp lights it
png, obj, position, focus, angle = sys.argv[-5:]
bpy.data.objects.remove(bpy.data.objects["Cube"])
bpy.ops.wm.obj_import(filepath=obj, global_scale=SCALE, forward_axis="Y", up_axis="Z")
scene = bpy.context.scene
camera = scene.camera
camera.location = SCALE * vector(position)
toward = vector(position) - vector(focus)
camera.rotation_euler = toward.to_track_quat("Z", "Y").to_euler()
camera.data.sensor_fit, camera.data.angle = "VERTICAL", math.radians(float(angle))
scene.render.engine = "CYCLES"  # needs no screen
scene.cycles.samples, scene.cycles.use_denoising = 16, False  # Debian's has no denoiser
scene.render.resolution_x, scene.render.resolution_y = 600, 400
scene.render.filepath = png
bpy.ops.render.render(write_still=True)
