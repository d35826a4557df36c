#!/usr/bin/env python3
"""Times Volume.render beside SciPy (affine_transform, then the maximum) and VTK (its fixed-point ray caster)
on one picture: an oblique orthographic maximum of a 256-voxel cube of 16 bits, a voxel from sample to sample.
Prints medians and their ratios, and how much the pictures differ. VTK draws into a window off the screen, so
it may need xvfb-run."""

import argparse
import statistics
import time

import numpy as np

from zox_volume import Volume

VIEW = (35.0, 25.0)  # azimuth, elevation
WINDOW = (900.0, 1800.0)


def head(edge):
    """A skull of sorts: shells, a few bright vessels and noise."""
    z, y, x = np.indices((edge,) * 3, np.float32) / (edge / 2) - 1
    radius = np.sqrt((x / 0.7) ** 2 + (y / 0.85) ** 2 + (z / 0.8) ** 2)
    array = np.where(radius < 1, 40.0, -1000.0)
    array[(radius > 0.88) & (radius < 1)] = 1100
    for phase in range(6):
        distance = np.hypot(x - 0.4 * np.cos(4 * z + phase), y - 0.4 * np.sin(3 * z + phase))
        array[(distance < 0.03) & (radius < 0.85)] = 1500
    noise = np.random.default_rng(1).normal(0, 15, array.shape)
    return np.rint(array + noise).astype(np.int16)


def displayed(values):
    center, width = WINDOW
    return np.clip((values - (center - width / 2)) * (255 / width), 0, 255).astype(np.uint8)


class Ours:
    def __init__(self, array, size, pixel, threads):
        self.name = f"zox_volume, {'all threads' if threads is None else 'one thread'}"
        self.volume = Volume(array)
        self.options = {"size": size, "pixel_size": pixel, "window": WINDOW, "threads": threads}

    def render(self):
        return self.volume.render(VIEW, projection="orthographic", **self.options)


class SciPy:
    """A grid of rays in the view's frame, filled by affine_transform."""

    def __init__(self, array, size, pixel, geometry):
        import scipy.ndimage

        self.name = f"SciPy {scipy.__version__}"
        self.transform, self.array = scipy.ndimage.affine_transform, array
        axes = np.array([geometry.forward, -np.array(geometry.up) * pixel, np.array(geometry.right) * pixel])
        self.matrix = axes.T[::-1]  # columns: depth, row, column; rows: z, y, x
        depth = int(np.ceil(array.shape[0] * 3**0.5)) | 1
        self.shape = (depth, size, size)
        middle = [(depth - 1) / 2, (size - 1) / 2, (size - 1) / 2]
        self.offset = np.array(geometry.center)[::-1] - self.matrix @ middle

    def render(self):
        rays = self.transform(
            self.array, self.matrix, self.offset, self.shape, order=1, cval=-32768, prefilter=False
        )
        return displayed(rays.max(0).astype(np.float32))


