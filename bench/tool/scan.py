"""Writes the CT head of invesalius-examples as NIfTI. Usage: scan.py MATRIX.DAT OUTPUT.nii"""
import sys

import nibabel
import numpy

SHAPE = (108, 256, 256)  # z, y, x
PLACE = numpy.diag([-0.9570312, 0.9570312, 1.5, 1.0])  # RAS, mm


def main(matrix, output):
    voxels = numpy.fromfile(matrix, "<i2").reshape(SHAPE)
    nibabel.save(nibabel.Nifti1Image(voxels.T, PLACE), output)


if __name__ == "__main__":
    main(*sys.argv[1:])
