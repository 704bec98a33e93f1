"""Draws the ratios of a run: for each case a dot for each peer."""

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plot
from matplotlib.ticker import FuncFormatter


def ratios_by_peer(cases):
    """From a peer to the rows it has dots in and its ratios."""
    dots = {}
    for row, results in enumerate(cases.values()):
        ours = results["ours"]["seconds"]
        for name, result in results.items():
            if name != "ours" and result:
                rows, ratios = dots.setdefault(name, ([], []))
                rows.append(row)
                ratios.append(result["seconds"] / ours)
    return dots


def draw(results, path):
    """Writes a picture in the format of the path's suffix."""
    cases = {name: case for name, case in results["cases"].items() if len([one for one in case.values() if one]) > 1}
    figure, axes = plot.subplots(figsize=(10, 1.5 + 0.21 * len(cases)), layout="constrained")
    colors = plot.get_cmap("tab20").colors
    for (peer, (rows, ratios)), color in zip(ratios_by_peer(cases).items(), colors):
        axes.scatter(ratios, rows, s=34, color=color, label=peer, zorder=3)
    axes.axvline(1.0, color="0.3", linewidth=1.2, zorder=2)
    axes.set_xscale("log")
    axes.xaxis.set_major_formatter(FuncFormatter(lambda value, _: f"{value:g}"))
    axes.set_yticks(range(len(cases)), cases, fontsize=8)
    axes.set_ylim(len(cases) - 0.5, -0.5)
    axes.grid(color="0.88", zorder=1)
    axes.set_title(f"Time of each peer as a multiple of ours (right of 1: we are faster)\n{results['processor']}",
                   fontsize=10)
    axes.legend(fontsize=8, loc="upper left", bbox_to_anchor=(1.0, 1.0))
    figure.savefig(path)
