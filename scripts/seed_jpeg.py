"""A JPEG encoder for tiny files (ITU-T T.81): coefficients come as numbers, codes are 4 bits long.

Not for pictures: a block is its first few quantised coefficients in zigzag order, and the Huffman
tables hold just what such blocks need.
"""

import struct

# Symbols in the order of their codes, 0000 upwards; the code of ones only is never used (F.1.2).
_DC = list(range(9))
_AC = [0x00, 0x01, 0x11, 0x02, 0x12, 0x03, 0x13, 0x21, 0x04, 0xF0, 0x31, 0x41]

BASELINE, PROGRESSIVE = 0xC0, 0xC2


class _Bits:
    def __init__(self):
        self.bits = ""

    def put(self, value, count):
        self.bits += format(value, f"0{count}b") if count else ""

    def bytes(self):
        """The last byte filled up with ones, and a zero after each byte of ones (B.1.1.5)."""
        full = self.bits + "1" * (-len(self.bits) % 8)
        return int(full, 2).to_bytes(len(full) // 8, "big").replace(b"\xFF", b"\xFF\0")


def _put_number(bits, value):
    size = abs(value).bit_length()
    bits.put(value if value >= 0 else value + (1 << size) - 1, size)


def _put_dc(bits, difference):
    bits.put(_DC.index(abs(difference).bit_length()), 4)
    _put_number(bits, difference)


def _put_ac(bits, values):
    run = 0
    for value in values:
        if value == 0:
            run += 1
            continue
        bits.put(_AC.index(run << 4 | abs(value).bit_length()), 4)
        _put_number(bits, value)
        run = 0
    bits.put(_AC.index(0), 4)


def segment(marker, content):
    return struct.pack(">BBH", 0xFF, marker, len(content) + 2) + content


def jfif(unit, x, y):
    return segment(0xE0, b"JFIF\0" + struct.pack(">HBHHBB", 0x0102, unit, x, y, 0, 0))


def adobe(transform):
    return segment(0xEE, b"Adobe" + struct.pack(">HHHB", 100, 0, 0, transform))


def exif_resolution(per_inch):
    """An EXIF segment with a resolution and nothing else."""
    entries = struct.pack(">H", 3) + struct.pack(">HHII", 282, 5, 1, 50)
    entries += struct.pack(">HHII", 283, 5, 1, 50) + struct.pack(">HHIHH", 296, 3, 1, 2, 0)
    body = b"MM\0\x2A" + struct.pack(">I", 8) + entries + bytes(4)
    return segment(0xE1, b"Exif\0\0" + body + struct.pack(">II", per_inch, 1))


def _tables():
    quantisers = segment(0xDB, b"\0" + bytes([16] + [8] * 63))
    dc = segment(0xC4, b"\x00" + bytes([0, 0, 0, len(_DC)] + [0] * 12) + bytes(_DC))
    ac = segment(0xC4, b"\x10" + bytes([0, 0, 0, len(_AC)] + [0] * 12) + bytes(_AC))
    return quantisers + dc + ac


def _scan(components, first, last):
    chosen = b"".join(bytes((number, 0)) for number in components)
    return segment(0xDA, bytes((len(components),)) + chosen + bytes((first, last, 0)))


def _interleaved(units, put, restart):
    """Entropy-coded data of all units; a restart marker after every `restart` of them."""
    out, bits, before = b"", _Bits(), {}
    for i, unit in enumerate(units):
        if restart and i and i % restart == 0:
            out += bits.bytes() + bytes((0xFF, 0xD0 + (i // restart - 1) % 8))
            bits, before = _Bits(), {}
        for number, blocks in unit:
            for block in blocks:
                put(bits, block, block[0] - before.get(number, 0))
                before[number] = block[0]
    return out + bits.bytes()


def jpeg(width, height, sampling, units, kind=BASELINE, before=b"", restart=0):
    """sampling: (horizontal, vertical) of each component; units: for each minimum coded unit, for
    each component its blocks, each a list of coefficients."""
    numbers = range(1, len(sampling) + 1)
    frame = struct.pack(">BHHB", 8, height, width, len(sampling))
    frame += b"".join(bytes((n, h << 4 | v, 0)) for n, (h, v) in zip(numbers, sampling))
    out = b"\xFF\xD8" + before + _tables() + segment(kind, frame)
    if restart:
        out += segment(0xDD, struct.pack(">H", restart))
    named = [list(zip(numbers, unit)) for unit in units]
    if kind == BASELINE:
        def put(bits, block, difference):
            _put_dc(bits, difference)
            _put_ac(bits, block[1:])
        return out + _scan(numbers, 0, 63) + _interleaved(named, put, restart) + b"\xFF\xD9"

    # First all DC coefficients, then the others, a scan a component.
    out += _scan(numbers, 0, 0)
    out += _interleaved(named, lambda bits, block, difference: _put_dc(bits, difference), restart)
    for number in numbers:
        own = [[(number, blocks)] for unit in named for n, blocks in unit if n == number]
        out += _scan([number], 1, 63)
        out += _interleaved(own, lambda bits, block, difference: _put_ac(bits, block[1:]), restart)
    return out + b"\xFF\xD9"
