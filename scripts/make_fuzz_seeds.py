#!/usr/bin/env python3
"""Makes the seeds of the fuzzers in tests/fuzz/seeds and tests/fuzz/photometry_seeds.

    scripts/make_fuzz_seeds.py              makes all of them
    scripts/make_fuzz_seeds.py --out DIR    writes those folders elsewhere

A seed is a tiny file named <format>_<what>.<extension>. Each is there for something that a reader
does differently: a compression, a layout, an attribute. Every run writes the same bytes, except that
deflated ones follow the version of zlib.
"""

import argparse
import pathlib
import struct
import zlib

import icc
import image_writers as write
import seed_jpeg as jpeg
import simple_writers as seed

FUZZ = pathlib.Path(__file__).resolve().parent.parent / "tests/fuzz"

WIDTH, HEIGHT = 12, 5


def sample(x, y, channel):
    """Runs of equal samples on the left, steps on the right."""
    return (max(0, x - WIDTH // 2) * 23 + y * 37 + channel * 61) & 255


def rows(channels, width=WIDTH, height=HEIGHT, sample_bytes=1):
    """Interleaved rows; the second byte of wide samples differs from the first."""
    return [b"".join(bytes([sample(x, y, c)] + [7 * x & 255] * (sample_bytes - 1))
                     for x in range(width) for c in range(channels)) for y in range(height)]


def planes(channels, sample_bytes=1):
    return [[row[c * sample_bytes::channels] if sample_bytes == 1 else
             b"".join(seed.split(row, sample_bytes)[c::channels])
             for row in rows(channels, sample_bytes=sample_bytes)] for c in range(channels)]


PALETTE = [(0, 0, 0), (255, 0, 0), (0, 255, 0), (20, 40, 200)]
INDICES = [bytes((x // 3 + y) % 4 for x in range(WIDTH)) for y in range(HEIGHT)]


def packed(indices, bits):
    """Indices of 1, 2 or 4 bits, the first in the top bits of a byte."""
    text = "".join(format(i, f"0{bits}b") for i in indices)
    text += "0" * (-len(text) % 8)
    return int(text, 2).to_bytes(len(text) // 8, "big")


# --- one function a format: name of the variant to bytes ------------------------------------------

def png():
    plte = (b"PLTE", bytes(v for color in PALETTE for v in color))
    profile = write.profile_chunk("seed", icc.srgb_profile())
    return {
        "rgb": write.png(WIDTH, rows(3), write.RGB, chunks=[write.resolution_chunk(2835)]),
        "rgba16": write.png(WIDTH, rows(4, sample_bytes=2), write.RGBA, 16),
        "profile": write.png(WIDTH, rows(3), write.RGB, chunks=[profile]),
        "grey_transparent": write.png(WIDTH, rows(1), write.GREY, chunks=[(b"tRNS", b"\0\x25")]),
        "palette2": write.png(WIDTH, [packed(r, 2) for r in INDICES], write.PALETTE, 2,
                              [plte, (b"tRNS", b"\x80\x40")]),
        "bilevel": write.png(WIDTH, [packed([i & 1 for i in r], 1) for r in INDICES], write.GREY, 1),
        "interlaced": seed.png_interlaced(rows(1, 9, 9)),
    }


def jpg():
    def block(c):
        return [8 * c - 9, c, -2, 0, 3]

    grey = [[[block(c)]] for c in range(4)]
    halved = [[[block(c), block(c + 1), block(2), block(0)], [block(1)], [block(3)]]
              for c in range(2)]
    plain = [[[block(c)], [block(1)], [block(2)]] for c in range(2)]
    ink = [[[block(c)], [block(1)], [block(2)], [block(3)]] for c in range(2)]
    return {
        "grey": jpeg.jpeg(30, 8, [(1, 1)], grey, before=jpeg.exif_resolution(150)),
        "halved": jpeg.jpeg(20, 13, [(2, 2), (1, 1), (1, 1)], halved, before=jpeg.jfif(1, 96, 96),
                            restart=1),
        "progressive": jpeg.jpeg(11, 8, [(1, 1)] * 3, plain, jpeg.PROGRESSIVE),
        "cmyk": jpeg.jpeg(16, 8, [(1, 1)] * 4, ink, before=jpeg.adobe(0)),
        "ycck": jpeg.jpeg(16, 8, [(1, 1)] * 4, ink, before=jpeg.adobe(2)),
    }


def tif():
    def fields(channels, photometric, bits=8, coding=1, **more):
        result = {256: (seed.LONG, [WIDTH]), 257: (seed.LONG, [HEIGHT]),
                  258: (seed.SHORT, [bits] * channels), 259: (seed.SHORT, [coding]),
                  262: (seed.SHORT, [photometric]), 277: (seed.SHORT, [channels]),
                  278: (seed.LONG, [HEIGHT])}
        result.update({int(tag[1:]): value for tag, value in more.items()})
        return result

    rgb = b"".join(rows(3))
    floats = b"".join(struct.pack("<f", x / 8 - y) for y in range(HEIGHT) for x in range(WIDTH))
    halves = b"".join(struct.pack("<e", x / 8 - y) for y in range(HEIGHT) for x in range(WIDTH))
    colors = [256 * PALETTE[i % 4][c] + i for c in range(3) for i in range(16)]
    tiles = [write.lzw(b"".join(write.horizontal_differences(r, 3) for r in tile))
             for tile in write.tiles_of(WIDTH, rows(3), 3, 16)]
    white_fax = b"\xF8\x00\x10\x01"  # a bit a row: as the one above; then the end of the block
    return {
        "rgb": write.tiff(">", WIDTH, HEIGHT, 3, write.PHOTOMETRIC_RGB, [rgb],
                          resolution=(300, write.UNIT_INCH)),
        "lzw_tiles": write.tiff("<", WIDTH, HEIGHT, 3, write.PHOTOMETRIC_RGB, tiles, 5, 16, 2),
        "cmyk_deflate": write.tiff("<", WIDTH, HEIGHT, 4, write.SEPARATED,
                                   [zlib.compress(b"".join(rows(4)), 9)], 8),
        "packbits_16": seed.tiff(fields(1, 1, 16, 32773),
                                 [b"".join(map(seed.pack_bits, rows(1, sample_bytes=2)))], ">"),
        "planar": seed.tiff(fields(3, 2, x284=(seed.SHORT, [2])),
                            [b"".join(plane) for plane in planes(3)]),
        "palette4": seed.tiff(fields(1, 3, 4, x320=(seed.SHORT, colors)),
                              [b"".join(packed(r, 4) for r in INDICES)]),
        "fax": seed.tiff(fields(1, 0, 1, 4), [white_fax]),
        "float": seed.tiff(fields(1, 1, 32, x339=(seed.SHORT, [3])), [floats]),
        "half_deflate": seed.tiff(fields(1, 1, 16, 8, x339=(seed.SHORT, [3])),
                                  [zlib.compress(halves, 9)]),
        "lab": seed.tiff(fields(3, 8), [rgb]),
        "ycbcr": seed.tiff(fields(3, 6, x530=(seed.SHORT, [1, 1])), [rgb]),
        "rgba_strips": seed.tiff(fields(4, 2, x338=(seed.SHORT, [2]), x278=(seed.LONG, [2])),
                                 [b"".join(rows(4)[y:y + 2]) for y in range(0, HEIGHT, 2)]),
    }


def exr():
    def number(x, y, c):
        return sample(x, y, c) / 64 - 1

    def channels(names, width=WIDTH, height=HEIGHT):
        return {n: [[number(x, y, i) for x in range(width)] for y in range(height)]
                for i, n in enumerate(names)}

    result = {
        "half_zip": write.exr(WIDTH, HEIGHT, channels("RGB"), "e", write.ZIP),
        "float": write.exr(WIDTH, HEIGHT, channels("RGBA"), "f", write.UNCOMPRESSED),
        "luminance": write.exr(WIDTH, HEIGHT, channels("Y"), "e", write.ZIP),
    }
    # A block that does not shrink is stored as it is, under every compression.
    plain = write.exr(3, 1, channels("RGB", 3, 1), "e", write.UNCOMPRESSED)
    before = b"compression\0compression\0" + struct.pack("<I", 1)
    at = plain.index(before) + len(before)
    for name, code in (("rle", 1), ("piz", 4), ("pxr24", 5), ("b44", 6), ("dwaa", 8)):
        result["stored_" + name] = plain[:at] + bytes((code,)) + plain[at + 1:]
    return result


def hdr():
    light = [[tuple(sample(x, y, c) / 32 for c in range(3)) for x in range(WIDTH)]
             for y in range(HEIGHT)]
    pixels = b"".join(write.rgbe(p) for p in light[1][:4]) + b"\1\1\1\2"
    return {
        "rle": write.radiance(WIDTH, light),
        "xyz_pixels": b"#?RADIANCE\nFORMAT=32-bit_rle_xyze\nEXPOSURE=2\n\n-Y 1 +X 6\n" + pixels,
    }


def sgi():
    return {
        "rgb": seed.sgi(planes(3)),
        "grey_alpha_rle": seed.sgi(planes(2), coded=True),
        "rgba_rle16": seed.sgi(planes(4, 2), 2, coded=True),
        "grey16": seed.sgi(planes(1, 2), 2),
    }


def pic():
    colors = rows(3)
    return {
        "mixed_alpha": seed.pic(WIDTH, HEIGHT, [(seed.PIC_MIXED, 0xE0), (seed.PIC_PURE, 0x10)],
                                list(zip(colors, rows(1)))),
        "plain": seed.pic(WIDTH, HEIGHT, [(seed.PIC_PLAIN, 0xE0)], [(r,) for r in colors]),
        "channels": seed.pic(WIDTH, HEIGHT, [(seed.PIC_PURE, 0x40), (seed.PIC_MIXED, 0xA0)],
                             list(zip(rows(1), rows(2)))),
        "long_run": seed.pic(200, 1, [(seed.PIC_MIXED, 0xF0)], [(b"\1\2\3\4" * 200,)]),
    }


def bmp():
    palette = b"".join(bytes((b, g, r, 0)) for r, g, b in PALETTE)
    masks565, masks8888 = (0xF800, 0x7E0, 0x1F), (0xFF0000, 0xFF00, 0xFF, 0xFF000000)
    nibbles = b"".join(b"".join(bytes((n, v * 17)) for n, v in seed.runs_of(r, 255)) + b"\0\0"
                       for r in reversed(INDICES))[:-2] + b"\0\1"
    return {
        "rgb": seed.bmp(WIDTH, HEIGHT, 24, seed.bmp_rows(rows(3))),
        "top_first": seed.bmp(WIDTH, -HEIGHT, 24, seed.bmp_rows(rows(3))),
        "palette8": seed.bmp(WIDTH, HEIGHT, 8, seed.bmp_rows(INDICES), palette=palette),
        "palette4": seed.bmp(WIDTH, HEIGHT, 4, seed.bmp_rows([packed(r, 4) for r in INDICES]),
                             palette=palette),
        "bilevel": seed.bmp(WIDTH, HEIGHT, 1,
                            seed.bmp_rows([packed([i & 1 for i in r], 1) for r in INDICES]),
                            palette=palette[:8]),
        "rle8": seed.bmp(WIDTH, HEIGHT, 8, seed.rle8(INDICES), seed.BMP_RLE8, palette),
        "rle4": seed.bmp(WIDTH, HEIGHT, 4, nibbles, seed.BMP_RLE4, palette),
        "rgb565": seed.bmp(WIDTH, HEIGHT, 16, seed.bmp_rows(rows(2)), seed.BMP_MASKS,
                           masks=masks565),
        "rgba_v5": seed.bmp(WIDTH, HEIGHT, 32, seed.bmp_rows(rows(4)), seed.BMP_MASKS,
                            masks=masks8888, header=124),
        "os2": seed.bmp_os2(WIDTH, HEIGHT, INDICES,
                            b"".join(bytes((b, g, r)) for r, g, b in PALETTE) + bytes(252 * 3)),
    }


def tga():
    palette = b"".join(bytes((b, g, r)) for r, g, b in PALETTE)
    indices = b"".join(INDICES)
    return {
        "rgb": seed.tga(WIDTH, HEIGHT, seed.TGA_COLOR, 24, b"".join(rows(3)), footer=True),
        "rgba_rle": seed.tga(WIDTH, HEIGHT, seed.TGA_COLOR | seed.TGA_CODED, 32, b"".join(rows(4)),
                             flags=seed.TGA_TOP_FIRST | 8),
        "grey": seed.tga(WIDTH, HEIGHT, seed.TGA_GREY, 8, b"".join(rows(1))),
        "grey_rle": seed.tga(WIDTH, HEIGHT, seed.TGA_GREY | seed.TGA_CODED, 8, b"".join(rows(1))),
        "palette": seed.tga(WIDTH, HEIGHT, seed.TGA_PALETTE, 8, indices, palette, 24),
        "palette_rle": seed.tga(WIDTH, HEIGHT, seed.TGA_PALETTE | seed.TGA_CODED, 8, indices,
                                palette, 24),
        "rgb555": seed.tga(WIDTH, HEIGHT, seed.TGA_COLOR, 16, b"".join(rows(2)), flags=1),
    }


def psd():
    def stored(channels, sample_bytes=1):
        return [row for plane in planes(channels, sample_bytes) for row in plane]

    colors = bytes(PALETTE[i % 4][c] for c in range(3) for i in range(256))
    return {
        "rgb": seed.psd(WIDTH, HEIGHT, 3, 8, seed.PSD_RGB, stored(3)),
        "rgba_rle": seed.psd(WIDTH, HEIGHT, 4, 8, seed.PSD_RGB, stored(4), coded=True),
        "grey16": seed.psd(WIDTH, HEIGHT, 1, 16, seed.PSD_GREY, stored(1, 2)),
        "cmyk_rle": seed.psd(WIDTH, HEIGHT, 4, 8, seed.PSD_CMYK, stored(4), coded=True),
        "indexed": seed.psd(WIDTH, HEIGHT, 1, 8, seed.PSD_INDEXED, INDICES, colors=colors),
        "bitmap": seed.psd(WIDTH, HEIGHT, 1, 1, seed.PSD_BITMAP,
                           [packed([i & 1 for i in r], 1) for r in INDICES]),
        "lab": seed.psd(WIDTH, HEIGHT, 3, 8, seed.PSD_LAB, stored(3)),
    }


def _blocks(width, height, block_bytes, salt=0):
    count = ((width + 3) // 4) * ((height + 3) // 4)
    return bytes((i * 29 + salt) & 255 for i in range(count * block_bytes))


def _levels(side):
    while side >= 1:
        yield side
        side //= 2


BGRA_MASKS = (0xFF0000, 0xFF00, 0xFF, 0xFF000000)
DXGI_RGBA16F, DXGI_BC5, DXGI_BC6H, DXGI_BC7 = 10, 83, 95, 98


def dds():
    mips = b"".join(bytes(i & 255 for i in range(4 * side * side)) for side in _levels(4))
    return {
        "dxt1": seed.dds(8, 8, _blocks(8, 8, 8), b"DXT1"),
        "dxt3": seed.dds(5, 3, _blocks(5, 3, 16), b"DXT3"),
        "dxt5_mips": seed.dds(8, 8, b"".join(_blocks(s, s, 16, s) for s in _levels(8)), b"DXT5",
                              mips=4),
        "bgra_mips": seed.dds(4, 4, mips, masks=BGRA_MASKS, bits=32, mips=3),
        "rgb565": seed.dds(4, 2, bytes(range(16)), masks=(0xF800, 0x7E0, 0x1F, 0), bits=16),
        "cube": seed.dds(2, 2, bytes(range(96)), masks=BGRA_MASKS, bits=32, cube=True),
        "cube_mips": seed.dds(4, 4, mips * 6, masks=BGRA_MASKS, bits=32, mips=3, cube=True),
        "bc5": seed.dds(4, 4, _blocks(4, 4, 16), dxgi=DXGI_BC5),
        "bc6h": seed.dds(8, 4, _blocks(8, 4, 16), dxgi=DXGI_BC6H),
        "bc7": seed.dds(8, 8, bytes(1 << i if b == 0 else 37 * (i + b) & 255
                                    for i in range(4) for b in range(16)), dxgi=DXGI_BC7),
        "half": seed.dds(2, 1, struct.pack("<8e", *range(8)), dxgi=DXGI_RGBA16F),
    }


def ktx2():
    plain = [bytes(i & 255 for i in range(4 * side * side)) for side in _levels(4)]
    blocks = [_blocks(s, s, 8, s) for s in _levels(8)]
    return {
        "rgba": seed.ktx2(seed.VK_RGBA8, 4, 4, plain),
        "rgba_zlib": seed.ktx2(seed.VK_RGBA8, 4, 4, plain, scheme=seed.KTX_ZLIB),
        "rgba_zstd": seed.ktx2(seed.VK_RGBA8, 4, 4, plain, scheme=seed.KTX_ZSTD),
        "half": seed.ktx2(seed.VK_RGBA16F, 2, 1, [struct.pack("<8e", *range(8))]),
        "bc1_zlib": seed.ktx2(seed.VK_BC1, 8, 8, blocks, scheme=seed.KTX_ZLIB),
        "bc7": seed.ktx2(seed.VK_BC7, 4, 4, [_blocks(4, 4, 16, 64)]),
        "cube": seed.ktx2(seed.VK_RGBA8, 2, 2, [bytes(range(96))], faces=6),
    }


def photometry():
    """Photometric text: every symmetry, what versions differ in, and numbers that are hard."""
    def text(vertical, horizontal, version="IESNA:LM-63-1995", keywords="[MANUFAC] Lamps\n",
             tilt="TILT=NONE\n", kind=1, lamps="1", multiplier="1", values=None):
        if values is None:
            values = [f"{100 + 37 * h + 5 * v * v}" for h in range(len(horizontal))
                      for v in range(len(vertical))]
        return (f"{version}\n{keywords}{tilt}{lamps} 1000 {multiplier} {len(vertical)} "
                f"{len(horizontal)} {kind} 2 0.1 0.2 0.3\n1.5 1 40\n{' '.join(map(str, vertical))}\n"
                f"{' '.join(map(str, horizontal))}\n{' '.join(values)}\n").encode()

    down, all_down, quarter = range(0, 91, 30), range(0, 181, 45), range(0, 91, 45)
    around = range(0, 361, 90)
    included = "TILT=INCLUDE\n1\n3\n0 90 180\n1 0.9 0.8\n"
    return {
        "axial": text(all_down, [0]),
        "quadrant": text(down, quarter, "IESNA91", "[LAMPCAT] a\n[LAMP] b\n[MORE] c\n"),
        "bilateral": text(down, range(0, 181, 60), "IES LM-63-1991", multiplier="0.5"),
        "behind": text(down, range(90, 271, 60), lamps="2"),
        "full": text(all_down, around, "A label line", ""),
        "open": text(all_down, [0, 50, 200, 340]),
        "type_b": text(range(-90, 91, 45), range(-90, 91, 45), kind=2),
        "type_a": text(down, down, kind=3),
        "tilted": text(down, [0], tilt=included),
        "commas": text(down, [0]).replace(b" ", b", "),
        "carriage_returns": text(down, quarter).replace(b"\n", b"\r\n"),
        "numbers": text([0, "9e1", "180."], [0], values=["1e38", "-1E-40", "+.5"]),
        "unordered": text([0, 60, 30, 90], [0, 200, 100, 360]),
        "equal": text([0, 45, 45, 90], [0, 90, 90, 360]),
        "one_angle": text([90], [0]),
        "none": text([], []),
    }


FORMATS = (png, jpg, tif, exr, hdr, sgi, pic, bmp, tga, psd, dds, ktx2)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--out", type=pathlib.Path, default=FUZZ)
    out = parser.parse_args().out
    for make in FORMATS:
        name = make.__name__
        write_all(out / "seeds", {f"{name}_{what}.{name}": content
                                  for what, content in make().items()})
    write_all(out / "photometry_seeds", {f"{what}.ies": content
                                         for what, content in photometry().items()})


def write_all(folder, files):
    folder.mkdir(parents=True, exist_ok=True)
    for name, content in files.items():
        (folder / name).write_bytes(content)


if __name__ == "__main__":
    main()
