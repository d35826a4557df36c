"""DICOM files of many frames: the voxels and the places that they say."""

import numpy as np
import pytest
from test_files import COLUMN, NORMAL, ORIGIN, ROW, STORED, place

from zox_volume import Volume


def frames(folder, heights, change=None, rescale=None):
    """Writes STORED as one enhanced CT file, a frame a slice."""
    pytest.importorskip("pydicom")
    from pydicom.dataset import Dataset, FileDataset, FileMetaDataset
    from pydicom.uid import EnhancedCTImageStorage, ExplicitVRLittleEndian, generate_uid

    def item(sequence=None, **elements):
        data = Dataset()
        for name, value in elements.items():
            setattr(data, name, value)
        if sequence is None:
            return data
        outer = Dataset()
        setattr(outer, sequence, [data])
        return outer

    meta = FileMetaDataset()
    meta.TransferSyntaxUID, meta.MediaStorageSOPClassUID = ExplicitVRLittleEndian, EnhancedCTImageStorage
    meta.MediaStorageSOPInstanceUID = generate_uid(entropy_srcs=["frames"])
    dataset = FileDataset(str(folder / "frames.dcm"), {}, file_meta=meta, preamble=b"\0" * 128)
    dataset.is_little_endian, dataset.is_implicit_VR = True, False
    dataset.SOPClassUID, dataset.NumberOfFrames = EnhancedCTImageStorage, len(STORED)
    dataset.Rows, dataset.Columns = STORED.shape[1:]
    dataset.SamplesPerPixel, dataset.PhotometricInterpretation = 1, "MONOCHROME2"
    dataset.BitsAllocated = dataset.BitsStored = 16
    dataset.HighBit, dataset.PixelRepresentation = 15, 1
    shared = item("PixelMeasuresSequence", PixelSpacing=[1.5, 0.5], SliceThickness=3)
    shared.PlaneOrientationSequence = [item(ImageOrientationPatient=[*ROW, *COLUMN])]
    if rescale is None:
        shared.PixelValueTransformationSequence = [item(RescaleSlope="2", RescaleIntercept="-1024")]
    dataset.SharedFunctionalGroupsSequence = [shared]
    groups = []
    for index, height in enumerate(heights):
        place = [round(float(part), 6) for part in ORIGIN + NORMAL * height]
        groups.append(item("PlanePositionSequence", ImagePositionPatient=place))
        if rescale is not None:
            scale = item(RescaleSlope=str(rescale[index]), RescaleIntercept="-1024")
            groups[-1].PixelValueTransformationSequence = [scale]
    dataset.PerFrameFunctionalGroupsSequence = groups
    dataset.PixelData = STORED.tobytes()
    if change:
        change(dataset)
    dataset.save_as(folder / "frames.dcm")
    return folder / "frames.dcm"


@pytest.mark.parametrize("reverse", [False, True])
@pytest.mark.parametrize("whole_folder", [False, True])
def test_dicom_of_many_frames(tmp_path, reverse, whole_folder):
    file = frames(tmp_path, [2.5 * (4 - k if reverse else k) for k in range(5)])
    volume = Volume.from_file(tmp_path if whole_folder else file)
    k = 1 if reverse else 3
    assert volume.shape == STORED.shape
    assert volume.value_at(6, 2, 3) == STORED[k, 2, 6] * 2.0 - 1024
    assert np.allclose(place(volume, (6, 2, 3)), ORIGIN + NORMAL * 7.5 + ROW * 3 + COLUMN * 3, atol=1e-4)


def test_dicom_of_many_frames_with_a_scale_for_each(tmp_path):
    volume = Volume.from_file(frames(tmp_path, range(5), rescale=range(1, 6)))
    assert abs(volume.value_at(6, 2, 3) - (STORED[3, 2, 6] * 4.0 - 1024)) <= 0.5


def test_dicom_of_many_frames_that_is_no_volume(tmp_path):
    def unplaced(dataset):
        del dataset.PerFrameFunctionalGroupsSequence

    def short(dataset):
        dataset.PerFrameFunctionalGroupsSequence = dataset.PerFrameFunctionalGroupsSequence[:3]

    def partly_placed(dataset):
        del dataset.PerFrameFunctionalGroupsSequence[2].PlanePositionSequence

    def cut(dataset):
        dataset.PixelData = dataset.PixelData[:-100]

    for change, words in (
        (unplaced, "does not say where each lies"),
        (short, "says where 3 of its 5 frames lie"),
        (partly_placed, "no ImagePositionPatient"),
        (cut, "cannot be read as a volume"),
    ):
        file = frames(tmp_path, range(5), change)
        with pytest.raises(ValueError, match=words):
            Volume.from_file(file)
