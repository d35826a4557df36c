"""One volume in many forms: MetaImage, folders of TIFF and NRRD slices, HDF5."""
import zlib
import gzip
import numpy
from PIL import Image

SPACING = (0.5, 0.75, 2.0)  # x, y, z in millimetres


def head(slices=20, rows=37, columns=41, dtype="int16", seed=7):
    """Blobs over noise, so that every slice and every side shows."""
    random = numpy.random.default_rng(seed)
    z, y, x = numpy.mgrid[:slices, :rows, :columns]
    blobs = 900 * numpy.exp(-((x - 10) ** 2 + (y - 25) ** 2) / 60 - (z - 14) ** 2 / 20)
    return (blobs + random.integers(0, 90, (slices, rows, columns))).astype(dtype)


def meta_image(path, voxels, spacing=SPACING):
    kind = {"int16": "SHORT", "uint16": "USHORT", "uint8": "UCHAR", "float32": "FLOAT", "float64": "DOUBLE",
            "int32": "INT", "uint32": "UINT", "int8": "CHAR"}[voxels.dtype.name]
    path.with_suffix(".raw").write_bytes(voxels.tobytes())
    z, y, x = voxels.shape
    path.write_text(f"ObjectType = Image\nNDims = 3\nDimSize = {x} {y} {z}\nElementType = MET_{kind}\n"
                    f"ElementByteOrderMSB = False\nElementSpacing = {spacing[0]} {spacing[1]} {spacing[2]}\n"
                    f"ElementDataFile = {path.with_suffix('.raw').name}\n")
    return path


def tiff_folder(path, voxels, name="slice_{:04}.tif", first=0, step=1, **options):
    path.mkdir()
    for z, picture in enumerate(voxels):
        Image.fromarray(picture).save(path / name.format(first + z * step), format="TIFF", **options)
    return path


def nrrd_slice(picture, more, packed=False, big=False):
    kind = {"int16": "short", "uint16": "ushort", "uint8": "uchar", "float32": "float", "int64": "int64"}
    rows, columns = picture.shape
    data = picture.astype(picture.dtype.newbyteorder(">" if big else "<")).tobytes()
    text = (f"NRRD0004\ntype: {kind[picture.dtype.name]}\ndimension: 2\nsizes: {columns} {rows}\n"
            f"endian: {'big' if big else 'little'}\nencoding: {'gzip' if packed else 'raw'}\n{more}\n\n")
    return text.encode() + (gzip.compress(data) if packed else data)


def nrrd_folder(path, voxels, more=lambda z: "spacings: 0.5 0.75", **options):
    path.mkdir()
    for z, picture in enumerate(voxels):
        (path / f"s{z}.nrrd").write_bytes(nrrd_slice(picture, more(z), **options))
    return path


def tiled_tiff(picture, tile=16):
    """A TIFF of deflated tiles, which PIL does not write."""
    rows, columns = picture.shape
    down, across = -(-rows // tile), -(-columns // tile)
    padded = numpy.zeros((down * tile, across * tile), picture.dtype)
    padded[:rows, :columns] = picture
    tiles = [zlib.compress(padded[r * tile:(r + 1) * tile, c * tile:(c + 1) * tile].tobytes())
             for r in range(down) for c in range(across)]
    body, places = b"", []
    for packed in tiles:
        places.append(8 + len(body))
        body += packed + b"\0" * (len(packed) % 2)
    lists = 8 + len(body)
    body += numpy.array(places + [len(t) for t in tiles], "<u4").tobytes()
    n = len(tiles)
    tags = [(256, 4, 1, columns), (257, 4, 1, rows), (258, 3, 1, picture.dtype.itemsize * 8), (259, 3, 1, 8),
            (262, 3, 1, 1), (277, 3, 1, 1), (322, 4, 1, tile), (323, 4, 1, tile), (324, 4, n, lists),
            (325, 4, n, lists + 4 * n), (339, 3, 1, {"i": 2, "u": 1, "f": 3}[picture.dtype.kind])]
    directory = numpy.array([len(tags)], "<u2").tobytes() + b"".join(
        numpy.array([tag, kind], "<u2").tobytes() + numpy.array([count, value], "<u4").tobytes()
        for tag, kind, count, value in tags) + b"\0" * 4
    return b"II*\0" + numpy.array([8 + len(body)], "<u4").tobytes() + body + directory
