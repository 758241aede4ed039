"""The program's mark: a blue sphere with a horizon and a small star.

draw_mark(size) returns it as a square RGBA picture with transparent corners, for the icon, the logo and
the about picture. It is drawn by formula at any size: every pixel averages a grid of samples, so that
small icons stay smooth. Coordinates in here run from -1 to 1 over the sphere, x to the right, y up.
"""

import numpy
from PIL import Image

# Colours as red, green, blue from 0 to 1, in linear light where they are blended.
SKY_TOP = (0.012, 0.055, 0.24)
SKY_MIDDLE = (0.035, 0.22, 0.66)
SKY_HORIZON = (0.55, 0.80, 0.98)
GROUND_HORIZON = (0.025, 0.16, 0.34)
GROUND_BOTTOM = (0.004, 0.018, 0.075)
STAR = (1.0, 0.97, 0.86)

HORIZON_Y = -0.16      # where the horizon meets the middle of the sphere
HORIZON_BULGE = 0.10   # how far its ends lie higher: a circle round the sphere, seen from a little above
STAR_CENTRE = (0.30, 0.38)
STAR_RADIUS = 0.30


def _mix(a, b, t):
    """Blend of two colours, t an array from 0 to 1."""
    t = numpy.clip(t, 0.0, 1.0)[..., None]
    return numpy.asarray(a) * (1.0 - t) + numpy.asarray(b) * t


def _smooth(edge0, edge1, x):
    t = numpy.clip((x - edge0) / (edge1 - edge0), 0.0, 1.0)
    return t * t * (3.0 - 2.0 * t)


def _samples(x, y, rim):
    """Linear colour and coverage of points; rim: sphere's radius in this coordinate frame."""
    radius = numpy.hypot(x, y) / rim
    inside = radius <= 1.0
    height = y - HORIZON_Y - HORIZON_BULGE * x * x

    sky = _mix(SKY_HORIZON, SKY_MIDDLE, (numpy.maximum(height, 0.0) / 0.55) ** 0.6)
    sky = _mix(sky, SKY_TOP, _smooth(0.35, 1.25, height))
    ground = _mix(GROUND_HORIZON, GROUND_BOTTOM, _smooth(0.0, 0.75, -height))
    colour = numpy.where((height >= 0)[..., None], sky, ground)

    # The thin light of the horizon itself, brightest in the middle.
    glow = numpy.exp(-((height / 0.028) ** 2)) * (0.95 - 0.35 * numpy.abs(x))
    colour = colour + glow[..., None] * numpy.asarray((0.75, 0.85, 0.95))

    # A star with four points and a soft halo.
    sx = numpy.abs(x - STAR_CENTRE[0]) / STAR_RADIUS
    sy = numpy.abs(y - STAR_CENTRE[1]) / STAR_RADIUS
    star = (numpy.sqrt(sx) + numpy.sqrt(sy)) <= 1.0
    halo = 0.55 * numpy.exp(-((sx * sx + sy * sy) / 0.16))
    colour = _mix(colour, STAR, halo)
    colour = numpy.where(star[..., None], numpy.asarray(STAR), colour)

    # Shading of a ball: darker towards the rim, a faint light from the upper left.
    depth = numpy.sqrt(numpy.clip(1.0 - radius * radius, 0.0, 1.0))
    colour = colour * (0.55 + 0.45 * numpy.sqrt(depth))[..., None]
    rim_light = _smooth(0.90, 1.0, radius) * numpy.clip(0.5 + 0.6 * (y - x), 0.0, 1.0)
    colour = _mix(colour, (0.45, 0.70, 1.0), 0.55 * rim_light)
    return numpy.clip(colour, 0.0, 1.0), inside


def _to_srgb(linear):
    return numpy.where(linear <= 0.0031308, linear * 12.92, 1.055 * numpy.power(linear, 1 / 2.4) - 0.055)


def draw_mark(size, rim=0.985):
    """The mark as a size x size RGBA picture. rim: the sphere's radius in half widths."""
    grid = max(3, min(16, 512 // size))
    steps = (numpy.arange(size * grid) + 0.5) / (size * grid) * 2.0 - 1.0
    x, y = numpy.meshgrid(steps, -steps)
    colour, inside = _samples(x, y, rim)
    weight = inside.astype(float)
    shape = (size, grid, size, grid)
    alpha = weight.reshape(shape).mean(axis=(1, 3))
    summed = (colour * weight[..., None]).reshape(shape + (3,)).mean(axis=(1, 3))
    # Transparent pixels keep the mark's own blue, so that scaling never darkens the edge.
    visible = alpha[..., None] > 0
    mean = numpy.where(visible, summed / numpy.maximum(alpha, 1e-9)[..., None], numpy.asarray(SKY_MIDDLE))
    pixels = numpy.dstack([_to_srgb(mean), alpha])
    return Image.fromarray(numpy.round(pixels * 255).astype(numpy.uint8), "RGBA")


if __name__ == "__main__":
    import sys
    draw_mark(int(sys.argv[2]) if len(sys.argv) > 2 else 512).save(sys.argv[1])
