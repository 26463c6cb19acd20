#!/usr/bin/python3
"""What scipy.ndimage keeps of the zone plate of reducing.svg, made smaller by a factor of 4: of
what the result cannot hold, which is aliased, and of what it can. Prints a row for each way."""
import numpy
from scipy import ndimage

FACTOR, SMALL = 4, 48
LARGE = FACTOR * SMALL


def squares(extent):
    distance = numpy.arange(extent) - (extent - 1) / 2
    return distance[:, None] ** 2 + distance**2


def kept(result):
    distance = abs(numpy.arange(SMALL) - (SMALL - 1) / 2) * FACTOR / LARGE
    fine = numpy.maximum(distance[:, None], distance) > 0.5 / FACTOR
    plate = numpy.cos(numpy.pi * squares(SMALL) * FACTOR**2 / LARGE)
    energy = result.astype(float) ** 2
    return energy[fine].mean() / 0.5, energy[~fine].sum() / (plate[~fine] ** 2).sum()


def main():
    plate = numpy.cos(numpy.pi * squares(LARGE) / LARGE).astype(numpy.float32)
    edges = {"grid_mode": True, "mode": "nearest"}
    blocks = plate.reshape(SMALL, FACTOR, SMALL, FACTOR).mean((1, 3))
    ways = {
        "zoom, order 1": ndimage.zoom(plate, 1 / FACTOR, order=1),
        "zoom, order 3": ndimage.zoom(plate, 1 / FACTOR, order=3),
        "zoom, order 1, grid_mode": ndimage.zoom(plate, 1 / FACTOR, order=1, **edges),
        "zoom, order 3, grid_mode": ndimage.zoom(plate, 1 / FACTOR, order=3, **edges),
        "block means by numpy": blocks,
    }
    for sigma in (1.5, 2.0):
        blurred = ndimage.gaussian_filter(plate, sigma)
        ways[f"gaussian_filter({sigma}), zoom, order 1"] = ndimage.zoom(
            blurred, 1 / FACTOR, order=1, **edges)
    for name, result in ways.items():
        aliased, wanted = kept(result)
        print(f"{name:40}aliased {aliased:7.2%}   wanted {wanted:7.2%}")


if __name__ == "__main__":
    main()
