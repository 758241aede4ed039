"""The land around the lake: its heights, trees, colours and shadows, and how it is drawn.

Land.picture(eye) draws the upper part of the panorama: for every heading a row of points at growing
distances is raised to the land's height, and for every elevation the first point that stands high enough
is what is seen. With an eye below the water it is the picture that the lake mirrors.
"""

import numpy

import noise
from scene import SKY_LIGHT, SUN, SUN_ELEVATION, SUN_HEADING, SUN_LIGHT, clear_sky, mix, smooth

NEAREST, FARTHEST, DISTANCES = 18.0, 70000.0, 4200
TREE_CELL = 6.5   # metres of forest per tree
TREE_RANGE = 5200.0  # farther away a forest is only a texture


def ground_height(x, z, finest=None):
    """Height above the water of the bare ground; negative in the lake."""
    from_eye = numpy.hypot(x, z)
    if finest is None:
        finest = numpy.full_like(x, 4.0)
    # The lake: a long ellipse to the front with bays; the jetty stands at its near end.
    ex, ez = x / 820.0, (z - 1650.0) / 1690.0
    inside = numpy.sqrt(ex * ex + ez * ez)
    bays = noise.fractal(x + 300, z, 5, finest=finest, size=620.0) * smooth(40.0, 500.0, from_eye)
    shore = (inside - 1.0) * 780.0 + 130.0 * bays
    shore = shore + 5.0 * noise.fractal(x, z + 77, 3, finest=finest, size=30.0)
    bank = numpy.where(shore > 0, 0.035 * shore + 0.9 * (1 - numpy.exp(-numpy.maximum(shore, 0) / 9.0)),
                       0.05 * shore)
    bank = bank + 14.0 * smooth(60.0, 900.0, shore) * noise.fractal(x, z, 5, finest=finest, size=260.0)

    # Mountains rise away from the shore; a valley leaves the view to the front open.
    rise = smooth(120.0, 5200.0, shore)
    axis = numpy.abs(x - 0.10 * z - 200.0)
    valley = smooth(250.0, 3400.0, axis + numpy.maximum(-z, 0) * 0.5 + 900.0 * smooth(8000, 16000, from_eye))
    warp_x = 900.0 * noise.fractal(x, z, 3, size=5200.0)
    warp_z = 900.0 * noise.fractal(x + 5000, z - 3000, 3, size=5200.0)
    crest = noise.fractal(x + warp_x, z + warp_z, 11, gain=0.44, finest=finest, size=5200.0, ridged=True)
    broad = 0.5 + 0.5 * noise.fractal(x - 900, z + 2500, 3, size=9000.0)
    peaks = rise * (0.22 + 0.78 * valley) * (520.0 * broad + 1650.0 * numpy.maximum(crest - 0.10, 0) ** 1.1)
    return (bank + peaks).astype(numpy.float32)


def forest_density(x, z, height, slope):
    """0..1: how much of the ground is wooded."""
    patches = 0.5 + 0.5 * noise.fractal(x, z + 4000, 4, size=340.0)
    line = 560.0 + 260.0 * noise.fractal(x - 70, z, 3, size=900.0)  # the tree line
    from_eye = numpy.hypot(x, z + 10.0)
    wooded = smooth(0.30, 0.48, patches + 0.20 * smooth(60, 200, height))
    wooded = wooded * (1 - smooth(line - 140, line + 60, height)) * smooth(1.2, 3.0, height)
    return wooded * (1 - smooth(0.95, 1.35, slope)) * smooth(80.0, 120.0, from_eye)


