#!/usr/bin/env python3
"""Makes the pictures of docs/textures.md from the cube map of the samples.

    scripts/make_texture_pictures.py RBA             RBA is the built program, build/.../bin/rba
    scripts/make_texture_pictures.py RBA --out DIR   writes elsewhere
"""

import argparse
import pathlib
import subprocess
import tempfile

import image_writers as write
import sample_cube as cube
import texture_writers as textures

ROOT = pathlib.Path(__file__).resolve().parent.parent
SIDE = 160       # pixels of a face in the mirror balls
CROSS_SIDE = 88  # and in the cross
GAP = 2
# Where faces stand in the cross: column and row.
CROSS = {"+Y": (1, 0), "-X": (0, 1), "+Z": (1, 1), "+X": (2, 1), "-Z": (3, 1), "-Y": (1, 2)}


def cross_png():
    """All faces side by side as they fit together, on nothing."""
    step = CROSS_SIDE + GAP
    width, height = 4 * step - GAP, 3 * step - GAP
    rows = [bytearray(4 * width) for _ in range(height)]
    for name, (column, row) in CROSS.items():
        left, top = 4 * step * column, step * row
        for y, line in enumerate(cube.face(name, CROSS_SIDE)):
            rows[top + y][left:left + 4 * CROSS_SIDE] = textures.rgba([line])
    return write.png(width, [bytes(row) for row in rows], write.RGBA)


def face_png(rows):
    return write.png(SIDE, [textures.rgba([row]) for row in rows], write.RGBA)


def doubled(rows):
    """Twice the size, so that the picture is its level 1."""
    return [[texel for texel in row for _ in (0, 1)] for row in rows for _ in (0, 1)]


def main():
    parser = argparse.ArgumentParser(description="Makes the pictures of docs/textures.md.")
    parser.add_argument("rba", type=pathlib.Path, help="the built program")
    parser.add_argument("--out", type=pathlib.Path, default=ROOT / "docs/images",
                        help="folder to write to")
    arguments = parser.parse_args()

    def rba(*words):
        subprocess.run([arguments.rba, "image", *words], check=True)

    (arguments.out / "cube-cross.png").write_bytes(cross_png())
    rba("dds", ROOT / "samples/images/cube-mips.ktx2", "--sheet",
        arguments.out / "texture-sheet.png")
    faces = {name: cube.face(name, SIDE) for name in cube.FACES}
    with tempfile.TemporaryDirectory() as folder:
        scratch = pathlib.Path(folder)
        plain, levels = scratch / "plain.dds", scratch / "levels.dds"
        plain.write_bytes(textures.dds([[rows] for rows in faces.values()], textures.bgra))
        levels.write_bytes(textures.dds(
            [[doubled(rows), *textures.levels(rows)] for rows in faces.values()], textures.bgra))
        rba("mirror-ball", plain, arguments.out / "ball-cube.png")
        rba("mirror-ball", levels, arguments.out / "ball-cube-mips.png")
        faces["-Z"] = [row[::-1] for row in faces["-Z"]]
        order = []
        for name in ("-Y", "+Y", "+X", "-X", "-Z", "+Z"):
            order.append(scratch / f"{len(order) + 1}.png")
            order[-1].write_bytes(face_png(faces[name]))
        rba("mirror-ball", *order, arguments.out / "ball-six.png")


if __name__ == "__main__":
    main()
