"""Writers of small files for scripts/make_samples.py and scripts/make_fuzz_seeds.py, a function a
format: bmp, tga, psd, sgi, pic, tif with any fields, dds and ktx2.

Samples come as bytes, top row first, as the format has them within a row. What a format repeats or
compresses is coded the simplest way that is right.
"""

import struct
import zlib


def runs_of(pixels, longest):
    """(count, pixel) for equal neighbours."""
    start = 0
    while start < len(pixels):
        end = start
        while end < len(pixels) and end - start < longest and pixels[end] == pixels[start]:
            end += 1
        yield end - start, pixels[start]
        start = end


def split(row, size):
    return [row[i:i + size] for i in range(0, len(row), size)]


def pack_bits(row):
    """Apple's PackBits: 257 - n and a byte for n equal ones, n - 1 and the bytes as they are."""
    return b"".join(bytes((257 - n, v)) if n > 1 else bytes((0, v)) for n, v in runs_of(row, 128))


# --- SGI and Softimage ----------------------------------------------------------------------------

def sgi(planes, sample_bytes=1, coded=False):
    """planes: for each channel its rows, top first."""
    height, width = len(planes[0]), len(planes[0][0]) // sample_bytes
    head = struct.pack(">HBBHHHHIII80sI", 474, coded, sample_bytes, 3, width, height, len(planes),
                       0, 255 if sample_bytes == 1 else 65535, 0, b"seed", 0).ljust(512, b"\0")
    stored = [row for plane in planes for row in reversed(plane)]
    if not coded:
        return head + b"".join(stored)
    count = struct.Struct(">B" if sample_bytes == 1 else ">H")
    rows = [b"".join(count.pack(n) + v for n, v in runs_of(split(row, sample_bytes), 127))
            + count.pack(0) for row in stored]
    offsets, at = [], 512 + 8 * len(rows)
    for row in rows:
        offsets.append(at)
        at += len(row)
    return head + struct.pack(f">{2 * len(rows)}I", *offsets, *map(len, rows)) + b"".join(rows)


PIC_PLAIN, PIC_PURE, PIC_MIXED = 0, 1, 2


def pic(width, height, packets, scanlines):
    """packets: (coding, mask) each; scanlines: for each one the pixels of each packet."""
    out = struct.pack(">If80s4sHHfHH", 0x5380F634, 3.5, b"seed", b"PICT", width, height, 1, 3, 0)
    for i, (coding, mask) in enumerate(packets):
        out += bytes((i + 1 < len(packets), 8, coding, mask))
    for scanline in scanlines:
        for (coding, mask), pixels in zip(packets, scanline):
            size = bin(mask).count("1")
            if coding == PIC_PLAIN:
                out += pixels
                continue
            for n, pixel in runs_of(split(pixels, size), 255):
                if coding == PIC_PURE:
                    out += bytes((n,)) + pixel
                elif n > 128:
                    out += struct.pack(">BH", 128, n) + pixel
                else:
                    out += bytes((127 + n if n > 1 else 0,)) + pixel
    return out


# --- BMP ------------------------------------------------------------------------------------------

BMP_PLAIN, BMP_RLE8, BMP_RLE4, BMP_MASKS = 0, 1, 2, 3


