#!/usr/bin/env python3
"""Makes the pictures under Media/: the examples, the logo and the about picture.

    /usr/bin/python3 tools/make_media.py [lake] [card] [palettes] [textures] [logo] [about]

Without arguments all of them. Needs python3-numpy, python3-pil and fonts-liberation. Everything is drawn
by formula from fixed random numbers, so every run makes the same pictures.
"""

import pathlib
import sys

import numpy
from PIL import Image, ImageDraw, ImageFont

MEDIA = pathlib.Path(__file__).resolve().parent.parent / "Media"


def make_lake():
    import lake
    lake.panorama(4096).save(MEDIA / "Examples" / "Mountain lake.jpg", quality=92, optimize=True)


def make_card():
    import test_card
    test_card.test_card(4096).save(MEDIA / "Examples" / "Test card.png", optimize=True)


def make_palettes():
    from palettes import NEON, PLANET, SUNSET, palette
    for name, stops in (("planet", PLANET), ("sunset", SUNSET), ("neon", NEON)):
        palette(stops).save(MEDIA / "Examples" / f"Palette {name}.png", optimize=True)


def make_textures():
    # Filmstrips have their number of frames in the name: it has to be set for them.
    from textures import dice, football, tiles
    for name, picture in (("tiles", tiles()), ("dice, 6 frames", dice()), ("football, 2 frames", football())):
        # 64 colours are all there are, or so close to all that it does not show.
        few = picture.quantize(64, Image.Quantize.MEDIANCUT, dither=Image.Dither.NONE)
        few.save(MEDIA / "Examples" / f"Texture {name}.png", optimize=True)


def make_logo():
    from mark import draw_mark
    draw_mark(512).save(MEDIA / "Skins" / "Logo.png", optimize=True)


def make_about():
    """960 x 480: the mark before an evening sky over ridges, and the program's name.

    Laid out on 480 x 240 points, which is what it is shown at where nothing is enlarged."""
    from mark import draw_mark
    from noise import fractal
    width, height, dense, samples = 480, 240, 2, 2  # pixels a point, samples a pixel
    scale = dense * samples
    x, y = numpy.meshgrid(numpy.arange(width * scale) / scale, numpy.arange(height * scale) / scale)
    t = (y / height)[..., None]
    colour = numpy.array([14, 34, 82]) * (1 - t) ** 1.4 + numpy.array([150, 190, 226]) * (1 - (1 - t) ** 1.4)
    stars = numpy.random.Generator(numpy.random.PCG64(7))
    for _ in range(90):
        sx, sy, bright = stars.random() * width, stars.random() ** 2 * 120, stars.random()
        near = numpy.hypot(x - sx, y - sy) < 0.35 + 0.5 * bright ** 3
        colour[near] = colour[near] + (255 - colour[near]) * (0.25 + 0.7 * bright) * max(0, 1 - sy / 130)
    ridge_x = numpy.arange(width * scale, dtype=numpy.float32) / scale
    ridges = [(168, 26, 90, (112, 152, 196)), (186, 24, 70, (70, 110, 160)), (204, 22, 50, (36, 70, 116)),
              (222, 16, 34, (14, 34, 66))]
    for which, (level, size, wavelength, shade) in enumerate(ridges):
        crest = level - size * fractal(ridge_x + 500, numpy.full_like(ridge_x, 40.0 * which), 6, size=wavelength)
        colour[y > crest[None, :]] = shade
    pixels = colour.reshape(height * dense, samples, width * dense, samples, 3).mean(axis=(1, 3))
    picture = Image.fromarray(numpy.clip(numpy.round(pixels), 0, 255).astype(numpy.uint8), "RGB").convert("RGBA")
    picture.alpha_composite(draw_mark(168 * dense), (28 * dense, 36 * dense))
    draw = ImageDraw.Draw(picture)
    font = ImageFont.truetype("/usr/share/fonts/truetype/liberation/LiberationSans-Regular.ttf", 56 * dense)
    draw.text((219 * dense, 121 * dense), "Skyvault", font=font, fill=(8, 20, 48, 255), anchor="lm")
    draw.text((218 * dense, 119 * dense), "Skyvault", font=font, fill=(255, 255, 255, 255), anchor="lm")
    picture.convert("RGB").save(MEDIA / "Skins" / "About.png", optimize=True)


def main():
    makers = {"lake": make_lake, "card": make_card, "palettes": make_palettes, "textures": make_textures,
              "logo": make_logo, "about": make_about}
    wanted = sys.argv[1:] or list(makers)
    unknown = [name for name in wanted if name not in makers]
    if unknown:
        sys.exit(f"make_media.py: no picture is called {', '.join(unknown)}; there are {', '.join(makers)}")
    for folder in ("Examples", "Skins"):
        (MEDIA / folder).mkdir(parents=True, exist_ok=True)
    for name in wanted:
        makers[name]()


if __name__ == "__main__":
    main()
