import numpy as np
import quor

SIDE = 40
corners = np.array([[0, 0], [1, 0], [1, 1], [0, 0], [1, 1], [0, 1]])  # two triangles of a cell
cells = np.stack(np.meshgrid(np.arange(SIDE), np.arange(SIDE)), axis=-1).reshape(-1, 1, 2)
points = np.zeros((6 * SIDE * SIDE, 3))
points[:, :2] = (cells + corners).reshape(-1, 2)
triangles = np.arange(len(points)).reshape(-1, 3)  # every triangle owns its points

mesh = quor.weld(points, triangles, tolerance=1e-6)
x, y, z = mesh.vertices.T
# 1 and 2: prescribed, 0: free
tags = np.select([x == 0, x + y > 2 * SIDE - 8], [1, 2], default=0)
degrees = np.where(tags == 2, 100.0, 20.0)  # read where the vertex is prescribed

with quor.Solver(mesh.vertices, mesh.triangles, tags) as solver:
    assert solver.info == quor.Info.SUCCESS
    field = solver.solve(degrees)
    solver.write(solver.to_solver_order(field), "plate")
with open("plate.json", "w", encoding="utf-8") as legend:  # what the colours mean, for the viewer
    legend.write('{"quor": 1, "unit": "°C", "minimum": 20, "maximum": 100}\n')
