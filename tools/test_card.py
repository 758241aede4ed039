"""An equirectangular test card: six labelled cube faces, lines of heading and elevation, their degrees.

Every face is drawn as the square picture a viewer in the middle of the cube sees, and those are laid on the
sphere. So in a correct view every text is upright and unmirrored, and every straight edge is straight.
"""

import numpy
from PIL import Image, ImageDraw, ImageFont

FACE_SIZE = 2048
FONT_FOLDER = "/usr/share/fonts/truetype/liberation/"

# In storage order: name, colour, axis, heading of the middle, neighbours to the left, right, above, below.
FACES = [
    ("FRONT", (46, 108, 176), "+Z", "heading 0\N{DEGREE SIGN}", "LEFT", "RIGHT", "TOP", "BOTTOM"),
    ("RIGHT", (178, 62, 54), "+X", "heading 90\N{DEGREE SIGN}", "FRONT", "BACK", "TOP", "BOTTOM"),
    ("BACK", (206, 128, 30), "\N{MINUS SIGN}Z", "heading 180\N{DEGREE SIGN}", "RIGHT", "LEFT", "TOP", "BOTTOM"),
    ("LEFT", (58, 138, 74), "\N{MINUS SIGN}X", "heading \N{MINUS SIGN}90\N{DEGREE SIGN}", "BACK", "FRONT", "TOP",
     "BOTTOM"),
    ("TOP", (112, 164, 196), "+Y", "zenith", "LEFT", "RIGHT", "BACK", "FRONT"),
    ("BOTTOM", (112, 86, 140), "\N{MINUS SIGN}Y", "nadir", "LEFT", "RIGHT", "FRONT", "BACK"),
]
WHITE, DARK = (255, 255, 255), (24, 28, 34)


def _font(size, bold=True):
    return ImageFont.truetype(FONT_FOLDER + ("LiberationSans-Bold.ttf" if bold else "LiberationSans-Regular.ttf"),
                              size)


def _at(a, b):
    """Pixel of the point a (right), b (down), each -1..1."""
    return ((a + 1) * FACE_SIZE / 2, (b + 1) * FACE_SIZE / 2)


def _degrees(value):
    return ("\N{MINUS SIGN}" if value < 0 else "") + str(abs(value)) + "\N{DEGREE SIGN}"


def _arrow(draw, tip, tail, width, colour):
    (x1, y1), (x0, y0) = tip, tail
    length = numpy.hypot(x1 - x0, y1 - y0)
    ux, uy = (x1 - x0) / length, (y1 - y0) / length
    head = width * 2.6
    points = [(0, -width / 2), (length - head, -width / 2), (length - head, -width * 1.4), (length, 0),
              (length - head, width * 1.4), (length - head, width / 2), (0, width / 2)]
    draw.polygon([(x0 + ux * s - uy * t, y0 + uy * s + ux * t) for s, t in points], fill=colour)


def _labels(draw, face):
    """Degrees along the middle lines of the face."""
    small = _font(44)
    if face < 4:
        middle = (0, 90, 180, -90)[face]
        for step in range(-40, 50, 10):
            heading = (middle + step + 180) % 360 - 180
            x, y = _at(numpy.tan(numpy.radians(step)), 0)
            draw.text((x, y + 14), _degrees(180 if heading == -180 else heading), font=small, fill=WHITE, anchor="ma")
            # Elevations stand along the line 30 degrees to the right, clear of the large texts.
            a = numpy.tan(numpy.radians(30))
            b = -numpy.tan(numpy.radians(step)) * numpy.hypot(1, a)
            if step and abs(b) < 0.9:
                x, y = _at(a, b)
                draw.text((x + 14, y), _degrees(step), font=small, fill=WHITE, anchor="lm",
                          stroke_width=8, stroke_fill=FACES[face][1])
    else:
        up = face == 4
        for heading in range(-180, 180, 30):
            turn = numpy.radians(heading + 4)  # beside the line, not on it
            a, b = numpy.sin(turn) * 0.80, numpy.cos(turn) * 0.80 * (1 if up else -1)
            draw.text(_at(a, b), _degrees(180 if heading == -180 else heading), font=small, fill=WHITE, anchor="mm")


