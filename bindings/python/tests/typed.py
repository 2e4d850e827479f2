"""A program that mypy checks as its author would: results and arguments have types."""

import numpy as np
import quor
from numpy.typing import NDArray


def field_of(points: NDArray[np.float64], triangles: NDArray[np.int32]) -> NDArray[np.float64]:
    mesh: quor.RefinedMesh = quor.refine(quor.weld(points, triangles, 1e-6), triangle_count=1000)
    count: int = quor.check(mesh).pieces.count
    tags = np.zeros(len(mesh.vertices), np.int32)
    tags[:count] = 1
    with quor.Solver(mesh, tags=tags, progress=print) as solver:
        values: NDArray[np.float64] = solver.solve(tags, out=np.empty(len(tags)))
    quor.write(mesh, field=values, path=b"part", ramp="viridis.PNG")
    return quor.gradients(mesh, field=values)
