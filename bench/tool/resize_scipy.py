"""Brings a volume to equal voxels by scipy and nibabel. Usage: resize_scipy.py INPUT OUTPUT SPACING
ORDER"""
import sys

import nibabel
import numpy
from scipy import ndimage


def main(source, target, spacing, order):
    image = nibabel.load(source)
    steps = numpy.divide(spacing, image.header.get_zooms())
    voxels = ndimage.zoom(numpy.asanyarray(image.dataobj), 1 / steps, order=order, mode="nearest",
                          grid_mode=True)
    place = image.affine @ numpy.diag([*steps, 1.0])
    place[:3, 3] += image.affine[:3, :3] @ ((steps - 1) / 2)  # as zoom puts the first voxel
    nibabel.save(nibabel.Nifti1Image(voxels, place), target)


if __name__ == "__main__":
    main(sys.argv[1], sys.argv[2], float(sys.argv[3]), int(sys.argv[4]))
