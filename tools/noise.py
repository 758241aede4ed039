"""Smooth random fields for the pictures made by make_media.py: the same numbers on every run.

All fields are functions of a position in space, never of a pixel, so a panorama made of them has no seam.
"""

import numpy

_generator = numpy.random.Generator(numpy.random.PCG64(20240611))

_SIDE = 1024  # cells before the plane's pattern repeats
_angles = _generator.random(_SIDE * _SIDE, dtype=numpy.float32) * numpy.float32(2 * numpy.pi)
_GRADIENT_X = numpy.cos(_angles)
_GRADIENT_Z = numpy.sin(_angles)
_VALUES = _generator.random(_SIDE * _SIDE, dtype=numpy.float32)


def _fade(t):
    return t * t * t * (t * (t * 6 - 15) + 10)


def _cell(ix, iz):
    return (iz & (_SIDE - 1)) * _SIDE + (ix & (_SIDE - 1))


def random_of_cell(ix, iz, which=0):
    """A number 0..1 for an integer cell; `which` picks independent ones."""
    return _VALUES[_cell(ix + 131 * which, iz + 57 * which + 13 * which * which)]


def plane(x, z):
    """Gradient noise of the plane, about -0.7..0.7, features of size 1."""
    fx, fz = numpy.floor(x), numpy.floor(z)
    ix, iz = fx.astype(numpy.int32), fz.astype(numpy.int32)
    dx, dz = (x - fx).astype(numpy.float32), (z - fz).astype(numpy.float32)

    def corner(ox, oz):
        cell = _cell(ix + ox, iz + oz)
        return _GRADIENT_X[cell] * (dx - ox) + _GRADIENT_Z[cell] * (dz - oz)

    u, v = _fade(dx), _fade(dz)
    near = corner(0, 0)
    near = near + u * (corner(1, 0) - near)
    far = corner(0, 1)
    far = far + u * (corner(1, 1) - far)
    return near + v * (far - near)


def fractal(x, z, octaves, gain=0.5, finest=None, size=1.0, ridged=False):
    """Octaves of plane noise, each turned, half the size and `gain` as strong as the one before.

    finest: smallest feature worth drawing at each point (array), in the units of size; finer octaves fade
    out instead of flickering. ridged: sharp crests (0..1) instead of rolling hills (-1..1).
    """
    total = numpy.zeros_like(x, dtype=numpy.float32)
    weight = numpy.ones_like(total)
    strength = 1.0
    wavelength = size
    px, pz = x / size, z / size
    for octave in range(octaves):
        visible = None
        if finest is not None:
            visible = numpy.clip(wavelength / finest - 1.0, 0.0, 1.0).astype(numpy.float32)
            if not visible.any():
                break
        value = plane(px + 17.3 * octave, pz - 9.1 * octave)
        if ridged:
            value = 1.0 - (numpy.sqrt(value * value + (0.004 if octave < 3 else 0.0)) - 0.03) * 1.8
            value = value * value
            contribution = (value if octave == 0 else value - 0.35) * weight
            weight = numpy.clip(value * weight * 1.6, 0.0, 1.0)
        else:
            contribution = value * 1.5
        total += (contribution if visible is None else contribution * visible) * numpy.float32(strength)
        strength *= gain
        wavelength *= 0.5
        px, pz = 1.6 * px + 1.2 * pz, 1.6 * pz - 1.2 * px
    return total


def _periodic_volume(side, cells):
    """Value noise on a periodic cube of side^3 samples and cells^3 random values."""
    lattice = _generator.random((cells,) * 3, dtype=numpy.float32)
    position = numpy.arange(side) * (cells / side)
    low = position.astype(int)
    t = _fade(position - low).astype(numpy.float32)
    for axis in range(3):
        shape = [1, 1, 1]
        shape[axis] = side
        first = numpy.take(lattice, low % cells, axis=axis)
        second = numpy.take(lattice, (low + 1) % cells, axis=axis)
        lattice = first + (second - first) * t.reshape(shape)
    return lattice


class Volume:
    """Fractal noise in space, 0..1 with mean 0.5, periodic with period 1; sampled with interpolation."""

    def __init__(self, side=128, first_cells=4, octaves=5):
        total = numpy.zeros((side,) * 3, dtype=numpy.float32)
        strength, sum_of_strengths = 1.0, 0.0
        for octave in range(octaves):
            cells = first_cells << octave
            total += strength * _periodic_volume(side, min(cells, side))
            sum_of_strengths += strength
            strength *= 0.5
        self._side = side
        self._values = (total / sum_of_strengths).ravel()

    def __call__(self, x, y, z):
        n = self._side
        corners, parts = [], []
        for coordinate in (x, y, z):
            scaled = coordinate * numpy.float32(n)
            low = numpy.floor(scaled)
            parts.append((scaled - low).astype(numpy.float32))
            index = low.astype(numpy.int32) & (n - 1)
            corners.append((index, (index + 1) & (n - 1)))
        tx, ty, tz = parts
        result = None
        for i, wx in ((0, 1 - tx), (1, tx)):
            for j, wy in ((0, 1 - ty), (1, ty)):
                row = (corners[0][i] * n + corners[1][j]) * n
                near, far = self._values[row + corners[2][0]], self._values[row + corners[2][1]]
                term = (near + (far - near) * tz) * (wx * wy)
                result = term if result is None else result + term
        return result
