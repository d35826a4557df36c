#!/usr/bin/python3
"""Folders of TIFF and NRRD slices and HDF5 give the picture of the same volume in one plain file, at once and in
parts; odd ones are refused by one sentence.

    slices_test.py ZOX-MIP
"""
import subprocess
import sys
import tempfile
from pathlib import Path

import h5py
import numpy
from PIL import Image

sys.path.insert(0, str(Path(__file__).parent.parent / "dicom"))
import make_series  # noqa: E402
from volumes import SPACING, head, meta_image, nrrd_folder, nrrd_slice, tiff_folder, tiled_tiff  # noqa: E402

PROGRAM = sys.argv[1]
GIVEN = ["--spacing", ",".join(map(str, SPACING))]
failed = 0


def expect(condition, what):
    global failed
    if not condition:
        failed += 1
        print(f"FAILED {what}")


def files_of(volume, place, *words):
    place.mkdir()
    done = subprocess.run([PROGRAM, volume, "-o", place / "x.png", "--view", "35,25", "--size", "90x80", "--depth",
                           place / "x.npy", "--raw", place / "x.nrrd", "--quiet", *words], capture_output=True, text=True)
    expect(done.returncode == 0, f"{volume} {words}: {done.stderr}")
    return {path.name: path.read_bytes() for path in place.iterdir()}


def same(volume, wanted, place, *words):
    expect(files_of(volume, place / f"{volume.name}-whole", *words) == wanted, f"{volume.name} gives another picture")
    parts = files_of(volume, place / f"{volume.name}-parts", "--memory", "60K", *words)
    expect(parts == wanted, f"{volume.name} gives another picture in parts")


def hdf5(path, voxels, name="volume", **options):
    with h5py.File(path, "w") as file:
        data = file.create_dataset(name, data=voxels, **options)
        data.attrs["element_size_um"] = [1000 * length for length in reversed(SPACING)]
    return path


def good(place):
    voxels = head()
    wanted = files_of(meta_image(place / "plain.mhd", voxels), place / "wanted")
    expect(len(wanted) == 3, "three files are wanted")
    unsigned = voxels.astype("uint16")
    wanted_unsigned = files_of(meta_image(place / "unsigned.mhd", unsigned), place / "wanted-u")
    same(tiff_folder(place / "tiff", unsigned), wanted_unsigned, place, *GIVEN)
    same(tiff_folder(place / "lzw", unsigned, "a{}_b.TIFF", 7, 3, compression="tiff_lzw"), wanted_unsigned, place, *GIVEN)
    same(tiff_folder(place / "int", voxels.astype("int32")),
         files_of(meta_image(place / "int.mhd", voxels.astype("int32")), place / "wanted-i"), place, *GIVEN)
    tiled = place / "tiled"
    tiled.mkdir()
    for z, picture in enumerate(voxels):
        (tiled / f"{z:03}.tif").write_bytes(tiled_tiff(picture))
    (tiled / "notes.txt").write_text("of the beam")
    same(tiled, wanted, place, *GIVEN)
    same(nrrd_folder(place / "nrrd", voxels), wanted, place, *GIVEN)
    same(nrrd_folder(place / "packed", voxels, packed=True, big=True), wanted, place, *GIVEN)
    places = nrrd_folder(place / "places", voxels, lambda z: f"space dimension: 3\nspace directions: (0.5,0,0) (0,0.75,0)"
                                                             f"\nspace origin: (0,0,{2 * z})")
    same(places, wanted, place)
    flat = nrrd_folder(place / "flat", voxels, lambda z: "space dimension: 2\nspace directions: (0.5,0) (0,0.75)\n"
                                                         "space origin: (0,0)")
    same(flat, wanted, place, *GIVEN)
    study = place / "study"
    make_series.make(str(study / "thin"))
    of_study = files_of(study, place / "wanted-study")
    for name in ("cube", "other"):
        (study / f"{name}.nrrd").write_bytes(nrrd_slice(voxels[0], "spacings: 0.5 0.75"))
    expect(files_of(study, place / "beside") == of_study, "volumes beside a study take its place")
    make_series.make(str(flat / "thin"))
    (place / "below").mkdir()
    same(flat, wanted, place / "below", *GIVEN)
    same(hdf5(place / "plain.h5", voxels), wanted, place)
    same(hdf5(place / "packed.h5", voxels, "a/b", chunks=(3, 16, 16), compression="gzip", shuffle=True), wanted, place)
    same(hdf5(place / "big.h5", voxels.astype(">i2")[None, :, :, :, None]), wanted, place)
    both = hdf5(place / "both.h5", voxels)
    with h5py.File(both, "a") as file:
        file["half"] = voxels[::2, ::2, ::2]
        file["numbers"] = numpy.arange(9)
    same(both, wanted, place, "--dataset", "/volume")
    doubles = files_of(meta_image(place / "doubles.mhd", voxels.astype("float64")), place / "wanted-d")
    same(hdf5(place / "long.h5", voxels.astype("int64")), doubles, place)
    same(nrrd_folder(place / "long", voxels.astype("int64")), doubles, place, *GIVEN)