class Tree:
    """What stands at a set of points: height of the tree above the ground there and its shading."""

    def __init__(self, x, z, density):
        cells_x, cells_z = x / TREE_CELL, z / TREE_CELL
        base_x = numpy.floor(cells_x - 0.5).astype(numpy.int32)
        base_z = numpy.floor(cells_z - 0.5).astype(numpy.int32)
        self.height = numpy.zeros_like(x)
        self.total = numpy.ones_like(x)
        self.tone = numpy.zeros_like(x)
        self.side_x = numpy.zeros_like(x)
        self.side_z = numpy.zeros_like(x)
        # Branches: the outline is cut into tiers by noise that turns with the direction from the stem.
        rough = noise.plane(x * 1.7, z * 1.7) * 0.55 + noise.plane(x * 4.1, z * 4.1) * 0.40
        for ox in (0, 1):
            for oz in (0, 1):
                ix, iz = base_x + ox, base_z + oz
                stem_x = (ix + 0.5 + 0.72 * (noise.random_of_cell(ix, iz, 1) - 0.5)) * TREE_CELL
                stem_z = (iz + 0.5 + 0.72 * (noise.random_of_cell(ix, iz, 2) - 0.5)) * TREE_CELL
                dx, dz = x - stem_x, z - stem_z
                distance = numpy.hypot(dx, dz)
                full = 9.0 + 15.0 * noise.random_of_cell(ix, iz, 3) ** 1.4
                radius = 1.7 + 0.085 * full
                stands = noise.random_of_cell(ix, iz, 4) < density * 0.93
                share = 1.0 - distance / radius * (1.0 + 0.55 * rough)
                here = numpy.where(stands & (share > 0), full * numpy.clip(share, 0, 1) ** 0.9 + 0.4, 0)
                taller = here > self.height
                self.height = numpy.where(taller, here, self.height)
                self.total = numpy.where(taller, full, self.total)
                self.tone = numpy.where(taller, noise.random_of_cell(ix, iz, 5), self.tone)
                inverse = 1.0 / numpy.maximum(distance, 0.05)
                self.side_x = numpy.where(taller, dx * inverse, self.side_x)
                self.side_z = numpy.where(taller, dz * inverse, self.side_z)


class Shadows:
    """How much sun reaches the ground: a map aligned with the sun, swept once along its rays."""

    SIDE, REACH = 2048, 15000.0

    def __init__(self):
        steps = (numpy.arange(self.SIDE, dtype=numpy.float32) / (self.SIDE - 1) * 2 - 1) * self.REACH
        along, across = numpy.meshgrid(steps, steps)  # along: towards the sun
        x, z = self._turned(along, across)
        height = ground_height(x, z, numpy.full_like(x, 30.0))
        fall = numpy.tan(SUN_ELEVATION)
        # A ray that grazes a point has the height h - distance * fall: the largest on the sunny side counts.
        level = height - along * fall
        highest = numpy.maximum.accumulate(level[:, ::-1], axis=1)[:, ::-1]
        self._above = (highest + along * fall) - height  # metres of shadow above the ground

    @staticmethod
    def _turned(along, across):
        s, c = numpy.sin(SUN_HEADING), numpy.cos(SUN_HEADING)
        return along * s + across * c, along * c - across * s

    def __call__(self, x, z, raised):
        """0 in shadow .. 1 in the sun; raised: metres above the ground."""
        s, c = numpy.sin(SUN_HEADING), numpy.cos(SUN_HEADING)
        along, across = x * s + z * c, x * c - z * s
        column = (along / self.REACH + 1) * 0.5 * (self.SIDE - 1)
        row = (across / self.REACH + 1) * 0.5 * (self.SIDE - 1)
        within = (numpy.abs(along) < self.REACH) & (numpy.abs(across) < self.REACH)
        column = numpy.clip(column, 0, self.SIDE - 2)
        row = numpy.clip(row, 0, self.SIDE - 2)
        c0, r0 = column.astype(numpy.int32), row.astype(numpy.int32)
        tc, tr = column - c0, row - r0
        above = ((self._above[r0, c0] * (1 - tc) + self._above[r0, c0 + 1] * tc) * (1 - tr)
                 + (self._above[r0 + 1, c0] * (1 - tc) + self._above[r0 + 1, c0 + 1] * tc) * tr)
        return numpy.where(within, 1 - smooth(2.0, 34.0, above - raised), 1.0)


