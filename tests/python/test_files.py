"""Files: the voxels and the places that they say, in the patient's frame."""

import sys

import numpy as np
import pytest

from zox_volume import Volume

STORED = np.random.default_rng(2).integers(0, 4000, (5, 6, 7), np.int16)  # slice, row, column


def place(volume, voxel):
    """The millimetres of a voxel, by the corners."""
    corners = volume.corners
    size = np.array(volume.shape[::-1]) - 1
    axes = [(corners[1 << axis] - corners[0]) / size[axis] for axis in range(3)]
    return corners[0] + sum(axis * count for axis, count in zip(axes, voxel))


@pytest.mark.parametrize("name", ["volume.nii", "volume.nii.gz", "volume.mgz"])
def test_nibabel(tmp_path, name):
    nibabel = pytest.importorskip("nibabel")
    affine = np.array([[0, -0.5, 0.2, 10], [0.8, 0, 0, -20], [0, 0.1, 2, 30], [0, 0, 0, 1]])
    kind = nibabel.MGHImage if name.endswith("mgz") else nibabel.Nifti1Image
    nibabel.save(kind(STORED.transpose(2, 1, 0), affine), tmp_path / name)
    volume = Volume.from_file(tmp_path / name)
    assert volume.shape == STORED.shape
    assert volume.value_at(6, 2, 3) == STORED[3, 2, 6]
    right, front, head, _ = affine @ (6, 2, 3, 1)
    assert np.allclose(place(volume, (6, 2, 3)), (-right, -front, head), atol=1e-4)


def test_nifti_scaling_and_units(tmp_path):
    nibabel = pytest.importorskip("nibabel")
    image = nibabel.Nifti1Image(STORED.transpose(2, 1, 0)[..., None], np.diag([1e-3, 2e-3, 3e-3, 1]))
    image.header.set_xyzt_units("meter")
    image.header.set_slope_inter(0.5, -100)
    nibabel.save(image, tmp_path / "volume.nii")
    volume = Volume.from_file(str(tmp_path / "volume.nii"))
    stored = np.asarray(nibabel.load(tmp_path / "volume.nii").dataobj)[6, 2, 3, 0]
    assert abs(volume.value_at(6, 2, 3) - stored) < 1e-3
    assert np.allclose(place(volume, (1, 1, 1)), (-1, -2, 3), atol=1e-4)


