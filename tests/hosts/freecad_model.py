"""The FreeCAD macro without a window: freecadcmd freecad_model.py

The macro, the module quor and its library lie where a user puts them.
"""

import enum
import pathlib
import sys

import FreeCAD

sys.path.append(str(pathlib.Path(__file__).resolve().parent))
from bracket import bracket, faces_at  # noqa: E402
from model_checks import check, load, run  # noqa: E402


def names_the_button_in_either_qt(macro):
    """A number in PySide2, a member of an enumeration that int() refuses in PySide6."""
    close = enum.Flag("StandardButton", {"Close": 0x200000}).Close
    assert macro.number_of(close) == macro.number_of(0x200000) == 0x200000


def test():
    macro = load("heat_map", FreeCAD.getUserMacroDir() + "heat_map.FCMacro")
    solid = bracket()
    soup, hot, cold = macro.tessellate(solid), faces_at(solid, "X", 80), faces_at(solid, "Z", 45)
    names_the_button_in_either_qt(macro)
    check(macro, lambda progress=None: macro.Model(soup, hot, cold, progress))


run("freecad_model", test)
