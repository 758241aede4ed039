"""Puts the mountain lake together: sky, land, water and the jetty under the viewer, to one panorama."""

import numpy
from PIL import Image

import noise
from land import Land
from scene import (DECK, DECK_BACK, DECK_FRONT, DECK_HALF_WIDTH, EYE, SKY_LIGHT, SUN, SUN_LIGHT, Sky, bilinear,
                   clear_sky, mix, smooth)

PLANK, GAP = 0.145, 0.009  # metres along the jetty
POSTS = [(-DECK_HALF_WIDTH - 0.10, 1.25), (DECK_HALF_WIDTH + 0.10, 1.25),
         (-DECK_HALF_WIDTH - 0.10, -3.2), (DECK_HALF_WIDTH + 0.10, -3.2),
         (-DECK_HALF_WIDTH - 0.10, -8.0), (DECK_HALF_WIDTH + 0.10, -8.0),
         (-DECK_HALF_WIDTH - 0.10, -14.0), (DECK_HALF_WIDTH + 0.10, -14.0),
         (-DECK_HALF_WIDTH - 0.10, -21.0), (DECK_HALF_WIDTH + 0.10, -21.0)]
POST_RADIUS, POST_TOP = 0.10, DECK + 0.42


def on_deck(x, z):
    # The ends of the planks are not sawn to a line.
    ragged = 0.03 * (noise.random_of_cell(numpy.floor(z / PLANK + 0.45).astype(numpy.int32), 7, 1) - 0.5)
    return (numpy.abs(x) < DECK_HALF_WIDTH + ragged) & (z < DECK_FRONT) & (z > DECK_BACK)


def deck_colour(x, z, footprint):
    """Weathered planks across the jetty; footprint: metres of one sample along z."""
    place = z / PLANK + 0.45  # no gap right under the viewer
    plank = numpy.floor(place).astype(numpy.int32)
    across = place - plank
    tone = noise.random_of_cell(plank, 0, 1)
    offset = 40 * noise.random_of_cell(plank, 3, 2)
    calm = numpy.clip(1.6 - footprint / 0.02, 0, 1)
    long_grain = noise.fractal(x * 1.1 + offset, z * 34 + offset, 4, finest=footprint * 30)
    knots = noise.plane(x * 2.2 + offset, z * 9 + 3 * offset)
    rings = numpy.sin(38 * (z + 0.020 * knots * 3) + 9 * knots + offset)
    wood = mix((0.115, 0.093, 0.072), (0.225, 0.195, 0.160), tone)
    wood = wood * (1 + (0.30 * long_grain + 0.07 * rings) * calm)[..., None]
    wood = mix(wood, (0.165, 0.168, 0.165), 0.4 * smooth(-0.2, 0.5, noise.plane(x * 0.7, z * 0.5)))
    # Rounded edges and the dark between planks, spread over the sample where the planks get small.
    edge = numpy.minimum(across, 1 - across) * PLANK
    width = GAP / 2 + footprint * 0.5
    share = numpy.clip((GAP + 0.004) / (2 * width), 0, 1)
    gap = 1 - smooth(width * 0.55, width + 0.004, edge)
    nails = numpy.zeros_like(x)
    for nail_x in (-0.78, -0.02, 0.78):
        for nail_z in (0.27, 0.73):
            nails = numpy.maximum(nails, 1 - smooth(0.0035, 0.006, numpy.hypot(
                x - nail_x - 0.02 * (tone - 0.5), (across - nail_z) * PLANK)))
    wood = mix(wood, (0.035, 0.030, 0.028), 0.8 * nails * calm)

    shadow = numpy.ones_like(x)
    for post_x, post_z in POSTS:
        # A post's shadow runs away from the sun along the deck.
        dx, dz = x - post_x, z - post_z
        flat = numpy.hypot(SUN[0], SUN[2])
        along = -(dx * SUN[0] + dz * SUN[2]) / flat
        aside = numpy.abs(dx * SUN[2] - dz * SUN[0]) / flat
        length = (POST_TOP - DECK) * flat / SUN[1]
        inside = (1 - smooth(POST_RADIUS * 0.85, POST_RADIUS * 1.1, aside)) * (along > 0)
        shadow = numpy.minimum(shadow, 1 - inside * (1 - smooth(length - 0.02, length + 0.03, along)))
    light = (SUN[1] * shadow)[..., None] * SUN_LIGHT + SKY_LIGHT * 1.05
    return mix(wood * light, (0.006, 0.007, 0.008), gap * share)


