"""Brings a volume to equal voxels by SimpleITK. Usage: resize_simpleitk.py INPUT OUTPUT SPACING"""
import sys

import SimpleITK


def main(source, target, spacing):
    image = SimpleITK.ReadImage(source)
    steps = [spacing / length for length in image.GetSpacing()]
    shape = [round(extent / step) for extent, step in zip(image.GetSize(), steps)]
    first = [(extent - 1 - step * (length - 1)) / 2
             for extent, step, length in zip(image.GetSize(), steps, shape)]
    SimpleITK.WriteImage(
        SimpleITK.Resample(image, shape, SimpleITK.Transform(), SimpleITK.sitkLinear,
                           image.TransformContinuousIndexToPhysicalPoint(first), [spacing] * 3,
                           image.GetDirection()), target)


if __name__ == "__main__":
    main(sys.argv[1], sys.argv[2], float(sys.argv[3]))