def bmp(width, height, bits, data, coding=BMP_PLAIN, palette=b"", masks=(), header=40):
    """data: rows with their padding, bottom row first unless the height is negative."""
    info = struct.pack("<IiiHHIIiiII", header, width, height, 1, bits, coding, len(data), 2835, 2835,
                       len(palette) // 4, 0)
    fields = struct.pack(f"<{len(masks)}I", *masks)
    if header > 40:  # the masks belong to the header, then colour space and the like
        info, fields = (info + fields.ljust(16, b"\0") + b"BGRs").ljust(header, b"\0"), b""
    offset = 14 + len(info) + len(fields) + len(palette)
    file = struct.pack("<2sIHHI", b"BM", offset + len(data), 0, 0, offset)
    return file + info + fields + palette + data


def bmp_rows(rows):
    return b"".join(row + bytes(-len(row) % 4) for row in reversed(rows))


def bmp_os2(width, height, rows, palette):
    """The older header of 12 bytes; palette of three bytes a colour."""
    info = struct.pack("<IHHHH", 12, width, height, 1, 8)
    data, offset = bmp_rows(rows), 14 + 12 + len(palette)
    return struct.pack("<2sIHHI", b"BM", offset + len(data), 0, 0, offset) + info + palette + data


def rle8(rows):
    out = b"".join(b"".join(bytes(run) for run in runs_of(row, 255)) + b"\0\0"
                   for row in reversed(rows))
    return out[:-2] + b"\0\1"


# --- TGA ------------------------------------------------------------------------------------------

TGA_PALETTE, TGA_COLOR, TGA_GREY, TGA_CODED = 1, 2, 3, 8
TGA_TOP_FIRST = 0x20


def tga(width, height, kind, bits, pixels, palette=b"", palette_bits=0, flags=0, footer=False):
    colors = len(palette) * 8 // palette_bits if palette else 0
    out = struct.pack("<BBBHHBHHHHBB", 4, colors > 0, kind, 0, colors, palette_bits, 0, 0, width,
                      height, bits, flags) + b"seed" + palette
    pixels = split(pixels, bits // 8)
    if kind & TGA_CODED:
        for row in split(pixels, width):
            out += b"".join(bytes((127 + n if n > 1 else 0,)) + p for n, p in runs_of(row, 128))
    else:
        out += b"".join(pixels)
    return out + (bytes(8) + b"TRUEVISION-XFILE.\0" if footer else b"")


# --- PSD ------------------------------------------------------------------------------------------

PSD_BITMAP, PSD_GREY, PSD_INDEXED, PSD_RGB, PSD_CMYK, PSD_LAB = 0, 1, 2, 3, 4, 9


def psd(width, height, channels, depth, mode, rows, coded=False, colors=b"", per_inch=72):
    """rows: of all channels, one channel after the other."""
    head = struct.pack(">4sH6xHIIHH", b"8BPS", 1, channels, height, width, depth, mode)
    resolution = struct.pack(">IHHIHH", per_inch << 16, 1, 1, per_inch << 16, 1, 1)
    resource = b"8BIM" + struct.pack(">HHI", 1005, 0, len(resolution)) + resolution
    out = head + struct.pack(">I", len(colors)) + colors
    out += struct.pack(">I", len(resource)) + resource + struct.pack(">I", 0)
    if not coded:
        return out + struct.pack(">H", 0) + b"".join(rows)
    packed = [pack_bits(row) for row in rows]
    lengths = struct.pack(f">{len(packed)}H", *map(len, packed))
    return out + struct.pack(">H", 1) + lengths + b"".join(packed)


# --- TIFF with any fields -------------------------------------------------------------------------

SHORT, LONG, RATIONAL = 3, 4, 5


def tiff(fields, blocks, order="<", tiled=False):
    """fields: tag to (type, values); places and sizes of the strips (or tiles) are added."""
    at, places = 8, []
    for block in blocks:
        places.append(at)
        at += len(block) + len(block) % 2
    fields = {**fields, (324 if tiled else 273): (LONG, places),
              (325 if tiled else 279): (LONG, [len(b) for b in blocks])}
    data = b"".join(b + bytes(len(b) % 2) for b in blocks)
    spill_at, entries, spill = at + 2 + 12 * len(fields) + 4, b"", b""
    for tag in sorted(fields):
        kind, values = fields[tag]
        content = struct.pack(f"{order}{len(values)}{'H' if kind == SHORT else 'I'}", *values)
        count = len(values) // 2 if kind == RATIONAL else len(values)
        entries += struct.pack(order + "HHI", tag, kind, count)
        if len(content) <= 4:
            entries += content.ljust(4, b"\0")
        else:
            entries += struct.pack(order + "I", spill_at + len(spill))
            spill += content + bytes(len(content) % 2)
    head = (b"II" if order == "<" else b"MM") + struct.pack(order + "HI", 42, at)
    return head + data + struct.pack(order + "H", len(fields)) + entries + bytes(4) + spill


# --- DDS ------------------------------------------------------------------------------------------

DDS_CUBE, DDS_ALL_FACES = 0x200, 0xFC00


def dds(width, height, data, four_cc=b"", masks=None, bits=0, mips=1, cube=False, dxgi=0):
    """masks: (r, g, b, a) for plain pixels of `bits`; dxgi: number of the format in a DX10 header."""
    alpha = bool(masks and masks[3])
    flags = 4 if masks is None else 0x40 | alpha
    pixel_format = struct.pack("<II4sI4I", 32, flags, b"DX10" if dxgi else four_cc, bits,
                               *(masks or (0, 0, 0, 0)))
    caps = 0x1000 | (0x400008 if mips > 1 else 0) | (8 if cube else 0)
    head = struct.pack("<4sIIIIIII44x", b"DDS ", 124, 0x1007 | (0x20000 if mips > 1 else 0), height,
                       width, 0, 0, mips)
    head += pixel_format
    head += struct.pack("<IIIII", caps, DDS_CUBE | DDS_ALL_FACES if cube else 0, 0, 0, 0)
    if dxgi:
        head += struct.pack("<IIIII", dxgi, 3, 4 if cube else 0, 1, 0)
    return head + data


# --- KTX2 -----------------------------------------------------------------------------------------

KTX_NONE, KTX_ZSTD, KTX_ZLIB = 0, 2, 3
VK_RGBA8, VK_RGBA16F, VK_BC1, VK_BC7 = 37, 97, 131, 145

# Data format descriptors: colour model, bytes of a block, texel block sides less one, and for each
# sample its first bit, bits less one, channel with qualifiers, lower and upper.
_DESCRIPTORS = {
    VK_RGBA8: (1, 4, 0, [(8 * i, 7, c, 0, 255) for i, c in enumerate((0, 1, 2, 15))]),
    VK_RGBA16F: (1, 8, 0, [(16 * i, 15, c | 0xC0, 0xBF800000, 0x3F800000)
                           for i, c in enumerate((0, 1, 2, 15))]),
    VK_BC1: (128, 8, 3, [(0, 63, 0, 0, 0xFFFFFFFF)]),
    VK_BC7: (134, 16, 3, [(0, 127, 0, 0, 0xFFFFFFFF)]),
}


def _descriptor(vk_format):
    model, block_bytes, side, samples = _DESCRIPTORS[vk_format]
    size = 24 + 16 * len(samples)
    out = struct.pack("<IIHHBBBB", size + 4, 0, 2, size, model, 1, 1, 0)
    out += bytes((side, side, 0, 0, block_bytes)) + bytes(7)
    for first, bits, channel, lower, upper in samples:
        out += struct.pack("<HBB4xII", first, bits, channel, lower, upper)
    return out


def zstd_raw(data):
    """A Zstandard frame (RFC 8878) of one raw block, up to 255 bytes."""
    return (struct.pack("<IBB", 0xFD2FB528, 0x20, len(data))
            + (len(data) << 3 | 1).to_bytes(3, "little") + data)


def ktx2(vk_format, width, height, levels, faces=1, scheme=KTX_NONE):
    """levels: bytes of each one, the largest first; all faces of a level together."""
    packed = {KTX_NONE: bytes, KTX_ZSTD: zstd_raw, KTX_ZLIB: zlib.compress}[scheme]
    stored = [packed(level) for level in levels]
    description = _descriptor(vk_format)
    described_at = 80 + 24 * len(levels)
    at = (described_at + len(description) + 15) // 16 * 16
    index = [None] * len(levels)
    body = b""
    for i in reversed(range(len(levels))):  # the smallest level comes first in the file
        body += bytes(-len(body) % 16)
        index[i] = struct.pack("<QQQ", at + len(body), len(stored[i]), len(levels[i]))
        body += stored[i]
    type_size = {VK_RGBA16F: 2}.get(vk_format, 1)
    out = b"\xABKTX 20\xBB\r\n\x1A\n" + struct.pack("<9I", vk_format, type_size, width, height, 0, 0,
                                                  faces, len(levels), scheme)
    out += struct.pack("<IIIIQQ", described_at, len(description), 0, 0, 0, 0) + b"".join(index)
    return (out + description).ljust(at, b"\0") + body


# --- PNG, interlaced ------------------------------------------------------------------------------

# First column and row of each pass, then the steps (Adam7).
_PASSES = [(0, 0, 8, 8), (4, 0, 8, 8), (0, 4, 4, 8), (2, 0, 4, 4), (0, 2, 2, 4), (1, 0, 2, 2),
           (0, 1, 1, 2)]


def png_interlaced(rows):
    """8-bit grey."""
    data = b""
    for left, top, across, down in _PASSES:
        data += b"".join(b"\0" + row[left::across] for row in rows[top::down] if row[left::across])
    out = b"\x89PNG\r\n\x1a\n"
    header = struct.pack(">IIBBBBB", len(rows[0]), len(rows), 8, 0, 0, 0, 1)
    for kind, content in (b"IHDR", header), (b"IDAT", zlib.compress(data)), (b"IEND", b""):
        check = zlib.crc32(kind + content)
        out += struct.pack(">I", len(content)) + kind + content + struct.pack(">I", check)
    return out
