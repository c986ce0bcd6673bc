#!/usr/bin/env python3
"""Makes the reference tables of tests/measure/data with GeographicLib's command-line programs.

    tools/dev/make-measure-tables.py COUNTRIES.geojson

Needs GeodSolve and Planimeter (Debian: geographiclib-tools). The programs run with -E, the exact
algorithms on elliptic integrals, and print nanometres and 1e-4 square metres. Random numbers are seeded,
so a second run writes the same files.
"""

import json
import pathlib
import random
import subprocess
import sys

WGS84 = (6378137.0, 298.257223563)
SAMPLE = ["Fiji", "South Africa", "Antarctica", "Iceland", "Solomon Is.", "Eq. Guinea"]
DATA = pathlib.Path(__file__).resolve().parents[2] / "tests" / "measure" / "data"


def program(name, ellipsoid, lines, *options):
    a, rf = ellipsoid
    command = [name, "-E", "-w", "-e", repr(a), f"1/{rf!r}", "-p", "9", *options]
    return subprocess.run(command, input="\n".join(lines), capture_output=True, text=True, check=True).stdout.split("\n")


def position(rng):
    return rng.uniform(-180, 180), rng.uniform(-89, 89)


def pairs(rng):
    """(kind, ellipsoid, lon1, lat1, lon2, lat2)"""
    for _ in range(100):
        yield ("random", WGS84, *position(rng), *position(rng))
    for _ in range(60):
        lon, lat = position(rng)
        yield ("antipodal", WGS84, lon, lat, lon + 180 + rng.gauss(0, 0.3), -lat + rng.gauss(0, 0.3))
    for _ in range(30):
        lon, lat = position(rng)
        yield ("polar", WGS84, lon, rng.choice([90, -90, 89.999999]), rng.uniform(-180, 180), lat)
    for _ in range(30):
        lon, lat = position(rng)
        yield ("meridional", WGS84, lon, lat, lon, rng.uniform(-90, 90))
    for _ in range(30):
        lon = rng.uniform(-180, 180)
        yield ("equatorial", WGS84, lon, 0, lon + rng.uniform(-179, 179), 0)
    for _ in range(50):
        lon, lat = position(rng)
        step = 10 ** rng.uniform(-8, -3)
        yield ("tiny", WGS84, lon, lat, lon + rng.uniform(-step, step), lat + rng.uniform(-step, step))
    for _ in range(40):
        lon, lat = position(rng)
        yield ("regional", WGS84, lon, lat, lon + rng.uniform(-3, 3), lat + rng.uniform(-1, 1))
    for rf in (50.0, 150.0, -50.0, -150.0):
        for _ in range(20):
            kind = "flat" if rf > 0 else "prolate"
            yield (kind, (6.4e6, rf), *position(rng), *position(rng))


def solve(pair):
    kind, ellipsoid, *numbers = pair
    numbers = [round(number, 10) for number in numbers]
    azimuth, _, distance = program("GeodSolve", ellipsoid, [" ".join(map(repr, numbers))], "-i")[0].split()
    return ",".join([kind, *map(repr, ellipsoid), *map(repr, numbers), distance, azimuth])


def measure(feature):
    geometry = feature["geometry"]
    polygons = geometry["coordinates"] if geometry["type"] == "MultiPolygon" else [geometry["coordinates"]]
    area = perimeter = 0.0
    for polygon in polygons:
        for index, ring in enumerate(polygon):
            lines = [f"{lon!r} {lat!r}" for lon, lat in ring]
            _, length, signed = program("Planimeter", WGS84, lines)[0].split()
            area += abs(float(signed)) * (-1 if index else 1)
            perimeter += float(length)
    return f"{feature['properties']['name']},{area:.4f},{perimeter:.9f}"


def main():
    version = subprocess.run(["GeodSolve", "--version"], capture_output=True, text=True, check=True).stdout
    origin = version.strip().replace("GeodSolve: ", "").replace("version ", "")
    rng = random.Random(20130101)
    with open(DATA / "geodesics.csv", "w", encoding="utf-8") as table:
        table.write(f"# {origin}, GeodSolve -E -i: accurate to 40 nanometres in s12 (metres)\n")
        table.write("# kind,a,rf,lon1,lat1,lon2,lat2,s12,azi1\n")
        table.writelines(solve(pair) + "\n" for pair in pairs(rng))

    countries = json.loads(pathlib.Path(sys.argv[1]).read_text(encoding="utf-8"))["features"]
    sample = [f for f in countries if f["properties"]["name"] in SAMPLE]
    with open(DATA / "countries.csv", "w", encoding="utf-8") as table:
        table.write(f"# {origin}, Planimeter -E, WGS 84: outer rings less holes, square metres, and all rings, metres\n")
        table.write("# name,area,perimeter\n")
        table.writelines(measure(feature) + "\n" for feature in sample)
    with open(DATA / "countries-sample.geojson", "w", encoding="utf-8") as copy:
        copy.write('{"type":"FeatureCollection","features":[\n')
        copy.write(",\n".join(json.dumps(f, separators=(",", ":")) for f in sample))
        copy.write("\n]}\n")


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    main()