def draw_face(face):
    name, colour, axis, looks, left, right, above, below = FACES[face]
    picture = Image.new("RGB", (FACE_SIZE, FACE_SIZE), colour)
    draw = ImageDraw.Draw(picture)
    # Quarter squares of a darker tone tell the corners of the face from its middle.
    darker = tuple(int(c * 0.86) for c in colour)
    for a, b in ((-1, -1), (0.5, -1), (-1, 0.5), (0.5, 0.5)):
        draw.rectangle([_at(a, b), _at(a + 0.5, b + 0.5)], fill=darker)
    radius = FACE_SIZE / 2 * 0.96
    centre = FACE_SIZE / 2
    draw.ellipse([centre - radius, centre - radius, centre + radius, centre + radius],
                 outline=tuple(int(c + (255 - c) * 0.45) for c in colour), width=8)

    _arrow(draw, _at(0, -0.90), _at(0, -0.66), 62, WHITE)
    draw.text(_at(0, -0.36), name, font=_font(300 if len(name) < 6 else 270), fill=WHITE, anchor="mm")
    draw.text(_at(0, 0.30), looks, font=_font(150), fill=WHITE, anchor="mm")
    draw.text(_at(0, 0.55), axis, font=_font(170), fill=DARK, anchor="mm")
    edge = _font(70)
    for a, b, text, turn in ((-0.93, -0.16, left, 90), (0.93, -0.16, right, -90), (0.28, -0.94, above, 0),
                             (0, 0.94, below, 0)):
        label = Image.new("L", (600, 110), 0)
        ImageDraw.Draw(label).text((300, 55), text, font=edge, fill=255, anchor="mm")
        label = label.rotate(turn, expand=True)
        x, y = _at(a, b)
        picture.paste(Image.new("RGB", label.size, DARK), (int(x - label.width / 2), int(y - label.height / 2)), label)
    _labels(draw, face)
    return numpy.asarray(picture)


def _line(value, step, half_width):
    """Cover of lines at the multiples of step; all in degrees."""
    distance = numpy.abs(value - numpy.round(value / step) * step)
    return (distance < half_width).astype(numpy.float32)


def _colours(faces, heading, elevation):
    x = numpy.sin(heading) * numpy.cos(elevation)
    y = numpy.sin(elevation)
    z = numpy.cos(heading) * numpy.cos(elevation)
    ax, ay, az = numpy.abs(x), numpy.abs(y), numpy.abs(z)
    front_back = (az >= ax) & (az >= ay)
    right_left = ~front_back & (ax >= ay)
    face = numpy.where(front_back, numpy.where(z > 0, 0, 2),
                       numpy.where(right_left, numpy.where(x > 0, 1, 3), numpy.where(y > 0, 4, 5)))
    ax, ay, az = (numpy.maximum(value, 1e-9) for value in (ax, ay, az))
    a = numpy.choose(face, [x / az, -z / ax, -x / az, z / ax, x / ay, x / ay])
    b = numpy.choose(face, [-y / az, -y / ax, -y / az, -y / ax, z / ay, -z / ay])
    column = numpy.clip(((a + 1) * FACE_SIZE / 2).astype(int), 0, FACE_SIZE - 1)
    row = numpy.clip(((b + 1) * FACE_SIZE / 2).astype(int), 0, FACE_SIZE - 1)
    colour = faces[face, row, column].astype(numpy.float32)

    turn, tilt = numpy.degrees(heading), numpy.degrees(elevation)
    shrink = numpy.maximum(numpy.cos(elevation), 0.05)
    lines = 0.30 * numpy.maximum(_line(turn, 10, 0.07 / shrink) * (numpy.abs(tilt) < 80.1), _line(tilt, 10, 0.07))
    lines = numpy.maximum(lines, 0.65 * numpy.maximum(_line(turn, 30, 0.09 / shrink), _line(tilt, 30, 0.09)))
    lines = numpy.maximum(lines, numpy.maximum(numpy.abs(tilt) < 0.16, _line(turn, 90, 0.12 / shrink)))
    colour = colour + (255 - colour) * lines[..., None]
    border = numpy.maximum(numpy.abs(a), numpy.abs(b)) > 0.988
    return numpy.where(border[..., None], numpy.float32(24), colour)


def test_card(width):
    """The card as a width x width/2 equirectangular picture; 3 x 3 samples per pixel."""
    faces = numpy.stack([draw_face(face) for face in range(6)])
    height = width // 2
    columns = (numpy.arange(width * 3) / 3 - 1 / 3) / width
    bands = []
    for first in range(0, height, 32):
        sub = (numpy.arange(first * 3, min(first + 32, height) * 3) / 3 - 1 / 3) / height
        heading, elevation = numpy.meshgrid((columns * 2 - 1) * numpy.pi, (0.5 - sub) * numpy.pi)
        # A sample above the zenith lies beyond it.
        over = elevation > numpy.pi / 2
        heading = numpy.where(over, heading + numpy.pi, heading)
        heading = (heading + numpy.pi) % (2 * numpy.pi) - numpy.pi
        colours = _colours(faces, heading, numpy.where(over, numpy.pi - elevation, elevation))
        bands.append(colours.reshape(colours.shape[0] // 3, 3, width, 3, 3).mean(axis=(1, 3)))
    return Image.fromarray(numpy.round(numpy.concatenate(bands)).astype(numpy.uint8), "RGB")