def refuse(volume, sentence, *words):
    for more in ([], ["--memory", "60K"]):
        out = volume.parent / "never.png"
        done = subprocess.run([PROGRAM, volume, "-o", out, *words, *more], capture_output=True, text=True)
        expect(done.returncode == 1, f"{volume.name}: status {done.returncode}")
        expect(done.stderr.count("\n") == 1 and sentence in done.stderr, f"{volume.name}: said {done.stderr}")
        expect(not out.exists(), f"{volume.name}: a picture was left")


def odd_slices(place):
    voxels = head().astype("uint16")

    def folder(name, change):
        path = tiff_folder(place / name, voxels)
        change(path)
        return path

    def write(name, array):
        return lambda path: Image.fromarray(array).save(path / name)

    refuse(folder("gap", lambda path: (path / "slice_0007.tif").unlink()), "'slice_0007.tif' is missing")
    refuse(folder("size", write("slice_0005.tif", voxels[0][:30])), "slice_0005.tif' has 41 x 30 voxels")
    refuse(folder("last", write("slice_0019.tif", voxels[0][:, :40])), "slice_0019.tif' has 40 x 37 voxels")
    refuse(folder("type", write("slice_0004.tif", voxels[0].astype("uint8"))), "voxels of another type")
    refuse(folder("colours", write("slice_0003.tif", numpy.zeros((37, 41, 3), "uint8"))), "holds colours")
    refuse(folder("words", lambda path: (path / "slice_0002.tif").write_text("no picture")), "no TIFF file")
    refuse(folder("empty", lambda path: (path / "slice_0002.tif").write_text("")), "no TIFF file")
    refuse(folder("cut", lambda path: (path / "slice_0011.tif").write_bytes((path / "slice_0011.tif").read_bytes()[:1500])),
           "slice_0011.tif' is")
    refuse(folder("other", write("picture.tif", voxels[0])), "differ in one number only")
    refuse(folder("twice", write("slice_7.tif", voxels[0])), "holds a slice twice")
    refuse(folder("folder", lambda path: (path / "slice_0019.tif").rename(path / "slice_0029.tif")), "lacks a slice")
    several = [Image.fromarray(picture) for picture in voxels[:3]]
    refuse(folder("several", lambda path: several[0].save(path / "slice_0000.tif", save_all=True,
                                                          append_images=several[1:])), "holds several pictures")
    single = place / "single"
    single.mkdir()
    several[0].save(single / "a1.tif")
    refuse(single, "holds a single slice")
    nothing = place / "nothing"
    nothing.mkdir()
    (nothing / "a.txt").write_text("words")
    refuse(nothing, "holds no DICOM files")
    turned = nrrd_folder(place / "uneven", head(), lambda z: "space dimension: 3\nspace directions: (1,0,0) (0,1,0)\n"
                                                             f"space origin: (0,0,{2 * z + (z == 9)})")
    refuse(turned, "s9.nrrd' lies elsewhere")
    short = nrrd_folder(place / "short", head())
    (short / "s8.nrrd").write_bytes(nrrd_slice(head()[8], "spacings: 0.5 0.75")[:-1])
    refuse(short, "cut short")


def odd_hdf5(place):
    voxels = head()
    two = hdf5(place / "two.h5", voxels)
    with h5py.File(two, "a") as file:
        file["other"] = voxels
        file["flat"] = voxels[0]
        file["words"] = ["a", "b"]
        file["points"] = numpy.zeros((3, 3, 3), [("x", "f4"), ("y", "f4")])
    refuse(two, "choose one by --dataset")
    refuse(two, "no dataset '/none'", "--dataset", "/none")
    refuse(two, "its sizes are 37 x 41", "--dataset", "/flat")
    refuse(two, "plain numbers", "--dataset", "/words")
    refuse(two, "plain numbers", "--dataset", "/points")
    refuse(two, "no volume 3", "--dataset", "/other", "--volume", "3")
    cut = place / "cut.h5"
    cut.write_bytes(hdf5(place / "whole.h5", voxels).read_bytes()[:20000])
    refuse(cut, "HDF5 cannot open it")
    damaged = hdf5(place / "damaged.h5", voxels, chunks=(3, 16, 16), compression="gzip", fletcher32=True)
    with h5py.File(damaged) as file:
        at = file["volume"].id.get_chunk_info(20).byte_offset
    data = bytearray(damaged.read_bytes())
    data[at + 10:at + 20] = b"\xff" * 10
    damaged.write_bytes(data)
    refuse(damaged, "HDF5 cannot read '/volume'")
    none = place / "none.h5"
    with h5py.File(none, "w") as file:
        file["flat"] = voxels[0]
    refuse(none, "holds no dataset")
    minc = place / "minc.h5"
    with h5py.File(minc, "w") as file:
        file["minc-2.0/image/0/image"] = voxels
    refuse(minc, "MINC")
    sizes = hdf5(place / "sizes.h5", voxels)
    with h5py.File(sizes, "a") as file:
        file["volume"].attrs["element_size_um"] = [0, 1, 1]
    refuse(sizes, "no size of a voxel")


def main():
    for step in (good, odd_slices, odd_hdf5):
        with tempfile.TemporaryDirectory() as place:
            step(Path(place))
    print(f"{failed} failed")
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
