#!/usr/bin/env python3
"""Makes the pictures in samples/images and the photometric files in samples/photometry.

    scripts/make_samples.py                makes all of them, in a few minutes
    scripts/make_samples.py alpha.png      makes the named ones
    scripts/make_samples.py --out DIR      writes elsewhere

Every run writes the same bytes, except that the compressed ones follow the versions of zlib and,
for studio.jpg, of ImageMagick (the only other program used). samples/README.md says what each one
shows.
"""

import argparse
import colorsys
import functools
import math
import multiprocessing
import pathlib
import subprocess
import zlib

import icc
import image_writers as write
import sample_cube as cube
import sample_photometry as photometry
import sample_scene as scene
import sample_sky as sky
import simple_writers as simple
import texture_writers as textures

SAMPLES_FOLDER = pathlib.Path(__file__).resolve().parent.parent / "samples"
STUDIO_WIDTH, STUDIO_HEIGHT, STUDIO_SAMPLES = 640, 480, 3
SKY_WIDTH, SKY_HEIGHT = 512, 256

# --- the two rendered pictures, made once for all the samples that show them ----------------------


def _studio_row(y):
    return scene.picture_row(y, STUDIO_WIDTH, STUDIO_HEIGHT, STUDIO_SAMPLES)


def _sky_row(y):
    """Looks along +z in the middle, +x to the right of it; the first row looks up."""
    down = math.pi * (y + 0.5) / SKY_HEIGHT
    turns = (2.0 * math.pi * (x + 0.5) / SKY_WIDTH - math.pi for x in range(SKY_WIDTH))
    level, up = math.sin(down), math.cos(down)
    return [sky.panorama((level * math.sin(t), up, level * math.cos(t))) for t in turns]


def _in_parallel(row, height):
    with multiprocessing.Pool() as pool:
        return pool.map(row, range(height), chunksize=4)


@functools.cache
def studio_rows():
    return _in_parallel(_studio_row, STUDIO_HEIGHT)


@functools.cache
def sky_rows():
    return _in_parallel(_sky_row, SKY_HEIGHT)


