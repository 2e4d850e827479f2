"""The FreeCAD macro in its window, driven as a user does: pick, solve, cancel, other values, close.

    freecad freecad_window.py

The macro, the module quor and its library lie where a user puts them. QUOR_PICTURES is a directory for
what is to be seen, freecad.png.
"""

import os
import pathlib
import sys
import threading

import FreeCAD
import FreeCADGui
import numpy as np
import quor
from PIL import Image
from PySide2 import QtCore

sys.path.append(str(pathlib.Path(__file__).resolve().parent))
from bracket import bracket, faces_at  # noqa: E402
from model_checks import run  # noqa: E402

PATIENCE = 120  # seconds, for what never comes
PICTURE = os.environ["QUOR_PICTURES"] + "/freecad.png"


def wait(panel):
    """Until the thread is done, with the window alive."""
    while panel.thread:
        QtCore.QCoreApplication.processEvents(QtCore.QEventLoop.WaitForMoreEvents)


def select(*names):
    """Names as a click selects: object of the document, what is inside of it."""
    FreeCADGui.Selection.clearSelection()
    for item, name in names:
        FreeCADGui.Selection.addSelection(item.Document.Name, item.Name, name)


def pick(panel, tag, item, path, numbers):
    select(*((item, f"{path}Face{number + 1}") for number in numbers))
    panel.buttons[tag].click()
    FreeCADGui.Selection.clearSelection()


def refusal(panel, tag, *names):
    """What the panel says to a selection, which must leave its picks as they are."""
    picks = dict(panel.picks)
    select(*names)
    panel.buttons[tag].click()
    FreeCADGui.Selection.clearSelection()
    assert panel.picks == picks
    return panel.text.text()


def solve(panel):
    panel.solve_button.click()
    wait(panel)
    assert panel.node, panel.text.text()


def is_cancelled_by_a_second_click(panel):
    """The thread is held at its first report until the click has come."""
    clicked, report = threading.Event(), panel.report
    panel.report = lambda fraction: (clicked.wait(PATIENCE), report(fraction))[1]
    panel.solve_button.click()
    assert panel.solve_button.text() == "Cancel"
    panel.solve_button.click()
    clicked.set()
    wait(panel)
    panel.report = report
    assert panel.text.text() == "cancelled" and panel.model is None, panel.text.text()


def lives_while_the_thread_works(panel):
    """Each of the first reports is held until a timer of the window has ticked and the bar moved on."""
    ticked, report, left, late, states = threading.Event(), panel.report, [5], [], set()

    def slow_report(fraction):
        if left[0] and fraction < 1:
            left[0] -= 1
            ticked.clear()
            late.append(not ticked.wait(PATIENCE))
        return report(fraction)

    def tick():
        states.add(panel.bar.value())
        ticked.set()

    timer = QtCore.QTimer(interval=60)
    timer.timeout.connect(tick)
    timer.start()
    panel.report = slow_report
    solve(panel)
    panel.report = report
    assert late and not any(late), "the window stood still"
    print(panel.text.text())


def refuses_what_is_no_face(panel, document, item):
    mesh = document.addObject("Mesh::Feature", "Mesh")
    other = document.addObject("Part::Box", "Other")
    document.recompute()
    hot = panel.HOT
    for names, words in [([], "Nothing is selected"), ([(item, "Edge5")], "Edge5 is not a face"),
                         ([(item, "")], "Bracket is selected as a whole"),
                         ([(mesh, "")], "Mesh is not a part with faces"),
                         ([(item, "Face1"), (other, "Face1")], "Faces of two objects")]:
        assert words in refusal(panel, hot, *names), (names, panel.text.text())
    document.removeObject(mesh.Name)
    document.removeObject(other.Name)


