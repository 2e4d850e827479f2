"""What a plug-in's model must do, and do to the process it runs in, whatever the host."""

import ctypes
import importlib.machinery
import importlib.util
import os
import pathlib
import resource
import shutil
import sys
import tempfile
import traceback

import numpy as np
import quor

ROOT = pathlib.Path(__file__).resolve().parents[2]


def load(name, path):
    """A module from its file, a package from its __init__.py, whatever the file is called."""
    loader = importlib.machinery.SourceFileLoader(name, str(path))
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader(name, loader))
    sys.modules[name] = module  # where the modules of a package look for it
    loader.exec_module(module)
    return module


def rows(vertices):
    """Each vertex as one value, its bits."""
    return np.ascontiguousarray(vertices).view("V24").ravel()


def is_within_its_error(plug_in, make):
    """Beside a field five times as exact, at the vertices that both have."""
    fractions = []
    model = make(fractions.append)
    field = model.solve(80, 20)
    assert fractions[0] == 0 and fractions[-1] == 1
    assert (field.min(), field.max()) == (20, 80)
    within = plug_in.WITHIN
    plug_in.WITHIN /= 5
    fine = make()
    plug_in.WITHIN = within
    _, here, there = np.intersect1d(rows(model.vertices), rows(fine.vertices), return_indices=True)
    largest = abs(field[here] - fine.solve(80, 20)[there]).max()
    print(f"{len(model.triangles)} triangles beside {len(fine.triangles)}: largest error {largest:.2g}, "
          f"estimated {model.error(80, 20):.2g}")
    assert len(here) > 1000
    assert model.is_reached and model.error(80, 20) <= 60 * within
    assert largest <= model.error(80, 20) + fine.error(80, 20)


def give_other_values_other_fields(_, make):
    model = make()
    np.testing.assert_allclose(model.solve(80, 20), 20 + 60 * model.solve(1, 0), atol=1e-9)
    np.testing.assert_allclose(model.solve(-5, 20), 20 - 25 * model.solve(1, 0), atol=1e-9)
    assert np.isclose(model.error(-5, 20), 25 * model.error(1, 0))


def is_cancelled(_, make):
    asked = []
    try:
        make(lambda fraction: asked.append(fraction) or len(asked) == 2)
    except quor.Cancelled:
        assert len(asked) == 2
        return
    raise AssertionError("built all the same")


def lives_on_when_memory_runs_out(plug_in, make):
    model = make()
    field = model.solve(1, 0)
    limits = resource.getrlimit(resource.RLIMIT_AS)
    refusals = {"refine": 0, "solve": 0}
    plug_in.WITHIN /= 100
    for spare in range(0, 30, 6):  # megabytes: refused in one step after the other
        pages = int(open("/proc/self/statm").read().split()[0])
        resource.setrlimit(resource.RLIMIT_AS,
                           (pages * resource.getpagesize() + (spare << 20), limits[1]))
        for name, call in (("refine", lambda: quor.refine(model.vertices, model.triangles,
                                                          triangle_count=10_000_000)),
                           ("solve", make)):
            try:
                call()
            except MemoryError:
                refusals[name] += 1
        resource.setrlimit(resource.RLIMIT_AS, limits)
    plug_in.WITHIN *= 100
    print("times out of memory:", refusals)
    assert min(refusals.values()) >= 3
    assert (model.solve(1, 0) == field).all()


def are_two_plug_ins_and_an_update_apart(_, make):
    """Each brings quor, with the library in it, as a part of itself; an update comes in a new folder."""
    model = make()
    tags = np.isin(model.solve(1, 0), (0, 1)).astype(np.int32)
    values = np.arange(len(tags), dtype=float)
    with tempfile.TemporaryDirectory() as work:
        other, updated = (pathlib.Path(work) / name for name in ("other", "updated"))
        for folder in (other, updated):
            shutil.copytree(pathlib.Path(quor.__file__).parent, folder / "quor")
        (other / "__init__.py").write_text("from . import quor\n")
        modules = [quor, load("other", other / "__init__.py").quor,
                   load("quor_2", updated / "quor/__init__.py")]
        addresses = {ctypes.cast(module._library.library.quorkitCheck, ctypes.c_void_p).value
                     for module in modules}
        assert len(addresses) == len(modules), "two share a library"
        solvers = [module.Solver(model.vertices, model.triangles, tags) for module in modules]
        fields = [solver.solve(values) for solver in solvers]
        assert all(np.array_equal(fields[0], field) for field in fields)


def check(plug_in, make):
    """All of it. make(progress=None) builds a model of the plug-in, whose values are 80 and 20."""
    for test in (lives_on_when_memory_runs_out, is_within_its_error, give_other_values_other_fields,
                 is_cancelled, are_two_plug_ins_and_an_update_apart):
        test(plug_in, make)
        print("passed:", test.__name__, flush=True)


def end(name, error=None):
    """Ends the host, which would only print an exception and go on. The last line that is printed is
    "NAME: passed", or the error's."""
    if error is None:
        print(f"{name}: passed")
    else:
        traceback.print_exception(error, file=sys.stdout)
    sys.stdout.flush()
    os._exit(0)


def run(name, test):
    """Runs a test and ends the host."""
    try:
        test()
    except BaseException as error:
        end(name, error)
    end(name)