def post_hit(dx, dy, dz):
    """Nearest post along each ray from the eye: distance along the ray (infinite: none), colour."""
    nearest = numpy.full(dx.shape, numpy.inf, dtype=numpy.float32)
    colour = numpy.zeros(dx.shape + (3,), dtype=numpy.float32)
    flat = dx * dx + dz * dz
    for which, (post_x, post_z) in enumerate(POSTS):
        b = dx * post_x + dz * post_z
        inside = b * b - flat * (post_x * post_x + post_z * post_z - POST_RADIUS * POST_RADIUS)
        t = numpy.where((inside > 0) & (b > 0), (b - numpy.sqrt(numpy.maximum(inside, 0)))
                        / numpy.maximum(flat, 1e-9), numpy.inf)
        y = EYE + t * dy
        side = numpy.isfinite(t) & (y < POST_TOP) & (y > -0.02)
        # The sawn top: where the ray meets its height within the circle.
        with numpy.errstate(divide="ignore"):
            cap_t = numpy.where(dy < -1e-4, (POST_TOP - EYE) / dy, numpy.inf)
        with numpy.errstate(invalid="ignore"):
            cap = numpy.hypot(cap_t * dx - post_x, cap_t * dz - post_z) < POST_RADIUS
        t = numpy.where(cap, cap_t, numpy.where(side, t, numpy.inf))
        closer = numpy.flatnonzero((t < nearest).ravel())
        if not closer.size:
            continue
        tt = t.ravel()[closer]
        px, pz = tt * dx.ravel()[closer] - post_x, tt * dz.ravel()[closer] - post_z
        py = EYE + tt * dy.ravel()[closer]
        on_cap = cap.ravel()[closer]
        angle = numpy.arctan2(px, pz)
        grain = noise.fractal(angle * 9 + which * 7, py * 1.2 + which, 3, size=1.0)
        rings = numpy.sin(numpy.hypot(px, pz) * 330 + 2 * noise.plane(px * 20, pz * 20))
        wood = mix((0.115, 0.092, 0.070), (0.215, 0.180, 0.145), 0.5 + 0.55 * grain)
        wood = numpy.where(on_cap[:, None], mix((0.24, 0.20, 0.15), (0.30, 0.26, 0.20), 0.5 + 0.3 * rings), wood)
        wood = wood * (0.35 + 0.65 * smooth(0.02, 0.22, py))[:, None]  # wet at the water
        facing = numpy.where(on_cap, SUN[1], numpy.maximum((px * SUN[0] + pz * SUN[2]) / POST_RADIUS, 0))
        sky_share = numpy.where(on_cap, 1.0, 0.55)
        lit = wood * (facing[:, None] * SUN_LIGHT + sky_share[:, None] * SKY_LIGHT)
        nearest.ravel()[closer] = tt
        colour.reshape(-1, 3)[closer] = lit
    return nearest, colour