class Vtk:
    """vtkFixedPointVolumeRayCastMapper on all its threads, at full resolution."""

    def __init__(self, array, size, pixel, geometry):
        import vtk
        from vtk.util.numpy_support import numpy_to_vtk, vtk_to_numpy

        self.name = f"VTK {vtk.vtkVersion.GetVTKVersion()}"
        self.to_numpy, self.vtk = vtk_to_numpy, vtk
        # The ray caster takes unsigned 16 bits at full speed.
        self.low = int(array.min())
        image = vtk.vtkImageData()
        image.SetDimensions(array.shape[::-1])
        shifted = (array.astype(np.int32) - self.low).astype(np.uint16)
        image.GetPointData().SetScalars(numpy_to_vtk(shifted.ravel(), deep=True))
        mapper = vtk.vtkFixedPointVolumeRayCastMapper()
        mapper.SetInputData(image)
        mapper.SetBlendModeToMaximumIntensity()
        mapper.SetAutoAdjustSampleDistances(0)
        mapper.SetImageSampleDistance(1)
        mapper.SetSampleDistance(1)
        black = WINDOW[0] - WINDOW[1] / 2 - self.low
        grey, opaque = vtk.vtkColorTransferFunction(), vtk.vtkPiecewiseFunction()
        grey.AddRGBPoint(black, 0, 0, 0)
        grey.AddRGBPoint(black + WINDOW[1], 1, 1, 1)
        opaque.AddPoint(0, 1)
        opaque.AddPoint(65535, 1)
        prop = vtk.vtkVolumeProperty()
        prop.SetColor(grey)
        prop.SetScalarOpacity(opaque)
        prop.SetInterpolationTypeToLinear()
        prop.ShadeOff()
        actor = vtk.vtkVolume()
        actor.SetMapper(mapper)
        actor.SetProperty(prop)
        renderer = vtk.vtkRenderer()
        renderer.AddVolume(actor)
        self.window = vtk.vtkRenderWindow()
        self.window.SetOffScreenRendering(1)
        self.window.SetMultiSamples(0)
        self.window.SetSize(size, size)
        self.window.AddRenderer(renderer)
        camera = renderer.GetActiveCamera()
        camera.ParallelProjectionOn()
        camera.SetFocalPoint(geometry.center)
        camera.SetPosition(np.array(geometry.center) - 1000 * np.array(geometry.forward))
        camera.SetViewUp(geometry.up)
        camera.SetParallelScale(size * pixel / 2)
        renderer.ResetCameraClippingRange()
        self.camera, self.actor = camera, actor

    def render(self):
        self.actor.Modified()  # so that it is drawn anew
        self.window.Render()

    def picture(self):
        grab = self.vtk.vtkWindowToImageFilter()
        grab.SetInput(self.window)
        grab.ReadFrontBufferOff()
        grab.Update()
        image = grab.GetOutput()
        width, height, _ = image.GetDimensions()
        return self.to_numpy(image.GetPointData().GetScalars()).reshape(height, width, -1)[::-1, :, 0]


def main():
    arguments = argparse.ArgumentParser(description=__doc__)
    arguments.add_argument("--edge", type=int, default=256, help="voxels along each edge of the volume")
    arguments.add_argument("--size", type=int, default=512, help="pixels along each edge of the picture")
    arguments.add_argument("--rounds", type=int, default=7)
    arguments.add_argument("--save", help="a folder for the pictures")
    chosen = arguments.parse_args()
    array, pixel = head(chosen.edge), chosen.edge * 1.2 / chosen.size
    ours = [Ours(array, chosen.size, pixel, threads) for threads in (None, 1)]
    geometry = ours[0].render().geometry
    peers = [kind(array, chosen.size, pixel, geometry) for kind in (SciPy, Vtk)]
    seconds = {one.name: [] for one in ours + peers}
    for _ in range(chosen.rounds):
        for one in ours + peers:
            start = time.perf_counter()
            one.picture_made = one.render()
            seconds[one.name].append(time.perf_counter() - start)
    peers[1].picture_made = peers[1].picture()
    for one in ours + peers:
        if chosen.save:
            np.asarray(one.picture_made, np.uint8).view(type(ours[0].picture_made)).save(
                f"{chosen.save}/{one.name.split()[0].lower().strip(',')}-{len(one.name)}.png"
            )
        median = statistics.median(seconds[one.name])
        ratios = [median / statistics.median(seconds[mine.name]) for mine in ours]
        difference = np.abs(np.asarray(one.picture_made, np.int16) - np.asarray(ours[0].picture_made))
        print(
            f"{one.name:26} {median * 1e3:9.2f} ms   {ratios[0]:7.1f} x all threads   {ratios[1]:7.1f} x one thread"
            f"   grey levels apart: mean {difference.mean():.2f}, 99 % within {np.percentile(difference, 99):.0f}"
        )


if __name__ == "__main__":
    main()