def has_the_colours_of_the_legend(view):
    """All that is coloured in the picture is so close to a colour of the ramp that only the rounding and
    blending between them is left. Light would make it darker."""
    view.saveImage(PICTURE, 1200, 800, "White")
    pixels = np.asarray(Image.open(PICTURE).convert("RGB"))[:, :900].reshape(-1, 3).astype(int)
    ramp = quor.colours(np.linspace(0, 1, 512))[:, :3].astype(int)
    coloured = pixels[np.ptp(pixels, axis=1) > 40]
    sample = coloured[::max(1, len(coloured) // 3000)]
    off = abs(sample[:, None] - ramp[None]).max(axis=2).min(axis=1)
    print(f"{len(coloured)} coloured pixels, {np.mean(off <= 3):.1%} of them of the ramp")
    assert len(coloured) > 20000 and np.mean(off <= 3) > 0.95


def is_drawn_where_it_is(panel, document, solid):
    """Inside a part that lies elsewhere, and behind a link to it."""
    part = document.addObject("App::Part", "Assembly")
    part.Placement.Base = (500, 0, 0)
    inner = document.addObject("Part::Feature", "Inner")
    inner.Shape, inner.Placement.Base = solid, (0, 300, 0)
    part.addObject(inner)
    link = document.addObject("App::Link", "Link")
    link.LinkedObject, link.Placement.Base = part, (0, 0, -700)
    document.recompute()
    for root, low in ((part, (500, 300, 0)), (link, (0, 300, -700))):
        pick(panel, panel.HOT, root, "Inner.", faces_at(solid, "X", 80))
        assert panel.picks[panel.COLD] is None, "faces of another object were kept"
        pick(panel, panel.COLD, root, "Inner.", faces_at(solid, "Z", 45))
        solve(panel)
        np.testing.assert_allclose(panel.model.vertices.min(axis=0), low, atol=1e-9)
    panel.hide()
    assert link.ViewObject.Visibility


def follows_the_shape(panel, document):
    """After a change, Solve is about the new shape; faces that are gone are said."""
    box = document.addObject("Part::Box", "Box")
    document.recompute()
    pick(panel, panel.HOT, box, "", faces_at(box.Shape, "X", 10))
    pick(panel, panel.COLD, box, "", faces_at(box.Shape, "X", 0))
    solve(panel)
    box.Length = 40
    document.recompute()
    solve(panel)
    assert panel.model.vertices[:, 0].max() == 40
    panel.picks[panel.HOT].faces = [17]
    panel.solve_button.click()
    assert "no Face18 any more" in panel.text.text()
    document.removeObject(box.Name)
    assert panel.node is None and panel.picks[panel.HOT] is None
    panel.solve_button.click()
    assert "Select faces" in panel.text.text()


def is_at_ease_when_the_document_closes(panel, document, item):
    """With colours shown, and with a thread at work."""
    pick(panel, panel.HOT, item, "", faces_at(item.Shape, "X", 80))
    pick(panel, panel.COLD, item, "", faces_at(item.Shape, "Z", 45))
    solve(panel)
    panel.within.setValue(0.5)
    panel.solve_button.click()
    FreeCAD.closeDocument(document.Name)
    assert panel.thread is None and panel.node is None
    panel.solve_button.click()
    panel.reject()


def test():
    raised, sys.excepthook = [], lambda *error: raised.append(error)
    document = FreeCAD.newDocument()
    item = document.addObject("Part::Feature", "Bracket")
    item.Shape = solid = bracket()
    view = FreeCADGui.ActiveDocument.ActiveView
    macro = pathlib.Path(FreeCAD.getUserMacroDir()) / "heat_map.FCMacro"
    space = {}
    exec(compile(macro.read_text(), str(macro), "exec"), space)
    panel = space["panel"]
    panel.HOT, panel.COLD = space["HOT"], space["COLD"]

    panel.solve_button.click()
    assert "Select" in panel.text.text() and not panel.thread
    pick(panel, panel.HOT, item, "", faces_at(solid, "X", 80))
    pick(panel, panel.COLD, item, "", faces_at(solid, "Z", 45))
    assert panel.text.text().startswith("Hot: Face"), panel.text.text()
    refuses_what_is_no_face(panel, document, item)
    is_cancelled_by_a_second_click(panel)
    lives_while_the_thread_works(panel)
    assert not item.ViewObject.Visibility

    model, error = panel.model, panel.error
    said = float(panel.text.text().partition("error about ")[2].split()[0])
    assert 0 < error <= said <= 0.6, (error, panel.text.text())
    panel.values[panel.HOT].setValue(100)
    solve(panel)
    assert panel.model is model, "built again for other values"
    assert panel.field.max() == 100 and np.isclose(panel.error, error * 80 / 60)

    view.viewIsometric()
    view.fitAll()
    has_the_colours_of_the_legend(view)
    view.saveImage(PICTURE, 1200, 800, "Current")
    panel.hide()
    assert item.ViewObject.Visibility
    is_drawn_where_it_is(panel, document, solid)
    follows_the_shape(panel, document)

    is_at_ease_when_the_document_closes(panel, document, item)
    assert not raised, raised


QtCore.QTimer.singleShot(0, lambda: run("freecad_window", test))
