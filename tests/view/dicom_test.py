"""Folders of DICOM files, named on the command line and opened from the page. Usage: dicom_test.py ZOX_VIEW"""
import os
import shutil
import sys
import tempfile
import unittest

from client import Server

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "..", "dicom"))
import make_series  # noqa: E402

ZOX_VIEW = sys.argv[1]


class Series(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)

    def path(self, *names):
        return os.path.join(self.folder, *names)

    def check_series(self, view, slices=16):
        """The voxels of make_series.py, where it has put them."""
        said = view.opened()
        self.assertEqual(said["do"], "volume", said)
        self.assertEqual(said["size"], [24, 20, slices])
        self.assertEqual([round(x, 9) for x in said["spacing"]], [1, 1, 1.5])
        self.assertEqual((said["lowest"], said["highest"]), (-500, 100 * (slices - 1) + 7 * 23 + 3 * 19 - 500))
        view.frame(width=101, height=101, projection="orthographic", center=f"{-50 + 10},{-60 + 5},{-70 + 1.5 * 7}",
                   slab="0,0", interpolation="nearest")
        found, _ = view.answer(view.ask("pick", x=50, y=50))
        self.assertEqual((found["voxel"], found["voxel_value"]), ([10, 5, 7], 100 * 7 + 7 * 10 + 3 * 5 - 500))
        return said

    def test_a_folder_that_is_a_series_is_shown(self):
        make_series.make(self.folder)
        with Server(ZOX_VIEW, self.folder) as server, server.view() as view:
            self.check_series(view)

    def test_the_largest_series_is_shown_and_the_other_on_demand(self):
        make_series.make(self.folder, "--series", "1", "--number", "1")
        make_series.make(self.folder, "--series", "2", "--number", "2", "--size", "24,20,12", "--seed", "2")
        with Server(ZOX_VIEW, self.folder) as server, server.view() as view:
            self.assertIn("series", " ".join(self.check_series(view)["notes"]))
        with Server(ZOX_VIEW, self.folder, "--series", "2") as server, server.view() as view:
            self.check_series(view, 12)

    def test_series_and_files_below_a_folder_are_opened_from_the_page(self):
        make_series.make(self.path("study", "thin"))
        make_series.make(self.path("frames"), "--multiframe", "--size", "24,20,12", "--series", "2")
        os.mkdir(self.path("empty"))
        with Server(ZOX_VIEW, self.folder) as server:
            for name, slices in (("", 16), ("study", 16), ("study/thin", 16), ("frames", 12), ("frames/frames.dcm", 12)):
                with self.subTest(name=name), server.view(file=name) as view:
                    self.check_series(view, slices)
            with server.view(file="empty") as view:
                said = view.opened()
                self.assertEqual(said["do"], "error")
                self.assertRegex(said["text"], r"^[^\n]+\.$")
            with server.view(file="study/thin") as view:
                self.check_series(view)

    def test_a_folder_without_images_is_refused(self):
        done = Server(ZOX_VIEW, self.folder)
        self.assertEqual(done.address, "")
        _, said = done.process.communicate(timeout=60)
        self.assertEqual(done.process.returncode, 1)
        self.assertRegex(said, r"^zox-view: [^\n]+\.\n$")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
