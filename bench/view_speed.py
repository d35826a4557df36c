"""Full pictures a second through zox-view's socket, beside VTK's CPU ray caster: the same views, sizes,
samples and threads, in turns. Usage: view_speed.py ZOX_VIEW FILE... (needs an X server for VTK's window)"""
import gzip
import os
import statistics
import struct
import sys
import time

import numpy
import vtk
from vtk.util.numpy_support import numpy_to_vtk

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "..", "tests", "view"))
from client import Server, grey_pixels  # noqa: E402

SIDE = 768
STEP = 0.5  # voxels
VIEWS = [(0, 0), (35, 25), (90, 0), (140, -15)]
ROUNDS = 3


def read_meta_image(path):
    """Voxels [z, y, x] and the axes' steps of a raw MetaImage with an axis matrix of 1 and -1."""
    with open(path, encoding="ascii") as file:
        fields = dict(line.strip().split(" = ") for line in file)
    size = [int(word) for word in fields["DimSize"].split()]
    kind = {"MET_SHORT": "<i2", "MET_UCHAR": "u1"}[fields["ElementType"]]
    voxels = numpy.fromfile(os.path.join(os.path.dirname(path), fields["ElementDataFile"]), kind).reshape(size[::-1])
    signs = numpy.array(fields["TransformMatrix"].split(), float).reshape(3, 3).diagonal()
    return voxels, signs * numpy.array(fields["ElementSpacing"].split(), float)


def read_nifti(path):
    """The same of a NIfTI file whose axes are those of the body."""
    with gzip.open(path) as file:
        data = file.read()
    size = struct.unpack("<3h", data[42:48])
    kind = {2: "u1", 4: "<i2"}[struct.unpack("<h", data[70:72])[0]]
    voxels = numpy.frombuffer(data, kind, offset=int(struct.unpack("<f", data[108:112])[0])).reshape(size[::-1])
    rows = numpy.array(struct.unpack("<12f", data[280:328])).reshape(3, 4)
    # NIfTI's x grows to the right and its y to the front; here to the left and to the back.
    return voxels, rows[:, :3].diagonal() * (-1, -1, 1)


def body_frame(voxels, steps):
    """Turned so that the axes grow to the left, to the back and to the head; the spacings."""
    turned = voxels[tuple(slice(None, None, 1 if step > 0 else -1) for step in steps[::-1])]
    return numpy.ascontiguousarray(turned), numpy.abs(steps)


class Vtk:
    def __init__(self, path, window):
        voxels, spacing = body_frame(*(read_meta_image if path.endswith(".mhd") else read_nifti)(path))
        image = vtk.vtkImageData()
        image.SetDimensions(*voxels.shape[::-1])
        image.SetSpacing(*spacing)
        image.GetPointData().SetScalars(numpy_to_vtk(voxels.ravel(), deep=True))
        self.mapper = vtk.vtkFixedPointVolumeRayCastMapper()
        self.mapper.SetInputData(image)
        self.mapper.SetBlendModeToMaximumIntensity()
        self.mapper.SetAutoAdjustSampleDistances(False)
        self.mapper.SetInteractiveSampleDistance(STEP * min(spacing))
        self.mapper.SetSampleDistance(STEP * min(spacing))
        self.mapper.SetImageSampleDistance(1)
        self.mapper.SetNumberOfThreads(os.cpu_count())
        grey, opaque = vtk.vtkColorTransferFunction(), vtk.vtkPiecewiseFunction()
        for share in (0, 1):
            grey.AddRGBPoint(window[0] + (share - 0.5) * window[1], share, share, share)
            opaque.AddPoint(window[0] + (share - 0.5) * window[1], 1)
        look = vtk.vtkVolumeProperty()
        look.SetColor(grey)
        look.SetScalarOpacity(opaque)
        look.SetInterpolationTypeToLinear()
        look.ShadeOff()
        volume = vtk.vtkVolume()
        volume.SetMapper(self.mapper)
        volume.SetProperty(look)
        self.middle = numpy.array(volume.GetCenter())
        renderer = vtk.vtkRenderer()
        renderer.AddVolume(volume)
        self.camera = renderer.GetActiveCamera()
        self.window = vtk.vtkRenderWindow()
        self.window.SetOffScreenRendering(True)
        self.window.SetMultiSamples(0)
        self.window.SetSize(SIDE, SIDE)
        self.window.AddRenderer(renderer)
        self.renderer = renderer

    def look(self, header):
        self.camera.SetFocalPoint(*self.middle)
        self.camera.SetPosition(*(self.middle - header["eye_distance"] * numpy.array(header["forward"])))
        self.camera.SetViewUp(*header["up"])
        self.camera.SetViewAngle(30)
        self.renderer.ResetCameraClippingRange()

    def render(self):
        self.window.Render()

    def pixels(self):
        grab = vtk.vtkWindowToImageFilter()
        grab.SetInput(self.window)
        grab.ReadFrontBufferOff()
        grab.Update()
        scalars = grab.GetOutput().GetPointData().GetScalars()
        return numpy.array([scalars.GetTuple3(i)[0] for i in range(SIDE * SIDE)], "u1").reshape(SIDE, SIDE)[::-1]


class Clock:
    """Wall time of each run and processor time of all, of a process and its threads."""

    def __init__(self, process):
        self.process, self.walls, self.processor = process, [], 0

    def spent(self):
        with open(f"/proc/{self.process}/stat", encoding="ascii") as file:
            fields = file.read().rpartition(")")[2].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")

    def time(self, run):
        before, start = self.spent(), time.perf_counter()
        result = run()
        self.walls.append(time.perf_counter() - start)
        self.processor += self.spent() - before
        return result


def mean_difference(png, peer):
    ours = numpy.frombuffer(grey_pixels(png)[2], "u1").reshape(SIDE, SIDE)
    return float(numpy.mean(numpy.abs(ours.astype(int) - peer.pixels())))


def compare(program, path):
    with Server(program, path) as server, server.view() as view:
        peer = Vtk(path, view.opened()["window"])
        us, differences = server.process.pid, []
        for turn in range(ROUNDS + 1):
            if turn <= 1:  # the first round warms up
                clocks = {"zox-view, full picture": Clock(us), "zox-view, JPEG": Clock(us), "VTK": Clock(os.getpid())}
            for azimuth, elevation in VIEWS:
                fields = {"width": SIDE, "height": SIDE, "azimuth": azimuth, "elevation": elevation, "step": STEP}
                header, png = clocks["zox-view, full picture"].time(lambda: view.frame(**fields, **{"as": "png"}))
                clocks["zox-view, JPEG"].time(lambda: view.frame(**fields, **{"as": "jpeg"}))
                peer.look(header)
                clocks["VTK"].time(peer.render)
                if not turn:
                    differences.append(mean_difference(png, peer))
    return clocks, statistics.median(differences)


def main():
    print("| volume | contender | ms a picture | as many pictures as VTK | ms of processor time | as little as VTK |")
    print("|---|---|---:|---:|---:|---:|")
    for path in sys.argv[2:]:
        clocks, difference = compare(sys.argv[1], path)
        peer = clocks["VTK"]
        for name, clock in clocks.items():
            wall, processor = statistics.median(clock.walls), clock.processor / len(clock.walls)
            print(f"| {os.path.basename(path)} | {name} | {wall * 1000:.0f} | {statistics.median(peer.walls) / wall:.1f} |"
                  f" {processor * 1000:.0f} | {peer.processor / clock.processor:.1f} |")
        print(f"{os.path.basename(path)}: the pictures differ by {difference:.1f} of 255 in the mean.", file=sys.stderr)


main()
