import json

import numpy as np
import quor

facet = np.dtype([("normal", "<f4", 3), ("corners", "<f4", (3, 3)), ("rest", "<u2")])  # binary STL
points = np.fromfile("bracket.stl", facet, offset=84)["corners"].reshape(-1, 3).astype(float)
soup = quor.weld(points, np.arange(len(points)).reshape(-1, 3), tolerance=1e-4)
part = quor.clean(soup)  # no degenerate triangles

x = part.vertices[part.triangles, 0]  # of the three corners of each triangle
values = np.full(len(x), np.nan)  # NaN: free
values[x.max(axis=1) < x.min() + 0.001] = 80  # degrees, on the face at the low end of x
values[x.min(axis=1) > x.max() - 0.001] = 30
result = quor.solve_within(part, tolerance=0.01, share_of_span=True, triangle_values=values)
quor.write(result, field=result.field, path="bracket", ramp="viridis.PNG")
with open("bracket.json", "w") as legend:
    json.dump({"quor": 1, "unit": "°C", "minimum": 30, "maximum": 80, "error": round(result.error, 2)}, legend)
print(f"{len(result.triangles)} triangles, estimated error {result.error:.2f} degrees")
