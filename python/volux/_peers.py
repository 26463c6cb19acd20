"""The words of other libraries, and what they are called here."""

from __future__ import annotations

# A keyword of another library's: whose it is, and what to write instead.
KEYWORDS = {
    "order": "scipy's word; here it is interpolation='nearest', 'linear', 'cubic' or 'label'",
    "mode": "scipy's word for border='edge' or 'constant', and torch's for interpolation=",
    "cval": "scipy's word; here it is fill=",
    "zoom": "scipy's word; here it is scale= of resize()",
    "align_corners": "torch's word; for resize() it is align='edges' (False) or 'centres' (True)",
    "output_shape": "scipy's word; here it is shape= of resize(), or grid=Grid(shape, affine)",
    "fill_value": "a word of scipy and nilearn; here it is fill=",
    "target_affine": "nilearn's word; here it is grid=Grid(shape, affine)",
    "target_shape": "nilearn's word; here it is grid=Grid(shape, affine)",
    "reference": "SimpleITK's word; here it is like=",
    "referenceImage": "SimpleITK's word; here it is like=",
    "interpolator": "SimpleITK's word; here it is interpolation=",
    "defaultPixelValue": "SimpleITK's word; here it is fill=",
    "padding_mode": "torch's word; here it is border='edge' or 'constant'",
    "prefilter": "scipy's word; no kernel here needs one",
}

# A keyword that another function of this package takes.
ELSEWHERE = {
    "shape": "resize() takes it; here it is grid=Grid(shape, affine)",
    "spacing": "resize() takes it; here it is grid=Grid.of_spacing(image, spacing)",
    "scale": "resize() takes it",
    "align": "resize() takes it",
    "like": "resample() takes it",
    "grid": "resample() takes it",
    "transform": "resample() takes it",
    "slab": "reslice() takes it",
    "projection": "reslice() takes it",
    "space": "sample() takes it",
    "channel": "sample() takes it; image[..., channel] is one channel of an array",
}

# A value of another library's, by the keyword here: whose it is, and what to write instead.
VALUES = {
    ("interpolation", "bilinear"): ("torch", "linear"),
    ("interpolation", "trilinear"): ("torch", "linear"),
    ("interpolation", "continuous"): ("nilearn", "linear"),
    ("interpolation", "bspline"): ("SimpleITK", "cubic"),
    ("interpolation", "genericLabel"): ("ANTs", "label"),
    ("interpolation", "multiLabel"): ("ANTs", "label"),
    ("interpolation", 0): ("scipy", "nearest"),
    ("interpolation", 1): ("scipy", "linear"),
    ("border", "nearest"): ("scipy", "edge"),
    ("border", "border"): ("torch", "edge"),
    ("border", "replicate"): ("torch", "edge"),
    ("border", "grid-constant"): ("scipy", "constant"),
    ("border", "zeros"): ("torch", "constant"),
    ("align", "corners"): ("torch", "centres"),
    ("align", "centers"): ("American English", "centres"),
    ("align", True): ("torch", "centres"),
    ("align", False): ("torch", "edges"),
    ("antialias", True): ("torch", "auto"),
    ("antialias", False): ("torch", None),
    ("projection", "max"): ("numpy", "maximum"),
    ("projection", "min"): ("numpy", "minimum"),
}
