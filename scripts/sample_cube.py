"""The cube map of the samples: a tiled floor under an evening sky, a marked plate on each face.

Directions are left-handed, y up, as cube maps have them: seen from inside, the face +Z has +X to its
right. The scene is one function of the direction, so it runs on across the edges of the faces; the
plates are drawn on the faces and show which one it is and where its top is.
"""

import math

from sample_sky import mix, smooth, unit

FACES = ("+X", "-X", "+Y", "-Y", "+Z", "-Z")

# The direction of a texel, s to the right and t downwards, both -1 to 1.
_DIRECTIONS = {
    "+X": lambda s, t: (1.0, -t, -s), "-X": lambda s, t: (-1.0, -t, s),
    "+Y": lambda s, t: (s, 1.0, t), "-Y": lambda s, t: (s, -1.0, -t),
    "+Z": lambda s, t: (s, -t, 1.0), "-Z": lambda s, t: (-s, -t, -1.0),
}

# --- the scene, colours as shown, 0 to 1 ----------------------------------------------------------

_SUN = unit((0.62, 0.34, 0.71))
_ZENITH, _SKY, _HORIZON = (0.13, 0.24, 0.47), (0.36, 0.56, 0.80), (0.95, 0.80, 0.64)
_HAZE = (0.80, 0.70, 0.63)
_TILES = ((0.47, 0.46, 0.46), (0.60, 0.58, 0.56))
# Which way the four quarters of the floor lie.
_WARM, _COOL = (0.76, 0.55, 0.40), (0.38, 0.53, 0.62)


def _sky(d):
    colour = mix(_SKY, _ZENITH, smooth(0.0, 0.9, d[1]))
    colour = mix(_HORIZON, colour, smooth(-0.05, 0.42, d[1]))
    near = max(sum(a * b for a, b in zip(d, _SUN)), 0.0)
    colour = mix(colour, (1.0, 0.86, 0.62), 0.75 * near**14)
    return mix(colour, (1.0, 0.98, 0.90), smooth(0.9905, 0.9935, near))


def _hills(d):
    """How high the hills stand in this direction."""
    turn = math.atan2(d[0], d[2])
    return (0.065 + 0.040 * math.sin(3.0 * turn + 0.8) + 0.022 * math.sin(7.0 * turn + 2.1)
            + 0.010 * math.sin(17.0 * turn))


def _floor(d):
    distance = 1.0 / max(-d[1], 1e-3)
    x, z = 1.5 * d[0] * distance, 1.5 * d[2] * distance
    colour = _TILES[(math.floor(x) + math.floor(z)) % 2]
    colour = mix(colour, _WARM if x > 0.0 else _COOL, 0.34)
    colour = mix(colour, (0.92, 0.90, 0.84) if z > 0.0 else (0.22, 0.24, 0.26), 0.20)
    return mix(colour, _HAZE, 1.0 - math.exp(-0.055 * distance))


def scene(d):
    """The colour that arrives from direction d (unit)."""
    if d[1] < 0.0:
        return _floor(d)
    height = _hills(d)
    if d[1] < height:
        return mix(_HAZE, (0.28, 0.36, 0.38), 0.45 + 0.4 * smooth(0.0, height, d[1]))
    return _sky(d)


# --- the plates -----------------------------------------------------------------------------------

_PLATES = {"+X": (0.84, 0.22, 0.18), "-X": (0.12, 0.62, 0.66), "+Y": (0.20, 0.66, 0.26),
           "-Y": (0.70, 0.26, 0.66), "+Z": (0.18, 0.34, 0.86), "-Z": (0.90, 0.74, 0.14)}
_GLYPHS = {  # 5 x 7
    "+": (0, 4, 4, 31, 4, 4, 0), "-": (0, 0, 0, 31, 0, 0, 0), "X": (17, 17, 10, 4, 10, 17, 17),
    "Y": (17, 17, 10, 4, 4, 4, 4), "Z": (31, 1, 2, 4, 8, 16, 31),
}
_CELL = 0.052  # the side of a dot of a letter, where the face is 2 wide


def _letter_dot(name, s, t):
    column, row = math.floor(s / _CELL + 5.5), math.floor((t - 0.09) / _CELL + 3.5)
    if not (0 <= row < 7 and 0 <= column < 11 and column != 5):
        return False
    glyph = _GLYPHS[name[0] if column < 5 else name[1]]
    return bool(glyph[row] >> (4 - column % 6) & 1)


def _arrow(s, t):
    """Points to the top of the face."""
    return -0.36 < t < -0.19 and abs(s) < t + 0.36


def _plate(name, s, t):
    """The colour of the plate at a point of the face; None beside it."""
    edge = max(abs(s), abs(t))
    if edge > 0.46:
        return None
    if edge > 0.42 or _arrow(s, t) or _letter_dot(name, s, t):
        return (1.0, 1.0, 1.0)
    return _PLATES[name]


# --- pictures of faces ----------------------------------------------------------------------------

_SAMPLES = 3  # to a side of a texel


def _colour(name, s, t):
    return _plate(name, s, t) or scene(unit(_DIRECTIONS[name](s, t)))


def face(name, side):
    """The face as rows of (r, g, b), 0 to 255."""
    steps = [(2.0 * (i + 0.5) / _SAMPLES / side) - 1.0 for i in range(side * _SAMPLES)]
    share = 255.0 / _SAMPLES**2
    rows = []
    for y in range(0, len(steps), _SAMPLES):
        row = []
        for x in range(0, len(steps), _SAMPLES):
            colours = [_colour(name, s, t) for t in steps[y:y + _SAMPLES]
                       for s in steps[x:x + _SAMPLES]]
            row.append(tuple(int(share * sum(c) + 0.5) for c in zip(*colours)))
        rows.append(row)
    return rows
