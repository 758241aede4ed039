"""A mountain lake seen from the end of a jetty, as a full spherical panorama.

Everything is drawn by formula, in metres: +X right, +Y up, +Z front, the water at y = 0 and the eye above
the jetty's last planks. The sky is a map of directions with clouds marched through it. The land is a field
of heights, drawn column by column of the panorama: along each heading the steepest sight so far hides
what lies behind it. The lake mirrors what an eye as far below the water would see.
"""

import numpy

import noise

EYE = 2.3          # above the water
DECK = 0.62        # the jetty's planks above the water
DECK_HALF_WIDTH = 0.95
DECK_FRONT, DECK_BACK = 1.7, -31.0

SUN_HEADING, SUN_ELEVATION = numpy.radians(112.0), numpy.radians(31.0)
SUN = numpy.array([numpy.sin(SUN_HEADING) * numpy.cos(SUN_ELEVATION), numpy.sin(SUN_ELEVATION),
                   numpy.cos(SUN_HEADING) * numpy.cos(SUN_ELEVATION)], dtype=numpy.float32)
SUN_LIGHT = numpy.array([3.3, 2.95, 2.45], dtype=numpy.float32)
SKY_LIGHT = numpy.array([0.36, 0.52, 0.80], dtype=numpy.float32)


def smooth(edge0, edge1, x):
    t = numpy.clip((x - edge0) / (edge1 - edge0), 0.0, 1.0)
    return t * t * (3.0 - 2.0 * t)


def mix(a, b, t):
    """Blend along the last axis of colours; t without that axis."""
    t = numpy.asarray(t, dtype=numpy.float32)[..., None]
    return numpy.asarray(a, dtype=numpy.float32) * (1 - t) + numpy.asarray(b, dtype=numpy.float32) * t


# --- sky -------------------------------------------------------------------------------------------------

def clear_sky(x, y, z):
    """Linear colour of the cloudless sky along unit vectors; below the horizon as at the horizon."""
    y = numpy.maximum(y, 0.0)
    towards_sun = numpy.clip(x * SUN[0] + y * SUN[1] + z * SUN[2], -1.0, 1.0)
    colour = mix((0.045, 0.135, 0.44), (0.27, 0.49, 0.86), numpy.exp(-3.0 * y))
    colour = mix(colour, (0.80, 0.86, 0.92), 0.80 * numpy.exp(-11.0 * y))
    warmth = numpy.exp(-7.0 * y) * (0.5 + 0.5 * towards_sun) ** 3
    colour = mix(colour, (1.02, 0.90, 0.72), 0.55 * warmth)
    forward = numpy.maximum(towards_sun, 0.0)
    glow = 0.22 * forward ** 6 + 0.35 * forward ** 40 + 0.9 * forward ** 400 + 6.0 * forward ** 6000
    colour = colour + glow[..., None] * numpy.array([1.0, 0.90, 0.72], dtype=numpy.float32)
    disc = smooth(numpy.cos(numpy.radians(0.42)), numpy.cos(numpy.radians(0.32)), towards_sun)
    return colour + (disc * 40.0)[..., None] * numpy.array([1.0, 0.95, 0.85], dtype=numpy.float32)


