"""What labels are called: the header, and tables beside a file."""

from pathlib import Path

import numpy as np
import pytest
from volux.tool._files import read
from volux.tool._names import names_of

from .runs import save, sitk


@pytest.fixture
def labels():
    return read(save("x_dseg.nii.gz", np.ones((2, 2, 2), np.uint8)))


def test_bids_has_a_table_of_index_and_name(labels):
    Path("x_dseg.tsv").write_text("name\tindex\tcolor\nLeft lung\t10\t#ff0000\nAorta\t2\t#00f\n")
    assert names_of(labels) == {10: "Left lung", 2: "Aorta"}


def test_a_text_beside_nifti_has_lines_of_number_and_name(labels):
    Path("x_dseg.nii.txt").write_text("1 Precentral_L 2001\n2\tPrecentral_R\n\n# nothing\n")
    assert names_of(labels) == {1: "Precentral_L", 2: "Precentral_R"}


@pytest.mark.parametrize("text", ["", "index\n1\n", "a\tb\n1\t2\n", "index\tname\nx\ty\n"])
def test_a_table_that_names_nothing_is_no_fault(labels, text):
    Path("x_dseg.tsv").write_text(text)
    assert names_of(labels) == {}


def test_without_a_table_no_label_has_a_name(labels):
    assert names_of(labels) == {}


def test_segments_of_nrrd_have_names_in_the_header():
    image = sitk.GetImageFromArray(np.ones((2, 2, 2), np.uint8))
    for key, value in {"Name": "Liver", "LabelValue": "5"}.items():
        image.SetMetaData(f"Segment0_{key}", value)
    sitk.WriteImage(image, "x.seg.nrrd")
    assert names_of(read("x.seg.nrrd")) == {5: "Liver"}


def test_segments_of_one_layer_have_their_own_names():
    image = sitk.GetImageFromArray(np.ones((2, 2, 2), np.uint8))
    for n, name in enumerate(("Liver", "Tumour")):
        for key, value in {"Name": name, "LabelValue": "1", "Layer": str(n)}.items():
            image.SetMetaData(f"Segment{n}_{key}", value)
    sitk.WriteImage(image, "x.seg.nrrd")
    labels = read("x.seg.nrrd")
    assert [names_of(labels, layer) for layer in (0, 1)] == [{1: "Liver"}, {1: "Tumour"}]


def test_a_table_beside_a_file_of_another_format_counts_too():
    sitk.WriteImage(sitk.GetImageFromArray(np.ones((2, 2, 2), np.uint8)), "x.mha")
    Path("x.tsv").write_text("index\tname\n1\tAorta\n")
    assert names_of(read("x.mha")) == {1: "Aorta"}


def test_a_quote_in_a_table_is_a_letter(labels):
    Path("x_dseg.tsv").write_text('index\tname\n1\t"heart\n2\tspine\n')
    assert names_of(labels) == {1: '"heart', 2: "spine"}
