#!/usr/bin/python3
"""plot_bars.py weld|solve TABLE IMAGE: draws the first table that `scripts/bench weld|solve` printed.

A group of bars per mesh, a bar per method: its time as a multiple of the library's, so that meshes of
all sizes share one scale. Bars to the right are slower than the library, bars to the left faster.
"""
import collections
import sys

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt

# For each benchmark: the head of its table, the library's column, the peers after it, and from a row's
# cells the panel that shows it and its name there.
TABLES = {
    "weld": ("| Mesh | Tolerance | Points | quorWeld", 3,
             ["plain method (nanoflann)", "VTK", "hash floor"],
             lambda cells: ("", f"{cells[0]}\n{cells[1]}")),
    "solve": ("| Mesh | Source | quorsolveTagged", 2,
              ["Eigen, the same factor", "CHOLMOD", "reading L"],
              lambda cells: ("with a source" if cells[1] == "yes" else "without a source", cells[0])),
}
COLORS = ["#fdae61", "#21918c", "#bbbbbb"]


def read(lines, head, ours, place):
    """The table's rows by panel: (name, each peer's time over the library's)."""
    panels = collections.defaultdict(list)
    inside = False
    for line in lines:
        if line.startswith(head):
            inside = True
        elif inside and not line.startswith("|"):
            break
        elif inside and not line.startswith("|---"):
            cells = [cell.strip() for cell in line.strip().strip("|").split("|")]
            panel, name = place(cells)
            times = [float(cell.split()[0]) for cell in cells[ours:ours + 4]]
            panels[panel].append((name, [time / times[0] for time in times[1:]]))
    return panels


def draw(axes, rows, labels):
    for peer, (label, color) in enumerate(zip(labels, COLORS)):
        axes.barh([row + 0.27 * (peer - 1) for row in range(len(rows))],
                  [ratios[peer] - 1 for _, ratios in rows], 0.25, left=1, label=label, color=color)
    axes.axvline(1, color="#440154", linewidth=2, label="the library")
    axes.set_yticks(range(len(rows)), [name for name, _ in rows], fontsize=8)
    axes.set_xscale("log")
    ticks = [0.25, 0.5, 1, 2, 4, 8, 16, 32]
    axes.set_xticks(ticks, [f"{tick:g}" for tick in ticks])
    axes.minorticks_off()
    axes.set_xlabel("time over the library's")
    axes.grid(axis="x", color="#dddddd")
    axes.set_axisbelow(True)


def main():
    head, ours, labels, place = TABLES[sys.argv[1]]
    with open(sys.argv[2], encoding="utf-8") as table:
        panels = read(table, head, ours, place)
    height = 1.2 + 0.45 * max(len(rows) for rows in panels.values())
    figure, all_axes = plt.subplots(1, len(panels), figsize=(10, height), sharex=True, sharey=True,
                                    squeeze=False)
    for axes, (title, rows) in zip(all_axes[0], panels.items()):
        draw(axes, rows, labels)
        axes.set_title(title, fontsize=10)
    all_axes[0][0].invert_yaxis()
    every = [ratio for rows in panels.values() for _, ratios in rows for ratio in ratios]
    all_axes[0][0].set_xlim(min(every) / 1.2, 1.2 * max(every))
    handles, names = all_axes[0][0].get_legend_handles_labels()
    figure.legend(handles, names, frameon=False, loc="upper center", ncols=4, fontsize=9)
    figure.tight_layout(rect=(0, 0, 1, 1 - 0.3 / height))
    figure.savefig(sys.argv[3], dpi=110)


if __name__ == "__main__":
    main()
