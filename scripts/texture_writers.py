"""Encoders for the sample textures: DDS and KTX 2, each as bytes.

A texture is a list of faces (one, or six in the order +X -X +Y -Y +Z -Z), a face a list of levels,
the largest first, a level a list of rows of (r, g, b) or (r, g, b, a) tuples, 0 to 255.
"""

import struct
import zlib

# --- levels ---------------------------------------------------------------------------------------


def _halved(rows):
    """Each texel the mean of those under it; an odd last row or column counts in the one before."""
    height, width = max(len(rows) // 2, 1), max(len(rows[0]) // 2, 1)

    def under(i, count, whole):
        return range(2 * i, whole if i == count - 1 else 2 * i + 2)

    halved = []
    for y in range(height):
        line = []
        for x in range(width):
            texels = [rows[j][i] for j in under(y, height, len(rows))
                      for i in under(x, width, len(rows[0]))]
            line.append(tuple((sum(c) + len(texels) // 2) // len(texels) for c in zip(*texels)))
        halved.append(line)
    return halved


def levels(rows):
    """The picture with all its levels down to 1 x 1."""
    chain = [rows]
    while len(chain[-1]) > 1 or len(chain[-1][0]) > 1:
        chain.append(_halved(chain[-1]))
    return chain


# --- texels ---------------------------------------------------------------------------------------


def _opaque(texel):
    return texel if len(texel) == 4 else (*texel, 255)


def rgba(rows):
    return b"".join(bytes(_opaque(t)) for row in rows for t in row)


def bgra(rows):
    return b"".join(bytes((t[2], t[1], t[0], _opaque(t)[3])) for row in rows for t in row)


def _packed565(colour):
    r, g, b = colour
    return (r * 31 + 127) // 255 << 11 | (g * 63 + 127) // 255 << 5 | (b * 31 + 127) // 255


def _unpacked565(word):
    r, g, b = word >> 11, word >> 5 & 63, word & 31
    return (r << 3 | r >> 2, g << 2 | g >> 4, b << 3 | b >> 2)


def _ends(block):
    """Two colours of the block that lie far apart: along the diagonal of their box."""
    spans = [max(c) - min(c) for c in zip(*block)]
    main = spans.index(max(spans))
    means = [sum(c) / len(block) for c in zip(*block)]
    axis = []
    for channel, span in enumerate(spans):
        together = sum((t[main] - means[main]) * (t[channel] - means[channel]) for t in block)
        axis.append(span if together >= 0 else -span)
    along = sorted(block, key=lambda t: sum(a * c for a, c in zip(axis, t)))
    return along[0], along[-1]


def _bc1_block(block):
    """Two ends with 5, 6 and 5 bits, then 2 bits a texel; the greater end first: four colours."""
    first, last = sorted((_packed565(c) for c in _ends(block)), reverse=True)
    a, b = _unpacked565(first), _unpacked565(last)
    palette = [a, b] + [tuple((m * p + n * q) // 3 for p, q in zip(a, b))
                        for m, n in ((2, 1), (1, 2))]
    if first == last:  # would mean three colours and a transparent one; the first is all we need
        palette = palette[:1]

    def nearest(texel):
        return min(range(len(palette)),
                   key=lambda i: sum((p - c)**2 for p, c in zip(palette[i], texel)))

    bits = sum(nearest(t) << 2 * i for i, t in enumerate(block))
    return struct.pack("<HHI", first, last, bits)


def bc1(rows):
    """Blocks of 4 x 4 texels; beyond the picture its last row and column go on."""
    height, width = len(rows), len(rows[0])
    return b"".join(
        _bc1_block([rows[min(y + j, height - 1)][min(x + i, width - 1)]
                    for j in range(4) for i in range(4)])
        for y in range(0, height, 4) for x in range(0, width, 4))


# --- DDS (Microsoft, "Programming Guide for DDS") -------------------------------------------------

_CAPS, _HEIGHT, _WIDTH, _PIXELFORMAT = 0x1, 0x2, 0x4, 0x1000
_PITCH, _LINEAR_SIZE, _LEVELS = 0x8, 0x80000, 0x20000
_COMPLEX, _TEXTURE, _MIPMAP, _CUBE_ALL_FACES = 0x8, 0x1000, 0x400000, 0xFE00
_BGRA_FORMAT = struct.pack("<II4sIIIII", 32, 0x41, bytes(4), 32, 0xFF0000, 0xFF00, 0xFF, 0xFF000000)
_DXT1_FORMAT = struct.pack("<II4s20x", 32, 0x4, b"DXT1")


def dds(faces, encode):
    """A DDS file; encode is bgra or bc1."""
    height, width, count = len(faces[0][0]), len(faces[0][0][0]), len(faces[0])
    data = b"".join(encode(level) for face in faces for level in face)
    flags, caps = _CAPS | _HEIGHT | _WIDTH | _PIXELFORMAT, _TEXTURE
    if encode is bc1:
        flags, size = flags | _LINEAR_SIZE, len(encode(faces[0][0]))
    else:
        flags, size = flags | _PITCH, 4 * width
    if count > 1:
        flags, caps = flags | _LEVELS, caps | _COMPLEX | _MIPMAP
    if len(faces) == 6:
        caps |= _COMPLEX
    header = struct.pack("<4s7I44x", b"DDS ", 124, flags, height, width, size, 0, count)
    header += _DXT1_FORMAT if encode is bc1 else _BGRA_FORMAT
    header += struct.pack("<II12x", caps, _CUBE_ALL_FACES if len(faces) == 6 else 0)
    return header + data


# --- KTX 2 (Khronos, "KTX File Format, version 2.0") ---------------------------------

_R8G8B8A8_SRGB, _ZLIB = 43, 3


def _description():
    """What the texels are (Khronos Data Format 1.3, chapter 5): red, green, blue, straight alpha."""
    rgbsda, bt709, srgb, linear = 1, 1, 2, 0x10
    samples = b"".join(
        struct.pack("<HBBIII", 8 * i, 7, channel | (linear if channel == 15 else 0), 0, 0, 255)
        for i, channel in enumerate((0, 1, 2, 15)))
    block = struct.pack("<IHHBBBB4x8B", 0, 2, 24 + len(samples), rgbsda, bt709, srgb, 0,
                        4, 0, 0, 0, 0, 0, 0, 0)
    return struct.pack("<I", 4 + len(block) + len(samples)) + block + samples


def _key_value(key, value):
    entry = key + b"\0" + value + b"\0"
    return struct.pack("<I", len(entry)) + entry + bytes(-len(entry) % 4)


def ktx2(faces):
    """A KTX 2 file with sRGB texels of 8 bits, compressed by zlib."""
    height, width, count = len(faces[0][0]), len(faces[0][0][0]), len(faces[0])
    raw = [b"".join(rgba(face[level]) for face in faces) for level in range(count)]
    packed = [zlib.compress(level, 9) for level in raw]
    description, about = _description(), _key_value(b"KTXwriter", b"RenderingBase samples")
    describe_at = 80 + 24 * count
    about_at = describe_at + len(description)
    offset, places = about_at + len(about), {}
    for level in reversed(range(count)):  # the smallest comes first
        places[level] = offset
        offset += len(packed[level])
    head = struct.pack("<12s9I4I2Q", b"\xabKTX 20\xbb\r\n\x1a\n", _R8G8B8A8_SRGB, 1, width, height,
                       0, 0, len(faces), count, _ZLIB, describe_at, len(description), about_at,
                       len(about), 0, 0)
    index = b"".join(struct.pack("<3Q", places[i], len(packed[i]), len(raw[i]))
                     for i in range(count))
    return head + index + description + about + b"".join(reversed(packed))
