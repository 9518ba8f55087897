#!/usr/bin/env python3
"""Makes the pictures of docs/photometry.md from the photometric samples.

    scripts/make_photometry_pictures.py RBA             RBA is the built program, build/.../bin/rba
    scripts/make_photometry_pictures.py RBA --out DIR   writes elsewhere
"""

import argparse
import json
import math
import pathlib
import subprocess
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
SAMPLES = ROOT / "samples/photometry"
ROWS, COLUMNS, CELL = 8, 16, 30
CENTER, RADIUS = (150, 190), 105  # of the sphere
LEFT, TOP = 400, 70               # of the table

STYLE = """<style>
text { font: 14px "DejaVu Sans", "Noto Sans", sans-serif; fill: #59616a; }
.name { font-weight: bold; fill: #1d2125; }
.line { fill: none; stroke: #9aa3ab; stroke-width: 1.2; }
.axis { fill: none; stroke: #1d2125; stroke-width: 1.8; }
.angle { fill: none; stroke: #0b6e75; stroke-width: 2.2; }
.ray { fill: none; stroke: #b4531f; stroke-width: 2.6; }
.hidden { stroke-dasharray: 4 4; }
</style>
"""


def seen(x, y, z):
    """Where a place of the unit sphere is in the picture: from the front, above and to the right."""
    turn, tilt = math.radians(28.0), math.radians(20.0)
    right = y * math.cos(turn) - x * math.sin(turn)
    front = x * math.cos(turn) + y * math.sin(turn)
    up = z * math.cos(tilt) - front * math.sin(tilt)
    return CENTER[0] + RADIUS * right, CENTER[1] - RADIUS * up


def direction(theta, phi):
    return math.cos(phi) * math.sin(theta), math.sin(phi) * math.sin(theta), math.cos(theta)


def path(kind, places):
    points = " ".join(f"{x:.1f},{y:.1f}" for x, y in (seen(*p) for p in places))
    return f'<polyline class="{kind}" points="{points}"/>\n'


def text(x, y, words, kind="", anchor="middle"):
    return f'<text class="{kind}" x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}">{words}</text>\n'


def named(place, dx, dy, words, kind=""):
    x, y = seen(*place)
    return text(x + dx, y + dy, words, kind)


def frame():
    theta, phi = math.radians(52.0), math.radians(62.0)
    origin, ray = (0.0, 0.0, 0.0), direction(theta, phi)
    flat = direction(math.pi / 2.0, phi)
    parts = [f'<circle class="line" cx="{CENTER[0]}" cy="{CENTER[1]}" r="{RADIUS}"/>\n']
    parts.append(path("line", [direction(math.pi / 2.0, math.radians(a))
                               for a in range(0, 361, 5)]))
    for axis in ((1.45, 0.0, 0.0), (0.0, 1.4, 0.0), (0.0, 0.0, 1.4)):
        parts.append(path("axis", [origin, axis]))
    parts.append(path("line hidden", [origin, (0.0, 0.0, -1.0)]))
    parts.append(path("line hidden", [origin, flat, ray]))
    parts.append(path("angle", [direction(theta * i / 20.0, phi) for i in range(21)]))
    parts.append(path("angle", [direction(math.pi / 2.0, phi * i / 20.0) for i in range(21)]))
    parts.append(path("ray", [origin, tuple(1.25 * v for v in ray)]))
    parts.append(named((1.45, 0.0, 0.0), -10.0, 14.0, "+x", "name"))
    parts.append(named((0.0, 1.4, 0.0), 14.0, 4.0, "+y", "name"))
    parts.append(named((0.0, 0.0, 1.4), 0.0, -8.0, "+z", "name"))
    parts.append(named(direction(theta * 0.5, phi), 12.0, -6.0, "θ"))
    parts.append(named(direction(math.pi / 2.0, phi * 0.5), 0.0, 20.0, "φ"))
    parts.append(named((0.0, 0.0, -1.0), 0.0, 28.0, "-z: straight down, vertical angle 0"))
    return "".join(parts)


def table(rba, folder):
    out = folder / "table.json"
    subprocess.run([rba, "--quiet", "ies", "table", SAMPLES / "street.ies", "--theta", str(ROWS),
                    "--phi", str(COLUMNS), "-o", out], check=True)
    values = json.loads(out.read_text(encoding="ascii"))["values"]
    most, parts = max(values), []
    for i, value in enumerate(values):
        x, y = LEFT + i % COLUMNS * CELL, TOP + i // COLUMNS * CELL
        # The square root shows the faint ones; what is dark stays darker than the lines.
        shade = round(30 + 225 * (value / most)**0.5)
        parts.append(f'<rect x="{x}" y="{y}" width="{CELL - 1}" height="{CELL - 1}" '
                     f'fill="rgb({shade},{shade},{shade})"/>\n')
    middle = CELL / 2.0
    for row, words in ((0, "θ = 0"), (1, "π / 8"), (4, "π / 2"), (7, "7 π / 8")):
        parts.append(text(LEFT - 8.0, TOP + row * CELL + middle + 5.0, words, anchor="end"))
    for column, words in ((0, "φ = 0"), (4, "π / 2"), (8, "π"), (15, "15 π / 8")):
        parts.append(text(LEFT + column * CELL + middle, TOP - 8.0, words))
    width, bottom = COLUMNS * CELL, TOP + ROWS * CELL
    parts.append(text(LEFT + width / 2.0, TOP - 36.0,
                      "street.ies, 8 rows of θ by 16 columns of φ", "name"))
    parts.append(text(LEFT + width / 2.0, bottom + 20.0,
                      "row 0 is the pole; θ = π would be the row below the last one"))
    parts.append(text(LEFT + width / 2.0, bottom + 40.0,
                      "φ = 2 π would be the column behind the last one, and is column 0"))
    return "".join(parts)


def grid_svg(rba, folder):
    width, height = LEFT + COLUMNS * CELL + 30, TOP + ROWS * CELL + 60
    return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" '
            f'viewBox="0 0 {width} {height}">\n{STYLE}'
            f'<rect width="{width}" height="{height}" fill="#ffffff"/>\n'
            f'{frame()}{table(rba, folder)}</svg>\n')


def main():
    parser = argparse.ArgumentParser(description="Makes the pictures of docs/photometry.md.")
    parser.add_argument("rba", type=pathlib.Path, help="the built program")
    parser.add_argument("--out", type=pathlib.Path, default=ROOT / "docs/images",
                        help="folder to write to")
    arguments = parser.parse_args()
    rba, out = arguments.rba.resolve(), arguments.out
    out.mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory() as folder:
        (out / "photometry-grid.svg").write_text(grid_svg(rba, pathlib.Path(folder)),
                                                 encoding="utf-8")
    subprocess.run([rba, "--quiet", "ies", "plot", SAMPLES / "street.ies",
                    out / "polar-street.svg"], check=True)


if __name__ == "__main__":
    main()