def test_files_that_hold_no_volume(tmp_path):
    nibabel = pytest.importorskip("nibabel")
    nibabel.save(nibabel.Nifti1Image(np.zeros((3, 3, 3, 2), np.int16), np.eye(4)), tmp_path / "four.nii")
    with pytest.raises(ValueError, match="four.nii cannot be read as a volume: .* not one volume"):
        Volume.from_file(tmp_path / "four.nii")
    (tmp_path / "text.nii").write_text("no volume at all")
    with pytest.raises(ValueError, match="text.nii cannot be read"):
        Volume.from_file(tmp_path / "text.nii")
    nibabel.save(nibabel.Nifti1Image(STORED, np.eye(4)), tmp_path / "whole.nii.gz")
    whole = (tmp_path / "whole.nii.gz").read_bytes()
    (tmp_path / "cut.nii.gz").write_bytes(whole[: len(whole) // 2])
    with pytest.raises(ValueError, match="cut.nii.gz cannot be read"):
        Volume.from_file(tmp_path / "cut.nii.gz")
    with pytest.raises(FileNotFoundError, match="absent.nii does not exist"):
        Volume.from_file(tmp_path / "absent.nii")


def test_a_package_that_is_missing(tmp_path, monkeypatch):
    (tmp_path / "volume.nii").write_bytes(bytes(400))
    monkeypatch.setitem(sys.modules, "nibabel", None)
    with pytest.raises(ImportError, match="zox_volume needs nibabel to read .*volume.nii: install nibabel"):
        Volume.from_file(tmp_path / "volume.nii")


ROW, COLUMN = np.array([0.0, 1, 0]), np.array([0.6, 0, -0.8])


def series(folder, positions, change=None):
    """Writes STORED as one DICOM file a slice, last one first."""
    pydicom = pytest.importorskip("pydicom")
    from pydicom.dataset import FileDataset, FileMetaDataset
    from pydicom.uid import CTImageStorage, ExplicitVRLittleEndian, generate_uid

    name = generate_uid(entropy_srcs=["series"])
    for index, position in enumerate(positions):
        meta = FileMetaDataset()
        meta.TransferSyntaxUID, meta.MediaStorageSOPClassUID = ExplicitVRLittleEndian, CTImageStorage
        meta.MediaStorageSOPInstanceUID = generate_uid(entropy_srcs=[str(index)])
        path = folder / f"{9 - index}.dcm"
        dataset = FileDataset(str(path), {}, file_meta=meta, preamble=b"\0" * 128)
        dataset.is_little_endian, dataset.is_implicit_VR = True, False
        dataset.SOPClassUID, dataset.SOPInstanceUID = CTImageStorage, meta.MediaStorageSOPInstanceUID
        dataset.SeriesInstanceUID = name
        dataset.Rows, dataset.Columns = STORED.shape[1:]
        dataset.SamplesPerPixel, dataset.PhotometricInterpretation = 1, "MONOCHROME2"
        dataset.BitsAllocated = dataset.BitsStored = 16
        dataset.HighBit, dataset.PixelRepresentation = 15, 1
        dataset.PixelSpacing, dataset.SliceThickness = [1.5, 0.5], 3
        dataset.ImageOrientationPatient = [*ROW, *COLUMN]
        dataset.ImagePositionPatient = [round(float(part), 6) for part in position]
        dataset.RescaleSlope, dataset.RescaleIntercept = "2", "-1024"
        dataset.PixelData = STORED[index].tobytes()
        if change:
            change(index, dataset)
        dataset.save_as(path)
    return pydicom


NORMAL = np.cross(ROW, COLUMN)
ORIGIN = np.array([10.0, 20, 30])


@pytest.mark.parametrize("reverse", [False, True])
def test_dicom(tmp_path, reverse):
    places = [ORIGIN + NORMAL * 2.5 * (4 - k if reverse else k) for k in range(5)]
    series(tmp_path, places)
    (tmp_path / "notes.txt").write_text("not DICOM")
    volume = Volume.from_file(tmp_path)
    k = 1 if reverse else 3
    assert volume.value_at(6, 2, 3) == STORED[k, 2, 6] * 2.0 - 1024
    assert np.allclose(place(volume, (6, 2, 3)), ORIGIN + NORMAL * 7.5 + ROW * 3 + COLUMN * 3, atol=1e-4)


def test_dicom_of_a_tilted_gantry_with_uneven_slices(tmp_path):
    axis = NORMAL + 0.2 * COLUMN
    heights = [0, 1, 2, 4, 7]
    series(tmp_path, [ORIGIN + axis * height for height in heights])
    volume = Volume.from_file(tmp_path)
    assert np.allclose(volume.corners[4] - volume.corners[0], axis * 7, atol=1e-4)
    point = ORIGIN + axis * 5.5 + ROW * 3 + COLUMN * 3  # between slices 3 and 4, at their middle
    picture = volume.render(
        (ROW, -COLUMN, NORMAL),
        projection="orthographic",
        size=1,
        pixel_size=1,
        center=point,
        slab=0,
        values=True,
    )
    assert abs(picture.values[0, 0] - (STORED[3, 2, 6] * 1.0 + STORED[4, 2, 6] - 1024)) < 2


def test_dicom_with_a_scale_for_each_slice(tmp_path):
    def change(index, dataset):
        dataset.RescaleSlope = str(index + 1)

    series(tmp_path, [ORIGIN + NORMAL * k for k in range(5)], change)
    volume = Volume.from_file(tmp_path)
    assert abs(volume.value_at(6, 2, 3) - (STORED[3, 2, 6] * 4.0 - 1024)) <= 0.5


def test_one_dicom_file(tmp_path):
    series(tmp_path, [ORIGIN + NORMAL * k for k in range(5)])
    assert Volume.from_file(tmp_path / "7.dcm").shape == (1, 6, 7)


def two_series(index, dataset):
    dataset.SeriesInstanceUID = f"1.2.3.{index % 2}"


def turned(index, dataset):
    if index == 2:
        dataset.ImageOrientationPatient = [1, 0, 0, 0, 1, 0]


def nowhere(index, dataset):
    del dataset.ImagePositionPatient


def colour(index, dataset):
    dataset.SamplesPerPixel = 3


@pytest.mark.parametrize(
    "change, words",
    [
        (two_series, "it holds 2 series"),
        (turned, "its slices are not parallel"),
        (nowhere, "it has no ImagePositionPatient"),
        (colour, "its pictures are in colour"),
    ],
)
def test_series_that_are_no_volume(tmp_path, change, words):
    series(tmp_path, [ORIGIN + NORMAL * k for k in range(5)], change)
    with pytest.raises(ValueError, match=words):
        Volume.from_file(tmp_path)


def test_slices_out_of_place(tmp_path):
    series(tmp_path, [ORIGIN + NORMAL * min(k, 3) for k in range(5)])
    with pytest.raises(ValueError, match="several of its slices lie at one place"):
        Volume.from_file(tmp_path)
    for file in tmp_path.iterdir():
        file.unlink()
    with pytest.raises(ValueError, match="holds no DICOM pictures"):
        Volume.from_file(tmp_path)
    series(tmp_path, [ORIGIN + NORMAL * k + ROW * (k == 2) for k in range(5)])
    with pytest.raises(ValueError, match="do not lie on a line"):
        Volume.from_file(tmp_path)
