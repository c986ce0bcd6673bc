#!/usr/bin/python3
"""Draws docs/images/distance-errors.png and prints the figures quoted in docs/measurement.md.

    docs/plot-distance-errors.py path/to/veltor

The errors are the differences of `veltor distance` between each formula and the geodesic, on WGS 84.
Needs matplotlib (Debian: python3-matplotlib).
"""

import json
import math
import pathlib
import random
import subprocess
import sys

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402

FORMULAS = {"spherical": "tab:red", "lambert": "tab:orange", "vincenty": "tab:blue"}
# By the distance, and near the antipode by the distance from it, in metres.
BANDS = [(1, 1e3), (1e3, 1e5), (1e5, 1e6), (1e6, 1e7), (1e7, 19e6), (19e6, 19.9e6), (19.9e6, 20.1e6)]


def sample(count):
    """Pairs in all directions, their distances spread evenly over the logarithm, half of them beyond 100 km."""
    rng = random.Random(1)
    for _ in range(count):
        lon1, lat1 = rng.uniform(-180, 180), math.degrees(math.asin(rng.uniform(-1, 1)))
        metres = 10 ** rng.uniform(0, 7.3) if rng.random() < 0.5 else rng.uniform(1e5, 20.0e6)
        arc, azimuth = metres / 6371e3, rng.uniform(0, 2 * math.pi)
        phi = math.radians(lat1)
        sin_phi2 = math.sin(phi) * math.cos(arc) + math.cos(phi) * math.sin(arc) * math.cos(azimuth)
        dlon = math.atan2(math.sin(azimuth) * math.sin(arc) * math.cos(phi), math.cos(arc) - math.sin(phi) * sin_phi2)
        yield lon1, lat1, lon1 + math.degrees(dlon), math.degrees(math.asin(max(-1, min(1, sin_phi2))))


NEAR_BANDS = [(0, 0.3), (0.3, 1), (1, 1e3), (1e3, 1e4), (1e4, 3e4), (3e4, 1e5), (1e5, 3e5), (3e5, 1e6)]


def near_antipode(count):
    """Pairs of which the second lies 0.03 m to 1,000 km from the antipode of the first, evenly over the logarithm."""
    rng = random.Random(2)
    for _ in range(count):
        lon1, lat1 = rng.uniform(-180, 180), math.degrees(math.asin(rng.uniform(-1, 1)))
        arc, azimuth = 10 ** rng.uniform(-1.5, 6) / 6371e3, rng.uniform(0, 2 * math.pi)
        lat2 = -lat1 + math.degrees(arc * math.cos(azimuth))
        if abs(lat2) < 89.9:
            yield lon1, lat1, lon1 + 180 + math.degrees(arc * math.sin(azimuth) / math.cos(math.radians(lat1))), lat2


def from_antipode(pair):
    lon1, lat1, lon2, lat2 = pair
    return 6371e3 * math.radians(math.hypot(lat2 + lat1, (lon2 - lon1 - 180) * math.cos(math.radians(lat1))))


def print_near_bands(pairs, rows):
    print("| from the antipode, m | to, m | pairs | " + " | ".join(f"{f}: largest, m" for f in FORMULAS) + " |")
    for low, high in NEAR_BANDS:
        band = [row for pair, row in zip(pairs, rows) if low <= from_antipode(pair) < high]
        cells = [f"{max(errors(row)[formula] for row in band):.3g}" for formula in FORMULAS]
        print(f"| {low:.3g} | {high:.3g} | {len(band)} | " + " | ".join(cells) + " |")


def measure(veltor, pairs):
    lines = "\n".join(" ".join(f"{number:.17g}" for number in pair) for pair in pairs)
    output = subprocess.run([veltor, "distance", "--json"], input=lines, capture_output=True, text=True, check=True).stdout
    return [json.loads(line) for line in output.splitlines()]


def errors(row):
    return {formula: abs(row[formula] - row["ellipsoid"]) for formula in FORMULAS}


def print_bands(rows):
    print("| from, m | to, m | pairs | " + " | ".join(f"{f}: largest, m (relative)" for f in FORMULAS) + " |")
    for low, high in BANDS:
        band = [row for row in rows if low <= row["ellipsoid"] < high]
        cells = []
        for formula in FORMULAS:
            largest = max(errors(row)[formula] for row in band)
            relative = max(errors(row)[formula] / row["ellipsoid"] for row in band)
            cells.append(f"{largest:.3g} ({relative:.2e})")
        print(f"| {low:.3g} | {high:.3g} | {len(band)} | " + " | ".join(cells) + " |")


def draw(rows, near, path):
    figure, (over_distance, over_azimuth, over_antipode) = plt.subplots(1, 3, figsize=(16, 5), sharey=True)
    shown = rows[:12000]
    for formula, colour in FORMULAS.items():
        values = [max(errors(row)[formula], 1e-9) for row in shown]
        over_distance.scatter([row["ellipsoid"] / 1e3 for row in shown], values, s=2, color=colour, label=formula)
        regional = [row for row in shown if 1e6 <= row["ellipsoid"] < 1e7]
        values = [max(errors(row)[formula], 1e-9) for row in regional]
        over_azimuth.scatter([row["azimuth"] for row in regional], values, s=3, color=colour)
        values = [min(max(errors(row)[formula], 1e-9), 1e6) for _, row in near[:12000]]
        over_antipode.scatter([from_antipode(pair) / 1e3 for pair, _ in near[:12000]], values, s=2, color=colour)
    over_distance.set(xscale="log", yscale="log", xlim=(1e-3, 2.1e4), xlabel="distance, km",
                      ylabel="difference from the geodesic, m", title="all azimuths")
    over_azimuth.set(xlim=(0, 360), xticks=range(0, 361, 45), xlabel="azimuth, degrees", title="1,000 to 10,000 km")
    over_antipode.set(xscale="log", xlim=(3e-5, 1e3), xlabel="distance from the antipode, km", title="near the antipode")
    for axes in (over_distance, over_azimuth, over_antipode):
        axes.grid(alpha=0.3)
    over_distance.legend(markerscale=5, loc="upper left")
    figure.tight_layout()
    figure.savefig(path, dpi=80)


def main():
    rows = [row for row in measure(sys.argv[1], sample(200000)) if row["ellipsoid"] > 0]
    print_bands(rows)
    pairs = list(near_antipode(200000))
    near = measure(sys.argv[1], pairs)
    print_near_bands(pairs, near)
    draw(rows, list(zip(pairs, near)), pathlib.Path(__file__).with_name("images") / "distance-errors.png")


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    main()
