"""The sky of the samples: air, clouds, sun, for a full panorama the sea; and the noise they take.

Directions are unit vectors, right-handed, y up; colours are linear light with sRGB primaries.
Nothing is random: noise comes from tables filled by a fixed generator.
"""

import math

# --- noise --------------------------------------------------------------------------------------


def _generator(state):
    """A 64-bit linear congruential generator's upper 32 bits."""
    while True:
        state = (state * 6364136223846793005 + 1442695040888963407) & (2**64 - 1)
        yield state >> 32


_random = _generator(20260101)
_ORDER = list(range(256))
for _i in range(255, 0, -1):
    _j = next(_random) % (_i + 1)
    _ORDER[_i], _ORDER[_j] = _ORDER[_j], _ORDER[_i]
_ORDER += _ORDER
_GRADIENT = [tuple(next(_random) / 2**31 - 1.0 for _ in range(3)) for _ in range(256)]


def hash01(i, j, k=0):
    """A number in [0, 1) for a lattice point."""
    x = _ORDER[_ORDER[_ORDER[i & 255] + (j & 255)] + (k & 255)]
    return (x * 256 + _ORDER[x + (i * 7 + j * 13 + k * 29) % 256]) / 65536.0


def noise(x, y, z):
    """Gradient noise, about -1 to 1, features of size 1."""
    fx, fy, fz = math.floor(x), math.floor(y), math.floor(z)
    i, j, k = fx & 255, fy & 255, fz & 255
    x, y, z = x - fx, y - fy, z - fz
    u = x * x * x * (x * (x * 6 - 15) + 10)
    v = y * y * y * (y * (y * 6 - 15) + 10)
    w = z * z * z * (z * (z * 6 - 15) + 10)
    order, gradient = _ORDER, _GRADIENT
    corners = []
    for di in (0, 1):
        a = order[i + di]
        for dj in (0, 1):
            b = order[a + ((j + dj) & 255)]
            for dk in (0, 1):
                gx, gy, gz = gradient[order[b + ((k + dk) & 255)]]
                corners.append(gx * (x - di) + gy * (y - dj) + gz * (z - dk))
    c000, c001, c010, c011, c100, c101, c110, c111 = corners
    low = c000 + w * (c001 - c000)
    low += v * (c010 + w * (c011 - c010) - low)
    high = c100 + w * (c101 - c100)
    high += v * (c110 + w * (c111 - c110) - high)
    return low + u * (high - low)


def fractal(x, y, z, octaves):
    """Noise summed over octaves, each twice as fine and half as strong."""
    total, strength = 0.0, 1.0
    for _ in range(octaves):
        total += strength * noise(x, y, z)
        x, y, z, strength = x * 2.03 + 5.1, y * 2.03 + 1.7, z * 2.03 + 9.2, strength * 0.5
    return total


def smooth(low, high, v):
    t = min(max((v - low) / (high - low), 0.0), 1.0)
    return t * t * (3.0 - 2.0 * t)


def mix(a, b, t):
    s = 1.0 - t
    return a[0] * s + b[0] * t, a[1] * s + b[1] * t, a[2] * s + b[2] * t


def unit(v):
    n = 1.0 / math.sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2])
    return v[0] * n, v[1] * n, v[2] * n


# --- sky ----------------------------------------------------------------------------------------

SUN = unit((-0.80, 0.60, -0.30))
SUN_RADIUS = math.radians(1.6)  # three times the real one: softer shadows, and seen at 512 pixels
SUN_LIGHT = (6000.0, 5300.0, 4200.0)
_ZENITH, _BLUE, _HORIZON = (0.030, 0.105, 0.33), (0.085, 0.25, 0.58), (0.72, 0.68, 0.63)


def air(d):
    """Clear sky without sun or clouds; below the horizon, the horizon's."""
    up = max(d[1], 0.0)
    colour = mix(_BLUE, _ZENITH, smooth(0.0, 0.70, up))
    colour = mix(_HORIZON, colour, 1.0 - math.exp(-8.5 * up))
    near = max(d[0] * SUN[0] + d[1] * SUN[1] + d[2] * SUN[2], 0.0)
    wide, tight = 0.30 * near**6, 1.5 * near**90 + 8.0 * near**1500
    return (colour[0] + wide + tight, colour[1] + 0.72 * wide + 0.86 * tight,
            colour[2] + 0.42 * wide + 0.62 * tight)


def _clouds(d, colour):
    if d[1] < 0.015:
        return colour
    scale = 1.0 / (d[1] + 0.16)  # a curved layer: clouds shrink towards the horizon without end
    x, z = 1.15 * d[0] * scale + 3.7, 1.15 * d[2] * scale + 1.9
    density = fractal(x, 0.4, z * 1.3, 5)
    cover = smooth(0.02, 0.62, density) * smooth(0.015, 0.10, d[1])
    if cover == 0.0:
        return colour
    towards_sun = fractal(x + 0.16 * SUN[0], 0.4, (z + 0.16 * SUN[2]) * 1.3, 3)
    lit = smooth(-0.35, 0.30, density - towards_sun)
    white = mix((0.46, 0.48, 0.56), (1.12, 1.04, 0.94), lit)
    return mix(colour, white, 0.88 * cover)


def _sun_disc(d):
    cosine = d[0] * SUN[0] + d[1] * SUN[1] + d[2] * SUN[2]
    if cosine < 0.99:
        return 0.0
    angle = math.acos(min(cosine, 1.0))
    return 1.0 - smooth(SUN_RADIUS * 0.85, SUN_RADIUS * 1.15, angle)


def sky(d, with_sun=True):
    """Light arriving from direction d (unit) above the horizon."""
    colour = _clouds(d, air(d))
    amount = _sun_disc(d) if with_sun else 0.0
    return tuple(c + amount * s for c, s in zip(colour, SUN_LIGHT)) if amount > 0.0 else colour


def _sea(d):
    """The water that a full panorama has below the horizon: the sky in small waves, then haze."""
    distance = 1.0 / max(-d[1], 1e-3)
    x, z = d[0] * distance, d[2] * distance
    height = 0.22 / (1.0 + 0.10 * distance)  # waves finer than a pixel look calm
    tilt_x, tilt_z = (height * fractal(x * 4.7, k, z * 4.7, 2) for k in (0.5, 7.5))
    bounced = unit((d[0] + tilt_x, 0.004 - d[1], d[2] + tilt_z))
    mirror = 0.02 + 0.98 * (1.0 - min(bounced[1], 1.0))**5
    colour = mix((0.012, 0.050, 0.068), sky(bounced, with_sun=False), mirror)
    return mix(air((d[0], 0.0, d[2])), colour, 1.0 - math.exp(-9.0 * -d[1]))


def panorama(d):
    return sky(d) if d[1] >= 0.0 else _sea(d)