class Land:
    def __init__(self, width, lowest, highest, rows):
        """Picture of `width` headings and `rows` elevations from `highest` down to `lowest` (radians)."""
        self.width, self.rows = width, rows
        self.lowest, self.highest = lowest, highest
        self._shadows = Shadows()
        self._distances = numpy.geomspace(NEAREST, FARTHEST, DISTANCES).astype(numpy.float32)

    def picture(self, eye):
        """Linear colours (rows x width x 3) and cover (rows x width: 1 land, 0 sky or water)."""
        colour = numpy.zeros((self.rows, self.width, 3), dtype=numpy.float32)
        cover = numpy.zeros((self.rows, self.width), dtype=numpy.float32)
        block = 256
        for first in range(0, self.width, block):
            part = slice(first, min(first + block, self.width))
            colour[:, part], cover[:, part] = self._block(part, eye)
        return colour, cover

    def _block(self, part, eye):
        headings = ((numpy.arange(part.start, part.stop) + 0.5) / self.width * 2 - 1) * numpy.pi
        sine, cosine = numpy.sin(headings).astype(numpy.float32), numpy.cos(headings).astype(numpy.float32)
        distances = self._distances
        x, z = sine[:, None] * distances, cosine[:, None] * distances
        finest = numpy.broadcast_to(distances * 0.0030, x.shape)
        height = ground_height(x, z, finest)
        water = height <= 0
        top = numpy.maximum(height, 0)

        slope = numpy.abs(numpy.gradient(height, axis=1)) / numpy.gradient(distances)
        woods = numpy.flatnonzero((~water & (distances < TREE_RANGE) & (height < 900)).ravel())
        wx, wz = x.ravel()[woods], z.ravel()[woods]
        density = forest_density(wx, wz, height.ravel()[woods], slope.ravel()[woods])
        some = density > 0.02
        woods, wx, wz = woods[some], wx[some], wz[some]
        trees = Tree(wx, wz, density[some])
        raised = top.ravel().copy()
        raised[woods] += trees.height
        raised = raised.reshape(top.shape)

        sight = numpy.arctan2(raised - eye, distances)
        if eye < 0:
            sight = numpy.where(water, -2.0, sight)
        steepest = numpy.maximum.accumulate(sight, axis=1)
        elevations = self.highest - (numpy.arange(self.rows) + 0.5) / self.rows * (self.highest - self.lowest)
        index = numpy.empty((x.shape[0], self.rows), dtype=numpy.int32)
        for column in range(x.shape[0]):
            index[column] = numpy.searchsorted(steepest[column], elevations)
        hit = index < DISTANCES
        index = numpy.minimum(index, DISTANCES - 1)
        columns = numpy.arange(x.shape[0])[:, None]
        seen_water = water[columns, index] & (eye > 0)
        hit &= ~seen_water

        # Between two samples of a rising slope the point seen lies at a share of the step.
        before = numpy.maximum(index - 1, 0)
        a, b = sight[columns, before], sight[columns, index]
        share = numpy.clip((elevations[None, :] - a) / numpy.maximum(b - a, 1e-9), 0, 1)
        distance = distances[before] + (distances[index] - distances[before]) * share

        select = numpy.nonzero(hit)
        colour = numpy.zeros((x.shape[0], self.rows, 3), dtype=numpy.float32)
        point_distance = distance[select].astype(numpy.float32)
        colour[select] = self._shade(sine[select[0]], cosine[select[0]], point_distance,
                                     raised[select[0], index[select]] - top[select[0], index[select]])
        return colour.transpose(1, 0, 2), hit.astype(numpy.float32).T

    def _shade(self, sine, cosine, distance, tree_height):
        x, z = sine * distance, cosine * distance
        finest = distance * 0.0018
        height = ground_height(x, z, finest)
        reach = numpy.maximum(0.6, distance * 0.0016)
        slope_x = (ground_height(x + reach, z, finest) - height) / reach
        slope_z = (ground_height(x, z + reach, finest) - height) / reach
        slope = numpy.hypot(slope_x, slope_z)
        up = 1.0 / numpy.sqrt(1 + slope * slope)
        normal_x, normal_z = -slope_x * up, -slope_z * up

        fine = noise.fractal(x, z, 4, finest=finest, size=14.0)
        patch = noise.fractal(x + 900, z, 4, finest=finest, size=170.0)
        wooded = forest_density(x, z, height, slope)

        # Ground: shingle at the water, meadow, scree and rock with height and slope, snow on top.
        albedo = mix((0.047, 0.072, 0.022), (0.105, 0.104, 0.042), 0.5 + 0.45 * patch + 0.30 * fine)
        alpine = smooth(480, 900, height + 120 * patch)
        albedo = mix(albedo, (0.105, 0.095, 0.058), 0.7 * alpine)
        shingle = 1 - smooth(0.35, 1.1, height + 0.35 * fine)
        stones = noise.fractal(x, z, 4, gain=0.7, finest=finest, size=0.9)
        albedo = mix(albedo, mix((0.10, 0.095, 0.085), (0.23, 0.215, 0.19), 0.55 + 0.8 * stones), shingle)
        layers = noise.plane(height * 0.021 + 0.6 * patch, height * 0.004 + x * 0.0006)
        rock = mix((0.085, 0.080, 0.078), (0.19, 0.172, 0.15), 0.5 + 0.7 * layers + 0.5 * fine)
        albedo = mix(albedo, rock, smooth(0.62, 0.98, slope + 0.16 * fine + 0.25 * alpine))
        snow = smooth(1150, 1560, height + 190 * patch + 60 * fine) * (1 - smooth(0.85, 1.30, slope + 0.1 * fine))
        albedo = mix(albedo, (0.88, 0.90, 0.93), snow)
        # Woods too far away for single trees: a dark, mottled carpet.
        carpet = mix((0.022, 0.043, 0.016), (0.042, 0.070, 0.022), 0.5 + 0.9 * fine)
        far_woods = wooded * smooth(TREE_RANGE * 0.7, TREE_RANGE, distance)
        under = wooded * (1 - smooth(TREE_RANGE * 0.7, TREE_RANGE, distance))
        albedo = mix(albedo, carpet, numpy.clip(far_woods + 0.75 * under, 0, 1))

        sunlit = self._shadows(x, z, tree_height)
        direct = numpy.maximum(normal_x * SUN[0] + up * SUN[1] + normal_z * SUN[2], 0) * sunlit
        direct = direct * (1 - 0.6 * under)
        ambient = (0.45 + 0.55 * up) * (1 - 0.45 * under)
        bounce = 0.10 * numpy.maximum(1 - up, 0)
        light = (direct[:, None] * SUN_LIGHT + ambient[:, None] * SKY_LIGHT
                 + bounce[:, None] * numpy.array([0.8, 0.7, 0.5], dtype=numpy.float32))
        colour = albedo * light

        on_tree = numpy.flatnonzero(tree_height > 0.3)
        if on_tree.size:
            tree = Tree(x[on_tree], z[on_tree], numpy.maximum(wooded[on_tree], 0.5))
            share = numpy.clip(tree_height[on_tree] / tree.total, 0, 1)
            facing = tree.side_x * SUN[0] * 0.9 + tree.side_z * SUN[2] * 0.9 + 0.42 * SUN[1]
            facing = numpy.clip(facing * 0.9 + 0.25, 0, 1)
            tips = noise.plane(x[on_tree] * 2.3, (tree_height[on_tree] + z[on_tree]) * 2.9)
            green = mix((0.020, 0.044, 0.017), (0.047, 0.076, 0.024), tree.tone * 0.8 + 0.25 * tips)
            lit = facing * sunlit[on_tree] * (0.20 + 0.80 * share) * (0.9 + 0.8 * tips)
            open_sky = 0.16 + 0.84 * share ** 1.2
            colour[on_tree] = green * (lit[:, None] * SUN_LIGHT * 1.05
                                       + open_sky[:, None] * SKY_LIGHT * 0.8).clip(0)

        # Air: light is lost on the way and the sky's own is added, blue first, more in the low mist.
        sky = clear_sky(sine * 0.9992, numpy.full_like(sine, 0.035), cosine * 0.9992).clip(0, 1.1)
        low = 1.0 + 1.3 * numpy.exp(-height / 260.0)
        depth = (distance * low)[:, None] / numpy.array([46000.0, 37000.0, 28000.0], dtype=numpy.float32)
        passed = numpy.exp(-depth)
        return colour * passed + sky * (1 - passed) * numpy.array([0.90, 0.96, 1.0], dtype=numpy.float32)