class Sky:
    """Map of the upper half of the sky: clear sky and clouds, sampled by direction."""

    WIDTH, HEIGHT = 3072, 768

    def __init__(self):
        self._shape = noise.Volume(128, 4, 5)
        heading = (numpy.arange(self.WIDTH) / self.WIDTH * 2 - 1) * numpy.pi
        elevation = (numpy.arange(self.HEIGHT) + 0.5) / self.HEIGHT * (numpy.pi / 2)
        heading, elevation = numpy.meshgrid(heading.astype(numpy.float32), elevation.astype(numpy.float32))
        x = (numpy.sin(heading) * numpy.cos(elevation)).ravel()
        y = numpy.sin(elevation).ravel()
        z = (numpy.cos(heading) * numpy.cos(elevation)).ravel()
        light, through = self._clouds(x, y, z)
        shape = (self.HEIGHT, self.WIDTH)
        self._light = _soften(light.reshape(shape + (3,)))
        self._through = _soften(through.reshape(shape + (1,)))

    def _density(self, x, y, z):
        """Cloud water at points in metres, 0..1."""
        scale = numpy.float32(1 / 9000.0)
        large = self._shape(x * scale, y * scale + numpy.float32(0.31), z * scale)
        small = self._shape(x * (scale * 5), y * (scale * 5), z * (scale * 5) + numpy.float32(0.17))
        height = (y - self.BASE) / (self.TOP - self.BASE)
        rounded = smooth(0.0, 0.12, height) * (1 - smooth(0.30, 1.0, height))
        # Flat bases and heaped tops: less and less of the field stays cloud with height.
        value = large + 0.34 * (small - 0.5) - 0.585 - 0.20 * height
        return numpy.clip(value * 9.0, 0.0, 1.0) * rounded

    BASE, TOP, STEPS = 1700.0, 3300.0, 56

    def _clouds(self, x, y, z):
        """Light sent to the eye by the clouds along each direction, and the share of light that passes."""
        count = x.size
        light = numpy.zeros((count, 3), dtype=numpy.float32)
        through = numpy.ones(count, dtype=numpy.float32)
        seen = numpy.flatnonzero(y > 0.035)
        dx, dy, dz = x[seen], y[seen], z[seen]
        near = self.BASE / dy
        step = numpy.minimum((self.TOP - self.BASE) / dy, 9000.0) / self.STEPS
        jitter = noise.random_of_cell(seen % 911, seen // 911)
        passed = numpy.ones(seen.size, dtype=numpy.float32)
        collected = numpy.zeros((seen.size, 3), dtype=numpy.float32)
        towards_sun = dx * SUN[0] + dy * SUN[1] + dz * SUN[2]
        phase = 0.75 + 0.9 * numpy.clip(towards_sun, 0, 1) ** 6
        haze = numpy.exp(-near / 26000.0)
        for i in range(self.STEPS):
            alive = numpy.flatnonzero(passed > 0.01)
            t = near[alive] + step[alive] * (i + jitter[alive])
            px, py, pz = t * dx[alive], t * dy[alive], t * dz[alive]
            density = self._density(px, py, pz)
            hit = density > 0.001
            if not hit.any():
                continue
            cells = alive[hit]
            px, py, pz, density = px[hit], py[hit], pz[hit], density[hit]
            shade = numpy.zeros_like(density)
            for distance in (70.0, 200.0, 420.0, 800.0):
                shade += self._density(px + SUN[0] * distance, py + SUN[1] * distance,
                                       pz + SUN[2] * distance) * (distance * 0.62)
            lit = 0.72 * numpy.exp(-0.0048 * shade) + 0.28 * numpy.exp(-0.0011 * shade)
            height = (py - self.BASE) / (self.TOP - self.BASE)
            colour = (lit * phase[cells])[:, None] * numpy.array([1.30, 1.18, 1.02], dtype=numpy.float32)
            colour += (0.42 + 0.42 * height)[:, None] * numpy.array([0.52, 0.64, 0.82], dtype=numpy.float32)
            taken = 1 - numpy.exp(-density * step[cells] * 0.011)
            collected[cells] += (passed[cells] * taken)[:, None] * colour
            passed[cells] *= 1 - taken
        # Far clouds fade into the sky's own colour.
        far = (1 - haze) * (1 - passed)
        collected = collected * haze[:, None] + clear_sky(dx, dy, dz).clip(0, 1.2) * far[:, None]
        fade = smooth(0.035, 0.085, dy)
        light[seen] = collected * fade[:, None]
        through[seen] = 1 - (1 - passed) * fade
        return light, through

    def __call__(self, x, y, z, disc=True):
        """Linear colour along unit vectors with y >= 0."""
        clear = clear_sky(x, y, z)
        if not disc:
            clear = numpy.minimum(clear, 8.0)
        column = (numpy.arctan2(x, z) / (2 * numpy.pi) + 0.5) * self.WIDTH
        row = numpy.arcsin(numpy.clip(y, 0, 1)) / (numpy.pi / 2) * self.HEIGHT - 0.5
        light = bilinear(self._light, column, row)
        through = bilinear(self._through, column, row)
        return clear * through + light


def _soften(picture):
    """A 3 x 3 blur that runs around the left and right edge."""
    picture = 0.25 * numpy.roll(picture, 1, axis=1) + 0.5 * picture + 0.25 * numpy.roll(picture, -1, axis=1)
    padded = numpy.concatenate([picture[:1], picture, picture[-1:]])
    return 0.25 * padded[:-2] + 0.5 * padded[1:-1] + 0.25 * padded[2:]


def bilinear(picture, column, row):
    """Samples between pixels; columns wrap around, rows stop at the edges."""
    height, width = picture.shape[:2]
    row = numpy.clip(row, 0, height - 1)
    c0, r0 = numpy.floor(column), numpy.floor(row)
    tc = (column - c0).astype(numpy.float32)[..., None]
    tr = (row - r0).astype(numpy.float32)[..., None]
    c0, r0 = c0.astype(numpy.int32) % width, r0.astype(numpy.int32)
    c1, r1 = (c0 + 1) % width, numpy.minimum(r0 + 1, height - 1)
    top = picture[r0, c0] * (1 - tc) + picture[r0, c1] * tc
    bottom = picture[r1, c0] * (1 - tc) + picture[r1, c1] * tc
    return top * (1 - tr) + bottom * tr
