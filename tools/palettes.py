"""Palette pictures for the generators: colours along the diagonal, from the top left to the bottom right.

Generators that take colours at random pixels find the same colours everywhere: a pixel's colour depends only on
how far along the diagonal it is.
"""

import numpy
from PIL import Image

SIZE = 512

# Stops: place along the diagonal 0..1, colour. Two stops at (almost) one place are a border between two colours.
PLANET = [  # by height; the coast is in the middle
    (0.00, (4, 10, 44)), (0.22, (8, 32, 92)), (0.40, (16, 84, 152)), (0.470, (44, 148, 190)),
    (0.4999, (122, 206, 210)), (0.5, (236, 220, 168)), (0.515, (214, 196, 132)), (0.53, (128, 160, 72)),
    (0.60, (62, 124, 50)), (0.70, (40, 88, 40)), (0.77, (92, 88, 56)), (0.83, (124, 104, 84)),
    (0.90, (148, 138, 130)), (0.93, (226, 230, 236)), (1.00, (255, 255, 255)),
]
SUNSET = [
    (0.00, (16, 14, 48)), (0.20, (58, 28, 92)), (0.36, (134, 40, 110)), (0.50, (214, 70, 88)),
    (0.63, (246, 122, 62)), (0.78, (255, 182, 74)), (0.90, (255, 224, 140)), (1.00, (255, 246, 214)),
]
NEON = [
    (0.00, (6, 4, 26)), (0.14, (40, 6, 96)), (0.28, (196, 12, 190)), (0.42, (255, 40, 120)),
    (0.56, (60, 20, 140)), (0.70, (0, 140, 255)), (0.84, (0, 246, 214)), (0.93, (190, 255, 60)),
    (1.00, (255, 255, 220)),
]


def palette(stops):
    """SIZE x SIZE pixels; straight lines between the stops."""
    x, y = numpy.meshgrid(numpy.arange(SIZE), numpy.arange(SIZE))
    along = (x + y) / (2 * (SIZE - 1))
    places = [place for place, _ in stops]
    channels = [numpy.interp(along, places, [colour[c] for _, colour in stops]) for c in range(3)]
    return Image.fromarray(numpy.round(numpy.stack(channels, axis=-1)).astype(numpy.uint8), "RGB")