def studio_reduced(factor):
    """The studio picture with each factor x factor pixels averaged, as rows of (r, g, b)."""
    area, rows = factor * factor, studio_rows()
    reduced = []
    for y in range(0, STUDIO_HEIGHT, factor):
        sums = [[sum(rows[y + j][3 * (x + i) + c] for j in range(factor) for i in range(factor))
                 for c in range(3)] for x in range(0, STUDIO_WIDTH, factor)]
        reduced.append([tuple((s + area // 2) // area for s in pixel) for pixel in sums])
    return reduced


# --- photo-like pictures --------------------------------------------------------------------------

def studio_png():
    return write.png(STUDIO_WIDTH, studio_rows(), write.RGB, chunks=[write.resolution_chunk(11811)])


def studio_jpg():
    ppm = f"P6 {STUDIO_WIDTH} {STUDIO_HEIGHT} 255\n".encode("ascii") + b"".join(studio_rows())
    command = ["convert", "ppm:-", "-units", "PixelsPerInch", "-density", "150",
               "-quality", "90", "jpg:-"]
    return subprocess.run(command, input=ppm, stdout=subprocess.PIPE, check=True).stdout


def swapped_png():
    """Red and green change places in the pixels; the profile puts them back."""
    rows = [bytes(v for r, g, b in row for v in (g, r, b)) for row in studio_reduced(4)]
    chunks = [write.profile_chunk("Red and green swapped", icc.swapped_profile())]
    return write.png(STUDIO_WIDTH // 4, rows, write.RGB, chunks=chunks)


def tiled_tif():
    """The glass ball and its neighbours at full size; 12 tiles, 6 reach beyond the picture."""
    width, height, left, top, side = 200, 150, 380, 190, 64
    rows = [row[3 * left:3 * (left + width)] for row in studio_rows()[top:top + height]]
    tiles = [zlib.compress(b"".join(write.horizontal_differences(r, 3) for r in tile), 9)
             for tile in write.tiles_of(width, rows, 3, side)]
    return write.tiff("<", width, height, 3, write.PHOTOMETRIC_RGB, tiles, compression=8, tile=side,
                      predictor=2)


def _studio_small():
    """Rows of 160 RGB pixels, 120 of them."""
    return [bytes(v for pixel in row for v in pixel) for row in studio_reduced(4)]


def studio_bmp():
    rows = [bytes(v for r, g, b in simple.split(row, 3) for v in (b, g, r))
            for row in _studio_small()]
    return simple.bmp(160, 120, 24, simple.bmp_rows(rows))


def studio_rgb():
    return simple.sgi([[row[c::3] for row in _studio_small()] for c in range(3)], coded=True)


def studio_pic():
    return simple.pic(160, 120, [(simple.PIC_MIXED, 0xE0)], [(row,) for row in _studio_small()])


def bilevel_png():
    """The studio in black and white, the error of each pixel spread over its neighbours."""
    grey = [[(299 * r + 587 * g + 114 * b + 500) // 1000 for r, g, b in row]
            for row in studio_reduced(2)]
    width, rows = len(grey[0]), []
    carried = [0] * (width + 2)
    for line in grey:
        below, ahead, bits = [0] * (width + 2), 0, 0
        for x, value in enumerate(line):
            value += (carried[x + 1] + ahead) // 16
            white = value >= 128
            error = value - 255 * white
            ahead = 7 * error
            below[x] += 3 * error
            below[x + 1] += 5 * error
            below[x + 2] += error
            bits = bits << 1 | white
        carried = below
        rows.append(bits.to_bytes(width // 8, "big"))
    return write.png(width, rows, write.GREY, depth=1)


# --- pictures with a formula ----------------------------------------------------------------------

def gradient_16_png():
    """Red grows to the right, green downwards, blue is what is left to white of their mean."""
    width, height, rows = 320, 200, []
    for y in range(height):
        green, row = round(65535 * y / (height - 1)), b""
        for x in range(width):
            red = round(65535 * x / (width - 1))
            row += b"".join(v.to_bytes(2, "big") for v in (red, green, 65535 - (red + green) // 2))
        rows.append(row)
    return write.png(width, rows, write.RGB, depth=16)


def _iris_pixel(x, y):
    """Straight RGBA, 0 to 1: six blades around a hexagonal opening, centre (0, 0), radius 1."""
    radius, opening, edge = math.hypot(x, y), 0.34, 0.035
    sides = [x * math.cos(k * math.pi / 3 + 0.3) + y * math.sin(k * math.pi / 3 + 0.3) - opening
             for k in range(6)]
    blade = next((k for k in range(6) if sides[k] > 0.0 >= sides[(k + 1) % 6]),
                 sides.index(max(sides)))  # the soft rim inside the opening
    overlap = -sides[(blade + 1) % 6]  # distance to the blade that lies on this one
    light = 0.62 + 0.38 * sky.smooth(0.0, 0.30, overlap)
    light *= 1.0 - 0.18 * sky.smooth(0.5, 1.0, radius)
    hue = (0.60, 0.55, 0.50, 0.10, 0.06, 0.66)[blade]
    red, green, blue = colorsys.hsv_to_rgb(hue, 0.78, light)
    alpha = 1.0 - sky.smooth(0.97 - 2.0 * edge, 0.97, radius)
    return red, green, blue, alpha * sky.smooth(-edge, edge, max(sides))


def _iris_rows(size):
    half = size / 2.0
    return [bytes(int(255.0 * v + 0.5) for x in range(size)
                  for v in _iris_pixel((x + 0.5) / half - 1.0, (y + 0.5) / half - 1.0))
            for y in range(size)]


def alpha_png():
    return write.png(256, _iris_rows(256), write.RGBA)


def alpha_tga():
    pixels = b"".join(bytes((b, g, r, a)) for row in _iris_rows(128)
                      for r, g, b, a in simple.split(row, 4))
    return simple.tga(128, 128, simple.TGA_COLOR | simple.TGA_CODED, 32, pixels,
                      flags=simple.TGA_TOP_FIRST | 8, footer=True)


def grey_tif():
    """Domes of 30 pixels radius, raised and sunk in turn, every 64 pixels: a height map."""
    def height(x, y):
        square = ((x % 64 - 31.5)**2 + (y % 64 - 31.5)**2) / 900.0
        sign = 1 if (x // 64 + y // 64) % 2 == 0 else -1
        return round(128 + sign * 112 * math.sqrt(max(0.0, 1.0 - square)))

    rows = b"".join(bytes(height(x, y) for x in range(256)) for y in range(256))
    return write.tiff(">", 256, 256, 1, write.MIN_IS_BLACK, [rows], resolution=(100, write.UNIT_CM))


def palette_png():
    """A wheel of 12 hues in 4 rings, the outer one half transparent; entry 0 is empty ground."""
    hsv = [(hue / 12, 0.35 + 0.2 * ring, 1.0 - 0.08 * ring)
           for ring in range(4) for hue in range(12)]
    colours = [(0, 0, 0)] + [tuple(round(255 * v) for v in colorsys.hsv_to_rgb(*c)) for c in hsv]
    opacity = bytes([0] + [255] * 36 + [128] * 12)

    def entry(x, y):
        x, y = x - 63.5, y - 63.5
        ring = int(math.hypot(x, y) // 15)
        return 0 if ring > 3 else 1 + 12 * ring + int((math.atan2(y, x) / math.tau % 1.0) * 12)

    rows = [bytes(entry(x, y) for x in range(128)) for y in range(128)]
    chunks = [(b"PLTE", bytes(v for c in colours for v in c)), (b"tRNS", opacity)]
    return write.png(128, rows, write.PALETTE, chunks=chunks)


def wide_gamut_png():
    """Patches of 24 pixels: green to cyan, each row below with a quarter less saturation."""
    hues = [(128, 255, 0), (64, 255, 0), (0, 255, 0), (0, 255, 64), (0, 255, 128), (0, 255, 192),
            (0, 255, 255), (0, 192, 255)]
    rows = []
    for quarters in (4, 3, 2, 1):
        patches = [bytes(128 + (v - 128) * quarters // 4 for v in hue) for hue in hues]
        rows += [b"".join(patch * 24 for patch in patches)] * 24
    chunks = [write.profile_chunk("Wide RGB", icc.wide_profile())]
    return write.png(24 * len(hues), rows, write.RGB, chunks=chunks)


CMYK_WIDTH, CMYK_HEIGHT = 128, 96


def _ink_rows():
    """Ramps of the four inks, 12 rows each, over cyan against yellow with magenta downwards."""
    width, height = CMYK_WIDTH, CMYK_HEIGHT
    rows = [bytes(2 * x if ink == y // 12 else 0 for x in range(width) for ink in range(4))
            for y in range(48)]
    rows += [bytes(v for x in range(width) for v in (2 * x, 5 * (y - 48), 255 - 2 * x, 0))
             for y in range(48, height)]
    return rows


def cmyk_tif():
    strip = write.lzw(b"".join(_ink_rows()))
    return write.tiff("<", CMYK_WIDTH, CMYK_HEIGHT, 4, write.SEPARATED, [strip], compression=5)


def cmyk_psd():
    """Plane by plane; 255 is no ink."""
    planes = [bytes(255 - v for v in row[ink::4]) for ink in range(4) for row in _ink_rows()]
    return simple.psd(CMYK_WIDTH, CMYK_HEIGHT, 4, 8, simple.PSD_CMYK, planes, coded=True)


# --- light in numbers -----------------------------------------------------------------------------

def sky_hdr():
    return write.radiance(SKY_WIDTH, sky_rows())


def sky_half_exr():
    channels = {name: [[pixel[c] for pixel in row] for row in sky_rows()]
                for c, name in enumerate("RGB")}
    return write.exr(SKY_WIDTH, SKY_HEIGHT, channels, "e", write.ZIP)


def depth_float_exr():
    """How far the studio's pixels lie along the viewing axis, 1 for 30 metres and beyond."""
    width, height = 160, 120

    def relative(x, y):
        metres = scene.depth(x + 0.5, y + 0.5, width, height)
        return 1.0 if metres is None else min(metres / 30.0, 1.0)

    rows = [[relative(x, y) for x in range(width)] for y in range(height)]
    return write.exr(width, height, {"Y": rows}, "f", write.UNCOMPRESSED)


# --- textures -------------------------------------------------------------------------------------

def _cube_faces(side):
    return [cube.face(name, side) for name in cube.FACES]


def cube_dds():
    return textures.dds([[rows] for rows in _cube_faces(64)], textures.bgra)


def cube_mips_dds():
    return textures.dds([textures.levels(rows) for rows in _cube_faces(128)], textures.bc1)


def cube_mips_ktx2():
    return textures.ktx2([textures.levels(rows) for rows in _cube_faces(64)])


def grating_mips_dds():
    """Perforated sheet metal: round holes in staggered rows, lit from the upper left."""
    width, height, pitch = 128, 96, 16.0

    def texel(x, y):
        row = math.floor(y / pitch)
        across = (x + 0.5 * pitch * (row % 2)) % pitch - 0.5 * pitch
        down = y % pitch - 0.5 * pitch
        distance = math.hypot(across, down)
        rim = sky.smooth(4.6, 5.4, distance) * (1.0 - sky.smooth(5.6, 7.4, distance))
        light = 0.70 + 0.10 * math.sin(0.05 * x + 0.11 * y)
        light += 0.28 * rim * (across + down) / (1.5 * pitch)
        metal = tuple(int(255.0 * min(light * c, 1.0) + 0.5) for c in (0.90, 0.93, 1.0))
        return (*metal, int(255.0 * sky.smooth(4.4, 5.2, distance) + 0.5))

    rows = [[texel(x + 0.5, y + 0.5) for x in range(width)] for y in range(height)]
    return textures.dds([textures.levels(rows)], textures.bgra)


SAMPLES = {
    "studio.png": studio_png, "studio.jpg": studio_jpg, "gradient-16.png": gradient_16_png,
    "alpha.png": alpha_png, "grey.tif": grey_tif, "palette.png": palette_png,
    "studio.bmp": studio_bmp, "alpha.tga": alpha_tga, "cmyk.psd": cmyk_psd,
    "studio.rgb": studio_rgb, "studio.pic": studio_pic, "bilevel.png": bilevel_png, "sky.hdr": sky_hdr, "sky-half.exr": sky_half_exr,
    "depth-float.exr": depth_float_exr, "swapped.png": swapped_png,
    "wide-gamut.png": wide_gamut_png, "cmyk.tif": cmyk_tif, "tiled.tif": tiled_tif,
    "cube.dds": cube_dds, "cube-mips.dds": cube_mips_dds, "cube-mips.ktx2": cube_mips_ktx2,
    "grating-mips.dds": grating_mips_dds,
    "street.ies": photometry.street, "downlight.ies": photometry.downlight,
    "wall-washer.ies": photometry.wall_washer,
}


def folder_of(name):
    return SAMPLES_FOLDER / ("photometry" if name.endswith(".ies") else "images")


def main():
    parser = argparse.ArgumentParser(description="Makes the files in samples.")
    parser.add_argument("names", nargs="*", metavar="NAME", help="a file to make; default: all")
    parser.add_argument("--out", type=pathlib.Path, metavar="DIR",
                        help="write all of them there; default: their folders in samples")
    arguments = parser.parse_args()
    unknown = [name for name in arguments.names if name not in SAMPLES]
    if unknown:
        parser.error(f"no such sample: {', '.join(unknown)}; there are {', '.join(SAMPLES)}")
    for name in arguments.names or SAMPLES:
        data = SAMPLES[name]()
        folder = arguments.out or folder_of(name)
        folder.mkdir(parents=True, exist_ok=True)
        (folder / name).write_bytes(data)
        print(f"{name}: {len(data)} bytes")


if __name__ == "__main__":
    main()
