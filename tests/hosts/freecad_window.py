"""The FreeCAD macro in its window, driven as a user does: pick, solve, cancel, other values, close.

    freecad freecad_window.py

The macro, the module quor and its library lie where a user puts them. QUOR_PICTURES is a directory for
what is to be seen, freecad.png.
"""

import os
import pathlib
import sys

import FreeCAD
import FreeCADGui
from PySide2 import QtCore

sys.path.append(str(pathlib.Path(__file__).resolve().parent))
from bracket import bracket, faces_at  # noqa: E402
from model_checks import run  # noqa: E402


def wait(panel):
    """Until the thread is done, with the window alive: how often a timer of the window ticked, and
    how many states the bar had."""
    ticks, states = [], set()
    timer = QtCore.QTimer(interval=5)
    timer.timeout.connect(lambda: ticks.append(states.add(panel.bar.value())))
    timer.start()
    while panel.thread:
        QtCore.QCoreApplication.processEvents(QtCore.QEventLoop.WaitForMoreEvents)
    return len(ticks), len(states)


def pick(panel, item, tag, numbers):
    FreeCADGui.Selection.clearSelection()
    for number in numbers:
        FreeCADGui.Selection.addSelection(item, f"Face{number + 1}")
    panel.buttons[tag].click()
    FreeCADGui.Selection.clearSelection()


def test():
    document = FreeCAD.newDocument()
    item = document.addObject("Part::Feature", "Bracket")
    item.Shape = bracket()
    view = FreeCADGui.ActiveDocument.ActiveView
    macro = pathlib.Path(FreeCAD.getUserMacroDir()) / "heat_map.FCMacro"
    space = {}
    exec(compile(macro.read_text(), str(macro), "exec"), space)
    panel = space["panel"]
    space["EDGES_PER_DIAGONAL"] = 300  # long enough to see it work

    panel.solve_button.click()
    assert "Select" in panel.text.text() and not panel.thread
    pick(panel, item, space["HOT"], faces_at(item.Shape, "X", 80))
    pick(panel, item, space["COLD"], faces_at(item.Shape, "Z", 45))
    assert panel.text.text() == "1 hot and 1 cold faces"

    panel.solve_button.click()
    panel.solve_button.click()  # the second time it says Cancel
    wait(panel)
    assert panel.text.text() == "cancelled" and panel.model is None, panel.text.text()

    panel.solve_button.click()
    ticks, states = wait(panel)
    print(f"{panel.text.text()} The window's timer ticked {ticks} times meanwhile, the bar had "
          f"{states} states")
    assert ticks > 10 and states > 5
    assert not item.ViewObject.Visibility

    model = panel.model
    panel.values[space["HOT"]].setValue(100)
    panel.solve_button.click()
    wait(panel)
    assert panel.model is model and panel.field.max() == 100

    view.viewDefaultOrientation()
    view.fitAll()
    view.saveImage(os.environ["QUOR_PICTURES"] + "/freecad.png", 1200, 800, "Current")

    children = view.getSceneGraph().getNumChildren()
    panel.reject()
    assert item.ViewObject.Visibility
    assert view.getSceneGraph().getNumChildren() == children - 1


QtCore.QTimer.singleShot(0, lambda: run("freecad_window", test))
