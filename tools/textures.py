"""Texture pictures for the polyhedra: every picture (every frame of a filmstrip) repeats without a seam."""

import numpy
from PIL import Image, ImageDraw

SCALE = 4  # drawn this much larger, for smooth edges


def _small(picture):
    return picture.resize((picture.width // SCALE, picture.height // SCALE), Image.Resampling.BOX)


def _grid(size):
    """Places in a picture, -1..1, of pixel middles."""
    at = (numpy.arange(size) + 0.5) / size * 2 - 1
    return numpy.meshgrid(at, at)


def _leather(size, dark, light):
    """Dimples in rows, and a panel that bulges: light in the middle, the same on opposite edges."""
    x, y = _grid(size)
    rows = 24
    row = numpy.floor((y + 1) / 2 * rows)
    across = ((x + 1) / 2 * rows + 0.5 * (row % 2)) % 1 - 0.5
    down = ((y + 1) / 2 * rows) % 1 - 0.5
    dimple = numpy.clip(1 - (across ** 2 + down ** 2) * 9, 0, 1) ** 1.5
    bulge = (0.5 + 0.5 * numpy.cos(numpy.pi * x)) * (0.5 + 0.5 * numpy.cos(numpy.pi * y))
    # A light from above shows on a dimple's lower rim.
    shade = 0.35 + 0.65 * bulge ** 0.5 - 0.30 * dimple + 0.5 * dimple * down
    shade = numpy.clip(shade, 0, 1)[..., None]
    colour = numpy.array(dark) * (1 - shade) + numpy.array(light) * shade
    return Image.fromarray(numpy.round(colour).astype(numpy.uint8), "RGB")


def football(size=512):
    """Two frames: black leather for the pentagons, white for the hexagons."""
    strip = Image.new("RGB", (2 * size, size))
    strip.paste(_leather(size, (6, 7, 10), (52, 54, 62)), (0, 0))
    strip.paste(_leather(size, (196, 194, 186), (255, 254, 248)), (size, 0))
    return strip


def dice(size=512):
    """Six frames, ivory with the pips of a die."""
    corner, ivory, pip = 0.52, (242, 234, 214), (34, 30, 40)
    places = {
        1: [(0, 0)], 2: [(-1, -1), (1, 1)], 3: [(-1, -1), (0, 0), (1, 1)],
        4: [(-1, -1), (1, -1), (-1, 1), (1, 1)], 5: [(-1, -1), (1, -1), (0, 0), (-1, 1), (1, 1)],
        6: [(-1, -1), (-1, 0), (-1, 1), (1, -1), (1, 0), (1, 1)],
    }
    big = size * SCALE
    # Opposite faces of a die add up to seven; frames go front, right, back, left, top, bottom.
    strip = Image.new("RGB", (6 * size, size), ivory)
    for frame, number in enumerate((1, 2, 6, 5, 3, 4)):
        face = Image.new("RGB", (big, big), ivory)
        draw = ImageDraw.Draw(face)
        for across, down in places[number]:
            x, y = (1 + across * corner) * big / 2, (1 + down * corner) * big / 2
            for radius, colour in ((0.082, (206, 194, 168)), (0.075, pip)):
                r = radius * big
                draw.ellipse((x - r, y - r, x + r, y + r), fill=colour if (number != 1 or colour != pip) else
                             (176, 34, 40))
        strip.paste(_small(face), (frame * size, 0))
    return strip


def tiles(size=768):
    """Glazed tiles: an eight-pointed star in a cross, four quarters of another in the corners."""
    big = size * SCALE
    white, blue, deep, ochre, green = (240, 236, 222), (38, 92, 158), (18, 44, 92), (222, 158, 52), (52, 128, 112)
    picture = Image.new("RGB", (big, big), blue)
    draw = ImageDraw.Draw(picture)

    def star(x, y, radius, points, inner, turn=0.0):
        corners = []
        for i in range(2 * points):
            angle = numpy.pi * (i / points + turn)
            r = radius * (1 if i % 2 == 0 else inner)
            corners.append(((x + r * numpy.sin(angle)) * big, (y - r * numpy.cos(angle)) * big))
        return corners

    def rosette(x, y, first, second):
        draw.polygon(star(x, y, 0.36, 8, 0.7654), fill=white)
        draw.polygon(star(x, y, 0.335, 8, 0.7654), fill=first)
        draw.polygon(star(x, y, 0.25, 8, 0.7654), fill=white)
        draw.polygon(star(x, y, 0.23, 8, 0.7654), fill=second)
        draw.polygon(star(x, y, 0.165, 8, 0.42, 1 / 8), fill=white)
        draw.polygon(star(x, y, 0.075, 8, 0.7654), fill=ochre)

    for x, y in ((0, 0.5), (1, 0.5), (0.5, 0), (0.5, 1)):
        draw.polygon(star(x, y, 0.115, 4, 0.7071, 0.25), fill=white)
        draw.polygon(star(x, y, 0.095, 4, 0.7071, 0.25), fill=ochre)
    rosette(0.5, 0.5, deep, green)
    for x in (0, 1):
        for y in (0, 1):
            rosette(x, y, green, deep)
    return _small(picture)
