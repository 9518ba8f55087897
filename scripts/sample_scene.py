"""The picture behind the samples: spheres on a parquet terrace by the sea.

Metres, right-handed, y up, the floor is y = 0. All colours are linear light with sRGB primaries
until display() makes code values.
"""

import collections
import math

import icc
from sample_sky import SUN, SUN_RADIUS, air, fractal, hash01, mix, noise, sky, smooth, unit

# --- materials ----------------------------------------------------------------------------------

Sphere = collections.namedtuple("Sphere", "x y z radius kind colour")


def _ball(x, z, radius, kind, colour):
    return Sphere(x, radius, z, radius, kind, colour)


SPHERES = [
    _ball(-0.10, 1.15, 1.05, "metal", (0.93, 0.94, 0.96)),    # polished steel
    _ball(-1.82, 0.10, 0.66, "glaze", (0.62, 0.018, 0.022)),  # red ceramic
    _ball(1.28, -0.62, 0.60, "glass", (0.97, 0.99, 0.98)),
    _ball(2.35, 1.20, 0.80, "marble", (0.72, 0.70, 0.67)),
    _ball(-0.74, -1.16, 0.42, "metal", (1.00, 0.71, 0.26)),   # gold
    _ball(0.28, -1.62, 0.31, "glaze", (0.02, 0.20, 0.22)),    # teal ceramic
    _ball(-1.62, -1.42, 0.24, "matte", (0.56, 0.49, 0.39)),   # plaster
    _ball(1.98, -1.55, 0.27, "metal", (0.95, 0.55, 0.40)),    # copper
    _ball(-3.25, 2.90, 0.72, "matte", (0.07, 0.17, 0.40)),    # blue chalk
    _ball(4.10, 5.20, 0.85, "glaze", (0.72, 0.30, 0.02)),     # amber glaze
    _ball(-4.60, 11.00, 1.25, "matte", (0.50, 0.46, 0.40)),
    _ball(2.05, 12.50, 1.05, "glaze", (0.09, 0.28, 0.07)),
    _ball(8.40, 19.00, 1.70, "matte", (0.42, 0.36, 0.40)),
    _ball(-2.20, 25.00, 1.60, "matte", (0.62, 0.17, 0.12)),
]

_SUNLIGHT, _SKYLIGHT, _BOUNCE = (2.05, 1.74, 1.30), (0.22, 0.29, 0.41), (0.26, 0.165, 0.09)
_BRIGHTEST = 14.0  # what one sample may add to a pixel; the sun's mirror image keeps smooth edges


def _marble(p):
    x, y, z = p[0] * 1.9, p[1] * 1.9, p[2] * 1.9
    warp = 1.1 * fractal(x, y, z, 4)
    vein = abs(math.sin(2.3 * (x + 0.7 * y - 0.4 * z) + 3.2 * warp))
    fine = abs(noise(x * 2.6 + warp, y * 2.6, z * 2.6))
    colour = mix((0.10, 0.13, 0.18), (0.72, 0.70, 0.67), smooth(0.0, 0.42, vein))
    return mix((0.30, 0.31, 0.34), colour, smooth(0.0, 0.10, fine))


def floor(x, z, distance):
    """Colour and varnish (0 to 1) of the parquet: squares of five boards, turned about in turn."""
    side, boards = 1.0, 5
    i, j = math.floor(x / side), math.floor(z / side)
    u, v = x / side - i, z / side - j
    if (i + j) & 1:
        u, v = v, u
    board = min(int(v * boards), boards - 1)
    across = v * boards - board
    seed = hash01(i, j, board)
    grain_u, grain_v = u * 1.1 + 17.0 * seed, (board + across) * 1.7 + 41.0 * seed
    bend = noise(grain_u * 1.3, grain_v * 0.45, seed * 9.0)
    rings = 0.5 + 0.5 * math.sin(6.2832 * (grain_v * 1.25 + 1.5 * bend))
    fibre = noise(grain_u * 5.0, grain_v * 24.0, 3.0)
    detail = 1.0 / (1.0 + (distance / 11.0)**2)  # finer than a pixel far away
    shade = 0.80 + 0.36 * seed + detail * (0.26 * (rings - 0.5) + 0.13 * fibre)
    colour = mix((0.30, 0.125, 0.042), (0.47, 0.235, 0.092), min(max(shade - 0.45, 0.0), 1.0))
    edge = min(across, 1.0 - across, min(u, 1.0 - u) * boards)
    gap = 1.0 - smooth(0.0, 0.035 + 0.004 * distance, edge)
    return tuple(c * shade * (1.0 - 0.75 * gap * detail) for c in colour), 1.0 - gap * detail


# --- light transport ----------------------------------------------------------------------------

