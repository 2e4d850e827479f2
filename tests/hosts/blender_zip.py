"""The Blender add-on as one file, in a Blender that has no module quor:
blender --background --factory-startup -P blender_zip.py, with the ZIP in QUOR_ADD_ON.
"""

import os
import pathlib
import sys

import bpy
import numpy as np

sys.path.append(str(pathlib.Path(__file__).resolve().parent))
from blender_part import load_part  # noqa: E402


def test():
    assert not [place for place in sys.path if (pathlib.Path(place) / "quor").exists()], "there is a module quor"
    bpy.ops.preferences.addon_install(filepath=os.environ["QUOR_ADD_ON"])
    bpy.ops.preferences.addon_enable(module="quor_heat_map")
    load_part()
    assert bpy.ops.object.heat_map() == {"FINISHED"}
    data = bpy.data.objects["bracket heat"].data.attributes["temperature"].data
    values = np.empty(len(data), np.float32)
    data.foreach_get("value", values)
    assert (values.min(), values.max()) == (20, 80) and len(values) > 1000, (values.min(), values.max())


test()
print("blender_zip: passed")
