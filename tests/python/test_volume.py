"""Pictures against plain NumPy on the same voxels."""

import numpy as np
import pytest

from zox_volume import Volume

RANDOM = np.random.default_rng(7)
VOXELS = RANDOM.integers(-1000, 3000, (7, 9, 11), np.int16)  # z, y, x: odd, so that voxels lie on the centre

# Where a viewer stands: what lies to the right of the picture, up in it and into it; x to the left, y to the back.
VIEWS = {
    "anterior": ((1, 0, 0), (0, 0, 1), (0, 1, 0)),
    "posterior": ((-1, 0, 0), (0, 0, 1), (0, -1, 0)),
    "left": ((0, 1, 0), (0, 0, 1), (-1, 0, 0)),
    "right": ((0, -1, 0), (0, 0, 1), (1, 0, 0)),
    "superior": ((-1, 0, 0), (0, -1, 0), (0, 0, -1)),
    "inferior": ((1, 0, 0), (0, -1, 0), (0, 0, 1)),
}
REDUCTIONS = {
    "maximum": lambda rays: rays.max(0),
    "minimum": lambda rays: rays.min(0),
    "mean": lambda rays: np.floor(rays.mean(0, np.float64) + 0.5),
    "largest_magnitude": lambda rays: np.where(rays.max(0) >= -rays.min(0), rays.max(0), rays.min(0)),
}


def seen(array, view):
    """array[z, y, x] as [into the picture, row from the top, column]."""
    for axis, vector in enumerate(VIEWS[view]):
        if sum(vector) < 0:
            array = np.flip(array, 2 - int(np.flatnonzero(vector)[0]))
    right, up, into = (2 - int(np.flatnonzero(vector)[0]) for vector in VIEWS[view])
    return array.transpose(into, up, right)[:, ::-1]


def straight(volume, view, **options):
    """A pixel a voxel, the middle of the picture on the middle voxel."""
    depth, height, width = seen(np.empty(volume.shape, np.bool_), view).shape
    return volume.render(
        view, size=(width, height), pixel_size=1, projection="orthographic", values=True, **options
    )


@pytest.mark.parametrize("interpolation", ["nearest", "trilinear"])
@pytest.mark.parametrize("reduction", REDUCTIONS)
@pytest.mark.parametrize("view", VIEWS)
def test_projections_along_the_axes(view, reduction, interpolation):
    picture = straight(Volume(VOXELS), view, reduction=reduction, interpolation=interpolation)
    assert np.array_equal(picture.values, REDUCTIONS[reduction](seen(VOXELS, view)))


@pytest.mark.parametrize("layout", ["auto", "bricks", "stack"])
@pytest.mark.parametrize("copy", [True, False])
def test_the_way_voxels_are_kept_changes_nothing(layout, copy):
    volume = Volume(VOXELS, layout=layout, copy=copy)
    assert layout in ("auto", volume.layout)
    assert np.array_equal(straight(volume, "left").values, seen(VOXELS, "left").max(0))


TYPES = ["?", "u1", "i1", "u2", "i2", ">i2", "u4", "i4", "i8", "u8", "f2", "f4", "f8", ">f8"]


@pytest.mark.parametrize("kind", TYPES)
def test_types(kind):
    array = (VOXELS > 0 if kind == "?" else RANDOM.integers(0, 120, VOXELS.shape)).astype(kind)
    volume = Volume(array)
    assert np.allclose(straight(volume, "anterior").values, seen(array, "anterior").max(0), atol=0.01)
    assert volume.value_at(10, 8, 6) == array[6, 8, 10]
    assert (volume.lowest, volume.highest) == (array.min(), array.max())


PLACES = {
    "fortran": np.asfortranarray(VOXELS),
    "upside down": VOXELS[::-1, ::-1, ::-1],
    "every second": np.repeat(np.repeat(VOXELS, 2, 2), 2, 0)[::2, :, ::2],
    "one voxel for all": np.broadcast_to(np.int16(9), (7, 9, 11)),
    "one slice for all": np.broadcast_to(VOXELS[0], (7, 9, 11)),
    "unaligned": np.frombuffer(b"\0" + VOXELS.tobytes(), np.int16, offset=1).reshape(VOXELS.shape),
    "read-only": np.frombuffer(VOXELS.tobytes(), np.int16).reshape(VOXELS.shape),
}


@pytest.mark.parametrize("name", PLACES)
@pytest.mark.parametrize("copy", [True, False])
def test_places_in_memory(name, copy):
    picture = straight(Volume(PLACES[name], copy=copy), "anterior")
    assert np.array_equal(picture.values, seen(PLACES[name], "anterior").max(0))


def test_the_array_may_go_or_change_once_it_is_copied():
    array = VOXELS.copy()
    volume = Volume(array)
    array[...] = 0
    del array
    assert np.array_equal(straight(volume, "anterior").values, seen(VOXELS, "anterior").max(0))


def test_slope_and_intercept():
    picture = straight(Volume(VOXELS, slope=0.5, intercept=-100), "anterior")
    assert np.allclose(picture.values, seen(VOXELS, "anterior").max(0) * 0.5 - 100)


def test_a_window():
    """v <= center - width / 2: 0; v >= center + width / 2: 255; linear between, truncated."""
    picture = straight(Volume(VOXELS), "anterior", window=(2000, 1000))
    wanted = np.clip((picture.values - 1500) / 1000 * 255, 0, 255).astype(np.uint8)
    assert picture.window == (2000, 1000)
    assert np.array_equal(picture, wanted)