def nearest(o, d):
    """(distance, sphere) along a ray; sphere None is the floor, distance None the sky."""
    ox, oy, oz = o
    dx, dy, dz = d
    best, what = (-oy / dy, None) if dy < -1e-6 else (None, None)
    if best is not None and best < 1e-4:
        best = None
    for s in SPHERES:
        cx, cy, cz = s.x - ox, s.y - oy, s.z - oz
        b = cx * dx + cy * dy + cz * dz
        q = b * b - (cx * cx + cy * cy + cz * cz) + s.radius * s.radius
        if q <= 0.0:
            continue
        root = math.sqrt(q)
        t = b - root if b - root > 1e-4 else b + root
        if t > 1e-4 and (best is None or t < best):
            best, what = t, s
    return best, what


def _sun_and_openness(p, n, skip):
    """(share of the sun seen, share of the sky seen, light gathered through glass).

    The sun and each sphere are discs on the sky as seen from p; how far they overlap goes smoothly
    from none to all of the sun. Good enough for soft shadows and, unlike sampling, free of grain.
    """
    seen, open_sky, gathered = 1.0, 1.0, 0.0
    for s in SPHERES:
        if s is skip:
            continue
        x, y, z = s.x - p[0], s.y - p[1], s.z - p[2]
        square = x * x + y * y + z * z
        away = math.sqrt(square)
        if away > 9.0 * s.radius + 2.0:
            continue
        facing = (x * n[0] + y * n[1] + z * n[2]) / away
        ratio = min(s.radius / away, 1.0)
        open_sky *= 1.0 - max(facing + 0.15 * ratio, 0.0) / (1.0 + 0.15 * ratio) * ratio * ratio
        towards = (x * SUN[0] + y * SUN[1] + z * SUN[2]) / away
        if towards <= 0.0:
            continue
        angle, half = math.acos(min(towards, 1.0)), math.asin(ratio)
        hidden = 1.0 - smooth(half - 1.3 * SUN_RADIUS, half + 1.3 * SUN_RADIUS, angle)
        if s.kind == "glass":
            gathered += hidden * 2.6 * math.exp(-(angle / (0.42 * half))**2)
            hidden *= 0.72
        seen *= 1.0 - hidden
    return seen, open_sky, gathered


def _diffuse(p, n, albedo, skip):
    seen, open_sky, gathered = _sun_and_openness(p, n, skip)
    facing = max(n[0] * SUN[0] + n[1] * SUN[1] + n[2] * SUN[2], 0.0)
    sun = facing * (seen + gathered)
    up = 0.5 + 0.5 * n[1]
    # The floor below a sphere lies in the sphere's own shadow, hence less bounce straight down.
    bounce = (1.0 - up) * (1.0 - 0.55 * max(-n[1], 0.0))
    return tuple(a * (sun * l + open_sky * (up * s + bounce * b))
                 for a, l, s, b in zip(albedo, _SUNLIGHT, _SKYLIGHT, _BOUNCE))


def _mirrored(d, n):
    k = 2.0 * (d[0] * n[0] + d[1] * n[1] + d[2] * n[2])
    return d[0] - k * n[0], d[1] - k * n[1], d[2] - k * n[2]


def _grazing(cosine):
    """(1 - cosine)^5, Schlick's shape of the Fresnel reflection."""
    c = 1.0 - min(max(cosine, 0.0), 1.0)
    return c * c * c * c * c


def _bent(d, n, ratio):
    """Refraction with n against d and ratio = outer / inner index; None when all is reflected."""
    c = -(d[0] * n[0] + d[1] * n[1] + d[2] * n[2])
    k = 1.0 - ratio * ratio * (1.0 - c * c)
    if k < 0.0:
        return None
    f = ratio * c - math.sqrt(k)
    return d[0] * ratio + n[0] * f, d[1] * ratio + n[1] * f, d[2] * ratio + n[2] * f


def _glass(p, d, n, s, depth):
    """Mirror image plus the ray that goes in and out of the ball once."""
    cosine = -(d[0] * n[0] + d[1] * n[1] + d[2] * n[2])
    share = 0.04 + 0.96 * _grazing(cosine)
    inside = unit(_bent(d, n, 1.0 / 1.5))
    chord = -2.0 * (inside[0] * n[0] + inside[1] * n[1] + inside[2] * n[2]) * s.radius
    q = tuple(a + chord * b for a, b in zip(p, inside))
    out_n = ((s.x - q[0]) / s.radius, (s.y - q[1]) / s.radius, (s.z - q[2]) / s.radius)
    out = unit(_bent(inside, out_n, 1.5) or _mirrored(inside, out_n))
    start = tuple(a + 2e-3 * b for a, b in zip(q, out))
    through = tuple(a * b for a, b in zip(trace(start, out, depth - 1), s.colour))
    return mix(through, trace(p, _mirrored(d, n), depth - 1), share)


