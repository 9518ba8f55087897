"""Encoders for the sample images: PNG, TIFF, Radiance and OpenEXR, each as bytes.

Written out here instead of taken from a library so that the samples hold exactly the features that
the readers are shown with (bit depths, tags, compressions), and nothing else. Code values come as
one bytes object per row, top row first, samples interleaved, 16-bit samples big-endian; light comes
as rows of numbers.
"""

import math
import struct
import zlib

# --- PNG (ISO/IEC 15948) ------------------------------------------------------------------------

GREY, RGB, PALETTE, RGBA = 0, 2, 3, 6
_CHANNELS = {GREY: 1, RGB: 3, PALETTE: 1, RGBA: 4}


def _chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def resolution_chunk(per_metre):
    return b"pHYs", struct.pack(">IIB", per_metre, per_metre, 1)


def profile_chunk(name, profile):
    return b"iCCP", name.encode("latin-1") + b"\0\0" + zlib.compress(profile, 9)


def _paeth(left, up, corner):
    a, b, c = abs(up - corner), abs(left - corner), abs(left + up - 2 * corner)
    return left if a <= b and a <= c else up if b <= c else corner


def _filtered(row, above, step):
    """The row under each of the five filters, first byte the filter's number."""
    left = bytes(step) + row[:-step] if len(row) > step else bytes(len(row))
    corner = bytes(step) + above[:-step] if len(row) > step else bytes(len(row))
    yield b"\0" + row
    yield b"\1" + bytes((v - a) & 255 for v, a in zip(row, left))
    yield b"\2" + bytes((v - b) & 255 for v, b in zip(row, above))
    yield b"\3" + bytes((v - (a + b) // 2) & 255 for v, a, b in zip(row, left, above))
    yield b"\4" + bytes((v - _paeth(a, b, c)) & 255 for v, a, b, c in zip(row, left, above, corner))


def _roughness(line):
    return sum(v if v < 128 else 256 - v for v in line[1:])


def png(width, rows, colour, depth=8, chunks=()):
    """A PNG file; chunks are (name, data) pairs that go before the pixels.

    Whole-byte pixels get the filter with the smallest sum of differences; palettes and single bits
    stay unfiltered, as the standard recommends (clause 12.8).
    """
    step = _CHANNELS[colour] * depth // 8
    lines, above = [], bytes(len(rows[0]))
    for row in rows:
        plain = colour == PALETTE or depth < 8
        lines.append(b"\0" + row if plain else min(_filtered(row, above, step), key=_roughness))
        above = row
    header = struct.pack(">IIBBBBB", width, len(rows), depth, colour, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + _chunk(b"IHDR", header)
            + b"".join(_chunk(kind, data) for kind, data in chunks)
            + _chunk(b"IDAT", zlib.compress(b"".join(lines), 9)) + _chunk(b"IEND", b""))


# --- TIFF (revision 6.0) ------------------------------------------------------------------------

MIN_IS_BLACK, PHOTOMETRIC_RGB, SEPARATED = 1, 2, 5
UNIT_INCH, UNIT_CM = 2, 3
_SHORT, _LONG, _RATIONAL = 3, 4, 5


def lzw(data):
    """TIFF's LZW (section 13): codes fill bytes from the top bit down and widen one code early."""
    clear, end = 256, 257
    out, held, bits = bytearray(), 0, 0
    table, width, prefix = {bytes((i,)): i for i in range(256)}, 9, b""

    def emit(code):
        nonlocal held, bits
        held, bits = (held << width) | code, bits + width
        while bits >= 8:
            bits -= 8
            out.append(held >> bits & 255)
        held &= (1 << bits) - 1

    emit(clear)
    for value in data:
        longer = prefix + bytes((value,))
        if longer in table:
            prefix = longer
            continue
        emit(table[prefix])
        table[longer] = len(table) + 2  # codes 256 and 257 are taken
        prefix = longer[-1:]
        if len(table) + 2 == 4095:
            emit(clear)
            table, width = {bytes((i,)): i for i in range(256)}, 9
        elif len(table) + 2 == 1 << width:
            width += 1
    emit(table[prefix])
    if len(table) + 3 == 1 << width:  # the decoder has grown its table by the last code
        width += 1
    emit(end)
    if bits:
        out.append(held << (8 - bits) & 255)
    return bytes(out)


def horizontal_differences(row, channels):
    """Predictor 2 (section 14) for 8-bit samples."""
    before = bytes(channels) + row[:-channels]
    return bytes((v - b) & 255 for v, b in zip(row, before))


def tiles_of(width, rows, channels, side):
    """Square tiles in file order, each a list of rows; pixels beyond the picture are zero."""
    height = len(rows)
    for top in range(0, height, side):
        for left in range(0, width, side):
            part = [r[left * channels:(left + side) * channels] for r in rows[top:top + side]]
            part = [r + bytes(side * channels - len(r)) for r in part]
            yield part + [bytes(side * channels)] * (side - len(part))


def _entry(order, tag, kind, values):
    """One directory entry as (tag, head, content)."""
    flat = [n for v in values for n in v] if kind == _RATIONAL else values
    content = struct.pack(f"{order}{len(flat)}{'H' if kind == _SHORT else 'I'}", *flat)
    return tag, struct.pack(order + "HHI", tag, kind, len(values)), content


def tiff(order, width, height, channels, photometric, blocks, compression=1, tile=0, predictor=1,
         resolution=None):
    """A single-picture TIFF with 8-bit samples; order is "<" or ">".

    blocks are the finished tiles, or the one strip when tile (their side) is 0; resolution is
    (pixels per unit, unit).
    """
    fields = [(256, _LONG, [width]), (257, _LONG, [height]), (258, _SHORT, [8] * channels),
              (259, _SHORT, [compression]), (262, _SHORT, [photometric]), (277, _SHORT, [channels]),
              (284, _SHORT, [1])]
    if resolution:
        ratio = [(resolution[0], 1)]
        fields += [(282, _RATIONAL, ratio), (283, _RATIONAL, ratio), (296, _SHORT, [resolution[1]])]
    if predictor != 1:
        fields.append((317, _SHORT, [predictor]))
    if tile:
        fields += [(322, _LONG, [tile]), (323, _LONG, [tile])]
    else:
        fields.append((278, _LONG, [height]))
    offset, offsets = 8, []
    for block in blocks:
        offsets.append(offset)
        offset += len(block) + len(block) % 2
    fields += [(324 if tile else 273, _LONG, offsets),
               (325 if tile else 279, _LONG, [len(b) for b in blocks])]
    pixels = b"".join(b + bytes(len(b) % 2) for b in blocks)
    directory = _directory(order, offset, [_entry(order, *f) for f in sorted(fields)])
    magic = b"II" if order == "<" else b"MM"
    return magic + struct.pack(order + "HI", 42, offset) + pixels + directory


def _directory(order, offset, entries):
    spill_at = offset + 2 + 12 * len(entries) + 4
    body, spill = struct.pack(order + "H", len(entries)), b""
    for _, head, content in entries:
        if len(content) <= 4:
            body += head + content + bytes(4 - len(content))
        else:
            body += head + struct.pack(order + "I", spill_at + len(spill))
            spill += content + bytes(len(content) % 2)
    return body + bytes(4) + spill


# --- Radiance picture ---------------------------------------------------------------------------

def rgbe(pixel):
    """Three mantissas and one exponent: light is mantissa / 256 * 2^(exponent - 128)."""
    largest = max(pixel)
    if largest < 1e-32:
        return bytes(4)
    exponent = math.frexp(largest)[1]
    if round(math.ldexp(largest, 8 - exponent)) == 256:
        exponent += 1
    return bytes(int(round(math.ldexp(c, 8 - exponent))) for c in pixel) + bytes((exponent + 128,))


def _runs(data):
    """One channel of a scan line: 128 + n and a byte for n equal bytes, n and n bytes as is."""
    out, start, i = bytearray(), 0, 0

    def literal(end):
        for at in range(start, end, 128):
            part = data[at:min(at + 128, end)]
            out.append(len(part))
            out.extend(part)

    while i < len(data):
        run = 1
        while run < 127 and i + run < len(data) and data[i + run] == data[i]:
            run += 1
        if run >= 4:  # a shorter run costs as much as it saves
            literal(i)
            out.extend((128 + run, data[i]))
            start = i + run
        i += run
    literal(len(data))
    return bytes(out)


def radiance(width, rows):
    """A run-length coded picture from rows of (r, g, b) light, 8 to 32767 pixels wide."""
    out = b"#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n" + f"-Y {len(rows)} +X {width}\n".encode("ascii")
    for row in rows:
        pixels = b"".join(rgbe(p) for p in row)
        out += struct.pack(">HH", 0x0202, width) + b"".join(_runs(pixels[c::4]) for c in range(4))
    return out


# --- OpenEXR, single part, scan lines -----------------------------------------------------------

UNCOMPRESSED, ZIP = 0, 3
_LINES_PER_BLOCK = {UNCOMPRESSED: 1, ZIP: 16}
_SAMPLE_TYPE = {"e": 1, "f": 2}  # struct's codes for half and float: the file's pixel types


def _attribute(name, kind, value):
    return name + b"\0" + kind + b"\0" + struct.pack("<I", len(value)) + value


def _zip_block(raw):
    """Even bytes before odd ones, differences about 128, deflate; raw when that is not less."""
    split = raw[0::2] + raw[1::2]
    delta = split[:1] + bytes((b - a + 128) & 255 for a, b in zip(split, split[1:]))
    packed = zlib.compress(delta, 9)
    return packed if len(packed) < len(raw) else raw


def exr(width, height, channels, sample, compression):
    """channels: name to rows of numbers; sample "e" (half, rounded to even) or "f" (float)."""
    names = sorted(channels)
    layout = struct.pack("<IB3xII", _SAMPLE_TYPE[sample], 0, 1, 1)
    channel_list = b"".join(n.encode("ascii") + b"\0" + layout for n in names) + b"\0"
    window = struct.pack("<4i", 0, 0, width - 1, height - 1)
    header = (struct.pack("<II", 20000630, 2) + _attribute(b"channels", b"chlist", channel_list)
              + _attribute(b"compression", b"compression", bytes((compression,)))
              + _attribute(b"dataWindow", b"box2i", window)
              + _attribute(b"displayWindow", b"box2i", window)
              + _attribute(b"lineOrder", b"lineOrder", bytes(1))
              + _attribute(b"pixelAspectRatio", b"float", struct.pack("<f", 1.0))
              + _attribute(b"screenWindowCenter", b"v2f", struct.pack("<2f", 0.0, 0.0))
              + _attribute(b"screenWindowWidth", b"float", struct.pack("<f", 1.0)) + b"\0")
    blocks, step = [], _LINES_PER_BLOCK[compression]
    for top in range(0, height, step):
        raw = b"".join(struct.pack(f"<{width}{sample}", *channels[n][y])
                       for y in range(top, min(top + step, height)) for n in names)
        data = _zip_block(raw) if compression == ZIP else raw
        blocks.append(struct.pack("<iI", top, len(data)) + data)
    offset, table = len(header) + 8 * len(blocks), b""
    for block in blocks:
        table += struct.pack("<Q", offset)
        offset += len(block)
    return header + table + b"".join(blocks)
