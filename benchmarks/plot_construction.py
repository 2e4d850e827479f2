#!/usr/bin/python3
"""plot_construction.py TABLE IMAGE: draws the first table that `scripts/bench construct` printed.

One panel per kind of mesh, time over the number of vertices, a line per method.
"""
import collections
import sys

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt

METHODS = ["quorctorTagged", "plain Eigen", "CHOLMOD"]
COLORS = ["#440154", "#fdae61", "#21918c"]


def read(lines):
    """The table's rows by kind of mesh: (vertices, seconds of each method)."""
    kinds = collections.defaultdict(list)
    inside = False
    for line in lines:
        if line.startswith("| Mesh | Vertices | quorctorTagged"):
            inside = True
        elif inside and not line.startswith("|"):
            break
        elif inside and not line.startswith("|---"):
            name, vertices, *times = (cell.strip() for cell in line.strip().strip("|").split("|"))
            kind = name.removeprefix("part of the ").removesuffix(", subdivided")
            kinds[kind].append((int(vertices), [float(time.split()[0]) for time in times]))
    return {kind: sorted(rows) for kind, rows in kinds.items() if len(rows) > 1}


def main():
    with open(sys.argv[1], encoding="utf-8") as table:
        kinds = read(table)
    figure, panels = plt.subplots(1, len(kinds), figsize=(11, 4), sharey=True)
    for panel, (kind, rows) in zip(panels, kinds.items()):
        for method, (label, color) in enumerate(zip(METHODS, COLORS)):
            panel.loglog([n for n, _ in rows], [times[method] for _, times in rows], "o-",
                         label=label, color=color, linewidth=2)
        panel.set_title(kind)
        panel.set_xlabel("vertices")
        panel.grid(which="major", color="#dddddd")
    panels[0].set_ylabel("seconds to the factorized solver")
    panels[0].legend(frameon=False)
    figure.tight_layout()
    figure.savefig(sys.argv[2], dpi=110)


if __name__ == "__main__":
    main()