class Lake:
    HIGHEST, LOWEST = numpy.radians(34.0), numpy.radians(-7.0)

    def __init__(self, width):
        self._width = width
        rows = int(width / 360 * 41)
        self._sky = Sky()
        land = Land(width, self.LOWEST, self.HIGHEST, rows)
        self._land = land.picture(EYE)
        # What the water mirrors needs half the detail.
        mirrored = Land.__new__(Land)
        mirrored.__dict__.update(land.__dict__, width=width // 2, rows=rows // 2)
        self._mirror = mirrored.picture(-EYE)

    def _land_at(self, pictures, heading, elevation):
        colour, cover = pictures
        rows, width = cover.shape
        column = (heading / (2 * numpy.pi) + 0.5) * width - 0.5
        row = (self.HIGHEST - elevation) / (self.HIGHEST - self.LOWEST) * rows - 0.5
        share = bilinear(cover[..., None], column, row)[..., 0]
        return bilinear(colour, column, row), numpy.where(elevation > self.HIGHEST, 0, share)

    def _reflected(self, x, y, z):
        """Linear colour seen along upward unit vectors from the water."""
        colour, cover = self._land_at(self._mirror, numpy.arctan2(x, z), numpy.arcsin(numpy.clip(y, 0, 1)))
        sky = numpy.minimum(self._sky(x, y, z), 14.0)
        return colour + sky * (1 - cover)[..., None]

    def _water(self, x, z, dx, dy, dz):
        distance = numpy.hypot(x, z)
        footprint = distance * distance / EYE * (2 * numpy.pi / self._width) + 0.002
        slope_x, slope_z = numpy.zeros_like(x), numpy.zeros_like(z)
        breeze = 0.35 + 0.65 * smooth(-0.25, 0.45, noise.fractal(x + 40, z * 0.6, 3, size=210.0))
        for size, strength in ((0.22, 0.010), (0.55, 0.016), (1.4, 0.020), (3.7, 0.018), (11.0, 0.010)):
            # Waves smaller than a sample still roughen the mirror, as a scatter from sample to sample.
            seen = numpy.clip(size / footprint - 0.3, 0.30, 1.0) * strength
            slope_x += seen * noise.plane(x / size + 3.1 * size, z / size * 1.3) * 1.6
            slope_z += seen * noise.plane(x / size - 7.7 * size, z / size * 1.3 + 31) * 1.6
        calm = 1 / (1 + distance / 900.0)
        slope_x, slope_z = slope_x * breeze * calm, slope_z * breeze * calm
        up = 1 / numpy.sqrt(1 + slope_x ** 2 + slope_z ** 2)
        nx, nz = -slope_x * up, -slope_z * up
        facing = dx * nx + dy * up + dz * nz
        rx, ry, rz = dx - 2 * facing * nx, numpy.abs(dy - 2 * facing * up), dz - 2 * facing * nz
        mirror = self._reflected(rx, ry, rz)
        fresnel = 0.02 + 0.98 * (1 - numpy.clip(-facing, 0.02, 1)) ** 5

        # Looking down into it: stones on the bottom, then green, then the dark of deep water.
        depth = numpy.clip(1.2 + 0.10 * (z + 8), 0.25, 6.0) + 0.2 * noise.plane(x * 0.3, z * 0.3)
        bent = 0.75 * depth / numpy.maximum(-dy, 0.35)
        bx, bz = x + dx * bent + slope_x * depth * 2.0, z + dz * bent + slope_z * depth * 2.0
        stones = 0.5 + 1.1 * noise.fractal(bx, bz, 5, gain=0.65, finest=footprint * 1.5, size=0.6)
        bottom = mix((0.06, 0.066, 0.045), (0.17, 0.165, 0.125), stones)
        ripple = noise.plane(bx * 2.1 + 0.8 * noise.plane(bx, bz), bz * 2.1)
        caustics = (1 - numpy.clip(numpy.abs(ripple) * 3.2, 0, 1)) ** 3 * numpy.exp(-footprint * 6)
        # The jetty's shadow on the bottom, its edges softened by the ripples.
        sx = numpy.abs(bx + SUN[0] / SUN[1] * (DECK + 0.7 * depth))
        sz = bz + SUN[2] / SUN[1] * (DECK + 0.7 * depth)
        blur = 0.05 + 0.12 * depth
        sunlit = 1.0 - 0.65 * ((1 - smooth(DECK_HALF_WIDTH - blur, DECK_HALF_WIDTH + blur, sx))
                               * (1 - smooth(DECK_FRONT - blur, DECK_FRONT + blur, sz)))
        bottom = bottom * (sunlit * (0.80 + 0.45 * caustics))[..., None] * SUN_LIGHT * 0.55 + bottom * SKY_LIGHT * 0.3
        path = (bent + depth)[..., None]
        murk = numpy.array([0.010, 0.040, 0.047], dtype=numpy.float32) * (0.55 + 0.45 * sunlit)[..., None]
        through = numpy.exp(-path * numpy.array([0.46, 0.27, 0.31], dtype=numpy.float32))
        body = bottom * through + murk * (1 - through)
        return body * (1 - fresnel)[..., None] + mirror * fresnel[..., None]

    def colours(self, heading, elevation):
        """Linear colours along directions given as two arrays of one shape."""
        dx = (numpy.sin(heading) * numpy.cos(elevation)).astype(numpy.float32)
        dy = numpy.sin(elevation).astype(numpy.float32)
        dz = (numpy.cos(heading) * numpy.cos(elevation)).astype(numpy.float32)
        result = numpy.zeros(dx.shape + (3,), dtype=numpy.float32)
        if elevation.max() > 0:
            result = self._sky(dx, numpy.maximum(dy, 0), dz)
        below = dy < -1e-4
        if below.any():
            down = -dy[below]
            t = EYE / down
            x, z = t * dx[below], t * dz[below]
            colour = self._water(x, z, dx[below], dy[below], dz[below])
            # Far water loses itself in the haze.
            distance = numpy.hypot(x, z)
            air = clear_sky(dx[below], numpy.full_like(down, 0.03), dz[below]).clip(0, 1.1)
            colour = mix(air, colour, numpy.exp(-distance / 16000.0))
            result[below] = colour
        near = (elevation < self.HIGHEST) & (elevation > self.LOWEST)
        if near.any():
            colour, cover = self._land_at(self._land, heading[near], elevation[near])
            result[near] = colour + result[near] * (1 - cover)[..., None]
        if below.any():
            t = (EYE - DECK) / -dy[below]
            x, z = t * dx[below], t * dz[below]
            step = 2 * numpy.pi / self._width
            length = numpy.hypot(x, z)
            footprint = step * (length + length ** 2 / (EYE - DECK)
                                * numpy.abs(z) / numpy.maximum(length, 0.01)) + 0.0008
            planks = on_deck(x, z)
            colour = result[below]
            colour[planks] = deck_colour(x[planks], z[planks], footprint[planks])
            result[below] = colour
            post_t, post_colour = post_hit(dx[below], dy[below], dz[below])
            # Posts stand beside the planks; nothing hides what of them rises above the deck.
            sees_post = numpy.isfinite(post_t) & ((EYE + post_t * dy[below] > DECK) | ~planks)
            colour = result[below]
            colour[sees_post] = post_colour[sees_post]
            result[below] = colour
        return result


def tone(linear, exposure=0.92):
    """Linear light to 8-bit sRGB through a film-like curve."""
    c = numpy.maximum(linear, 0) * exposure
    grey = (c @ numpy.array([0.2126, 0.7152, 0.0722], dtype=numpy.float32))[..., None]
    c = numpy.maximum(grey + (c - grey) * 1.10, 0)
    c = c * (2.51 * c + 0.03) / (c * (2.43 * c + 0.59) + 0.14)
    c = numpy.clip(c, 0, 1)
    return numpy.where(c <= 0.0031308, c * 12.92, 1.055 * c ** (1 / 2.4) - 0.055)


def panorama(width):
    """The scene as a width x width/2 equirectangular picture; 2 x 2 samples per pixel.

    Column 0 looks to the back and row 0 straight up: pixel centres lie on the grid, without half-pixel
    offsets.
    """
    height = width // 2
    lake = Lake(width * 2)
    rows = []
    columns = (numpy.arange(width * 2) * 0.5 - 0.25) / width
    band = 16
    for first in range(0, height, band):
        sub = (numpy.arange(first * 2, min(first + band, height) * 2) * 0.5 - 0.25) / height
        heading, elevation = numpy.meshgrid((columns * 2 - 1) * numpy.pi, (0.5 - sub) * numpy.pi)
        heading = (heading + numpy.pi) % (2 * numpy.pi) - numpy.pi
        elevation = numpy.clip(elevation, -numpy.pi / 2, numpy.pi / 2)
        colours = numpy.minimum(lake.colours(heading.astype(numpy.float32), elevation.astype(numpy.float32)), 6.0)
        shape = (colours.shape[0] // 2, 2, width, 2, 3)
        rows.append(tone(colours.reshape(shape).mean(axis=(1, 3))))
    return Image.fromarray(numpy.round(numpy.concatenate(rows) * 255).astype(numpy.uint8), "RGB")
