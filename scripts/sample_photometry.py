"""Photometric files (IESNA LM-63) of three luminaires that do not exist.

Directions are those of type C: the vertical angle counts from straight down, the horizontal one
around the axis. Intensities come from a few smooth lobes and are scaled to a luminous flux.
"""

import math

VERTICAL = [2.5 * i for i in range(37)]  # 0 to 90
FINE_VERTICAL = list(range(91))
ALL_AROUND = [10 * i for i in range(37)]  # 0 to 360
HALF_AROUND = [10 * i for i in range(19)]  # 0 to 180


def _direction(vertical, horizontal):
    v, h = math.radians(vertical), math.radians(horizontal)
    return math.sin(v) * math.cos(h), math.sin(v) * math.sin(h), -math.cos(v)


def _lobe(vertical, horizontal, axis, sharpness):
    """1 along the axis, falling off around it; the larger the sharpness the narrower."""
    cosine = sum(a * b for a, b in zip(_direction(vertical, horizontal), _direction(*axis)))
    return math.exp(sharpness * (cosine - 1.0))


def _fade(value, begin, end):
    """1 up to begin, 0 from end on, smooth between."""
    t = min(max((value - begin) / (end - begin), 0.0), 1.0)
    return 1.0 - t * t * (3.0 - 2.0 * t)


def _flux(vertical, horizontal, rows):
    """Lumens, by the trapezium rule; rows of less than the whole circle stand for all of it."""
    total = 0.0
    for v in range(len(vertical) - 1):
        belt = math.cos(math.radians(vertical[v])) - math.cos(math.radians(vertical[v + 1]))
        if len(horizontal) == 1:
            total += math.tau * belt * (rows[0][v] + rows[0][v + 1]) / 2.0
            continue
        whole = 360.0 / (horizontal[-1] - horizontal[0])
        for h in range(len(horizontal) - 1):
            mean = (rows[h][v] + rows[h][v + 1] + rows[h + 1][v] + rows[h + 1][v + 1]) / 4.0
            total += whole * math.radians(horizontal[h + 1] - horizontal[h]) * belt * mean
    return total


def _wrapped(numbers):
    """Lines of at most 78 characters."""
    lines, line = [], ""
    for number in numbers:
        if line and len(line) + 1 + len(number) > 78:
            lines.append(line)
            line = ""
        line += (" " if line else "") + number
    return lines + [line]


def _file(version, keywords, angles, intensity, flux, lumens, size, watts):
    vertical, horizontal = angles
    rows = [[intensity(v, h) for v in vertical] for h in horizontal]
    scale = flux / _flux(vertical, horizontal, rows)
    lines = [version] + [f"[{key}] {text}" for key, text in keywords] + ["TILT=NONE"]
    width, length, height = size
    lines.append(f"1 {lumens} 1 {len(vertical)} {len(horizontal)} 1 2 {width} {length} {height}")
    lines.append(f"1 1 {watts}")
    lines += _wrapped(f"{v:g}" for v in vertical)
    lines += _wrapped(f"{h:g}" for h in horizontal)
    for row in rows:
        lines += _wrapped(f"{scale * value:.0f}" for value in row)
    return ("\n".join(lines) + "\n").encode("ascii")


def _street(vertical, horizontal):
    """Along the road at 0 and 180, its far side at 90: two lobes, little behind the pole."""
    lobes = sum(_lobe(vertical, horizontal, (64.0, h), 16.0) for h in (14.0, 166.0))
    carpet = 0.42 * _lobe(vertical, horizontal, (30.0, 90.0), 2.6)
    behind = 0.2 + 0.8 * _fade(-_direction(vertical, horizontal)[1], 0.0, 0.7)
    return (lobes + carpet) * behind * _fade(vertical, 66.0, 84.0)


def street():
    keywords = [("TEST", "EXL-2041"), ("MANUFAC", "Example Lighting"),
                ("LUMCAT", "EX-ROAD 60"), ("LUMINAIRE", "Road luminaire, 60 W, wide optic"),
                ("LAMPCAT", "EXM-60-730"), ("LAMP", "LED module 3000 K")]
    return _file("IESNA:LM-63-1995", keywords, (VERTICAL, ALL_AROUND), _street, 8200, 9100,
                 (0.26, 0.54, 0), 60)


def downlight():
    """The same all around; half the intensity at 12 degrees, shielded from 50 degrees on."""
    keywords = [("TEST", "EXL-1187"), ("MANUFAC", "Example Lighting"),
                ("LUMCAT", "EX-SPOT 12"), ("LUMINAIRE", "Recessed downlight, 24 degrees"),
                ("LAMP", "LED 2700 K")]

    def intensity(vertical, _):
        beam = 0.5**((vertical / 12.0)**2)
        return (beam + 0.035 * math.cos(math.radians(vertical))) * _fade(vertical, 34.0, 58.0)

    return _file("IESNA:LM-63-2002", keywords, (FINE_VERTICAL, [0]), intensity, 960, -1,
                 (-0.08, 0, 0), 11.5)


def wall_washer():
    """Towards the wall at 0, stored for half a circle."""
    keywords = [("TEST", "EXL-1530"), ("MANUFAC", "Example Lighting"),
                ("LUMCAT", "EX-WASH 30"), ("LUMINAIRE", "Wall washer, asymmetric, 28 W"),
                ("LAMPCAT", "EXM-28-940"), ("LAMP", "LED module 4000 K")]

    def intensity(vertical, horizontal):
        wash = _lobe(vertical, horizontal, (38.0, 0.0), 7.0)
        foot = 0.35 * _lobe(vertical, horizontal, (12.0, 0.0), 12.0)
        return (wash + foot) * _fade(vertical, 58.0, 82.0)

    return _file("IESNA:LM-63-1995", keywords, (VERTICAL, HALF_AROUND), intensity, 2450, 2900,
                 (0.12, 0.12, 0), 28)