def _shade_sphere(p, d, s, depth):
    n = ((p[0] - s.x) / s.radius, (p[1] - s.y) / s.radius, (p[2] - s.z) / s.radius)
    if s.kind == "glass":
        return _glass(p, d, n, s, depth)
    grazing = _grazing(-(d[0] * n[0] + d[1] * n[1] + d[2] * n[2]))
    if s.kind == "metal":
        image = trace(p, _mirrored(d, n), depth - 1)
        _, open_sky, _ = _sun_and_openness(p, n, s)
        return tuple(i * (c + (1.0 - c) * grazing) * (0.35 + 0.65 * open_sky)
                     for i, c in zip(image, s.colour))
    albedo = _marble((p[0] - s.x, p[1] - s.y, p[2] - s.z)) if s.kind == "marble" else s.colour
    colour = _diffuse(p, n, albedo, s)
    if s.kind == "matte":
        return colour
    polish = (0.045 if s.kind == "glaze" else 0.03) + 0.90 * grazing
    return mix(colour, trace(p, _mirrored(d, n), depth - 1), polish)


def _shade_floor(p, d, distance, depth):
    albedo, varnish = floor(p[0], p[2], distance)
    colour = _diffuse(p, (0.0, 1.0, 0.0), albedo, None)
    share = varnish * (0.025 + 0.45 * _grazing(-d[1]))
    if share > 0.005 and depth > 1:
        colour = mix(colour, trace(p, (d[0], -d[1], d[2]), depth - 1), share)
    return colour


def trace(o, d, depth):
    """Light along a ray from o in direction d (unit), with haze over the distance."""
    if depth <= 0:
        return air(d)
    t, s = nearest(o, d)
    if t is None:
        return tuple(min(c, _BRIGHTEST) for c in sky(d))
    p = (o[0] + t * d[0], o[1] + t * d[1], o[2] + t * d[2])
    colour = _shade_floor(p, d, t, depth) if s is None else _shade_sphere(p, d, s, depth)
    haze = 1.0 - math.exp(-(t / 44.0)**1.5)
    return mix(colour, air((d[0], 0.0, d[2])), haze) if haze > 0.002 else colour


# --- camera -------------------------------------------------------------------------------------

EYE, TARGET, HALF_HEIGHT = (0.20, 1.70, -7.4), (0.16, 0.80, 0.0), math.tan(math.radians(16.5))


def _camera_axes():
    ahead = unit(tuple(b - a for a, b in zip(EYE, TARGET)))
    right = unit((ahead[2], 0.0, -ahead[0]))
    up = (ahead[1] * right[2] - ahead[2] * right[1], ahead[2] * right[0] - ahead[0] * right[2],
          ahead[0] * right[1] - ahead[1] * right[0])
    return ahead, right, up


AHEAD, RIGHT, UP = _camera_axes()


def camera_ray(x, y, width, height):
    """Direction through the point (x, y) of the picture, in pixels from its upper left corner."""
    sx = (2.0 * x - width) / height * HALF_HEIGHT
    sy = (height - 2.0 * y) / height * HALF_HEIGHT
    return unit(tuple(a + sx * r + sy * u for a, r, u in zip(AHEAD, RIGHT, UP)))


def depth(x, y, width, height):
    """Distance along the viewing axis in metres, None for the sky."""
    d = camera_ray(x, y, width, height)
    t, _ = nearest(EYE, d)
    return None if t is None else t * sum(a * b for a, b in zip(d, AHEAD))


def display(light, grain):
    """Code values 0 to 255: highlights rolled off, the sRGB curve, grain against banding."""
    out = []
    for c in light:
        c = c * (1.0 + c / 14.0) / (1.0 + 0.42 * c)
        value = icc.linear_to_srgb(min(max(c, 0.0), 1.0))
        value = 255.0 * (value + 0.45 * (smooth(0.0, 1.0, value) - value)) + grain
        out.append(min(max(int(value + 0.5), 0), 255))
    return bytes(out)


def picture_row(y, width, height, samples):
    """One row of the picture as RGB bytes, samples x samples rays to a pixel."""
    row = bytearray()
    for x in range(width):
        total = (0.0, 0.0, 0.0)
        for i in range(samples * samples):
            px = x + (i % samples + 0.5) / samples
            py = y + (i // samples + 0.5) / samples
            light = trace(EYE, camera_ray(px, py, width, height), 5)
            total = tuple(a + b for a, b in zip(total, light))
        grain = 1.6 * (hash01(x, y, x >> 8) + hash01(y, x, 77 + (y >> 8)) - 1.0)
        row += display(tuple(c / (samples * samples) for c in total), grain)
    return bytes(row)