def ramp(shape, gradient):
    z, y, x = np.indices(shape)
    return (gradient[0] * x + gradient[1] * y + gradient[2] * z).astype(np.int16)


@pytest.mark.parametrize("angles", [(0, 0), (37, 21), (200, -75), (-10, 90)])
@pytest.mark.parametrize("projection", ["perspective", "orthographic"])
def test_a_slice_of_a_ramp(angles, projection):
    """Where values grow evenly, a sample's value tells its place, which locate must give."""
    gradient = np.array([3, 50, 700])
    direction = np.array([[0, 0, 1], [-1, 0, 0], [0, 0.8, 0.6]])
    volume = Volume(
        ramp((30, 20, 25), gradient), spacing=(0.7, 1.1, 2), direction=direction, origin=(10, -20, 30)
    )
    picture = volume.render(angles, projection=projection, size=(23, 17), slab=0, values=True, depth=True)
    hits = 0
    for row, column in np.argwhere(~np.isnan(picture.values)):
        position, voxel = picture.locate(column, row, 0)
        assert abs(picture.values[row, column] - voxel @ gradient) < 1.01
        assert np.allclose(direction * (0.7, 1.1, 2) @ voxel + (10, -20, 30), position)
        assert picture.depth[row, column] == 0
        hits += 1
    assert hits > 30


def test_uneven_slices():
    """Positions 0 1 4 5: halfway between slices 1 and 2, at 2.5, lies the mean of the two."""
    array = np.array([0, 100, 300, 500], np.int16).repeat(9).reshape(4, 3, 3)
    volume = Volume(array, positions=[0, 1, 4, 5])
    for place, value in ((0, 0), (0.5, 50), (1, 100), (2.5, 200), (3.25, 250), (4.5, 400), (5, 500)):
        picture = volume.render(
            "superior",
            projection="orthographic",
            size=1,
            pixel_size=1,
            center=(1, 1, place),
            slab=0,
            values=True,
        )
        assert abs(picture.values[0, 0] - value) < 1


def test_depth_and_place_of_a_bright_voxel():
    array = np.zeros((21, 21, 21), np.uint8)
    array[4, 15, 13] = 200
    volume = Volume(array, spacing=(1, 2, 1), origin=(-5, 0, 5))
    picture = straight(volume, "anterior", depth=True)
    assert picture.values[20 - 4, 13] == 200
    # The middle lies at y = 20; voxel 15 at y = 30, ten behind it.
    assert picture.depth[20 - 4, 13] == 10
    position, voxel = picture.locate(13, 20 - 4)
    assert position.tolist() == [8, 30, 9] and voxel.tolist() == [13, 15, 4]


def test_a_slab_keeps_what_lies_in_it():
    wanted = seen(VOXELS, "anterior")[3:7].max(0)  # the middle is row 4
    assert np.array_equal(straight(Volume(VOXELS), "anterior", slab=(-1, 2)).values, wanted)
    with pytest.raises(ValueError):
        straight(Volume(VOXELS), "anterior", slab=(50, 60))


def test_rays_beside_the_volume():
    picture = Volume(VOXELS + 2000).render(
        size=64, projection="orthographic", zoom=0.5, depth=True, values=True
    )
    outside = np.isnan(picture.values)
    assert outside[0].all() and not outside[32, 32]
    assert not np.asarray(picture)[outside].any() and np.array_equal(outside, np.isnan(picture.depth))


def test_statistics():
    volume = Volume(VOXELS)
    counts, edges = volume.histogram(10)
    wanted, wanted_edges = np.histogram(VOXELS, 10)
    assert counts.tolist() == wanted.tolist() and np.allclose(edges, wanted_edges)
    ordered = np.sort(VOXELS, axis=None)
    for percent in (0.5, 10, 33.3, 50, 99.9, 100):
        assert volume.percentile(percent) == ordered[int(np.ceil(percent / 100 * ordered.size)) - 1]
    black, white = volume.percentile(75), volume.percentile(99.99)
    assert volume.default_window() == ((black + white) / 2, white - black)
    assert volume.exact and volume.shape == (7, 9, 11) and volume.center == (5, 4, 3)
    assert volume.corners.min(0).tolist() == [0, 0, 0] and volume.corners.max(0).tolist() == [10, 8, 6]
    assert volume.nbytes >= VOXELS.nbytes


@pytest.mark.parametrize("threads", [1, 2, 5, None])
def test_threads_change_nothing(threads):
    array = RANDOM.integers(0, 255, (40, 50, 60), np.uint8)
    volume = Volume(array, threads=threads)
    picture = volume.render((30, 20), size=(120, 90), threads=threads)
    assert np.array_equal(picture, Volume(array, threads=1).render((30, 20), size=(120, 90), threads=1))


def test_a_spin_is_its_views():
    volume = Volume(VOXELS)
    spin = volume.spin(4, size=(20, 30), zoom=1.5)
    assert spin.shape == (4, 30, 20)
    for frame, view in zip(spin, ("anterior", "left", "posterior", "right")):
        assert np.array_equal(frame, volume.render(view, size=(20, 30), zoom=1.5))


def test_geometry():
    picture = Volume(VOXELS).render("left", size=10, pixel_size=0.5, projection="orthographic", step=2)
    geometry = picture.geometry
    assert np.allclose([geometry.right, geometry.up, geometry.forward], VIEWS["left"])
    assert geometry.center == (5, 4, 3) and (geometry.pixel_size, geometry.step) == (0.5, 2)
    turned = Volume(VOXELS).render(VIEWS["left"], size=10, pixel_size=0.5, projection="orthographic", step=2)
    assert np.array_equal(picture, turned)
