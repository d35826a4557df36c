"""Files that are opened from the page, and what becomes of it when their reader is ended. Usage:
reading_test.py ZOX_VIEW"""
import contextlib
import os
import signal
import sys
import tempfile
import time
import unittest

import phantom
from client import PATIENCE, Server

ZOX_VIEW = sys.argv[1]


class Files(unittest.TestCase):
    def test_folder_files_are_opened_and_no_others(self):
        with tempfile.TemporaryDirectory() as folder:
            inside = os.path.join(folder, "in", "sub")
            os.makedirs(inside)
            phantom.write_nrrd(os.path.join(folder, "in", "one.nrrd"), 7)
            phantom.write_nrrd(os.path.join(inside, "two.nrrd"), 9)
            phantom.write_nrrd(os.path.join(folder, "outside.nrrd"), 11)
            os.symlink("../outside.nrrd", os.path.join(folder, "in", "link.nrrd"))
            with open(os.path.join(folder, "in", "broken.nrrd"), "w", encoding="ascii") as file:
                file.write("NRRD0004\n")
            with Server(ZOX_VIEW, os.path.join(folder, "in")) as server:
                self.check_folder(server)

    def check_folder(self, server):
        with server.view() as view:
            self.assertEqual(view.opened(), {"do": "no volume", "folder": True})
            view.ask("files")
            entries = view.hear()[0]["entries"]
            self.assertEqual([(entry["name"], entry["folder"]) for entry in entries],
                             [("sub", True), ("broken.nrrd", False), ("link.nrrd", False), ("one.nrrd", False)])
            for name in ("..", "../", "sub/../..", "/", "/etc", "%00", "sub\0"):
                view.ask("files", folder=name)
                self.assertEqual(view.hear()[0]["do"], "error", name)
        for name, most in (("one.nrrd", 7), ("sub/two.nrrd", 9), ("sub/../one.nrrd", 7)):
            with server.view(file=name) as view:
                self.assertEqual(view.opened()["highest"], most)
        for name in ("link.nrrd", "../outside.nrrd", "sub/../../outside.nrrd", "/etc/passwd", "no.nrrd", "broken.nrrd",
                     "one.nrrd\0", "x" * 3000):
            with server.view(file=name) as view:
                said = view.opened()
                self.assertEqual(said["do"], "error", name)
                self.assertRegex(said["text"], r"^[^\n]+\.$")

    def test_a_file_alone_opens_no_other(self):
        with tempfile.TemporaryDirectory() as folder:
            one, two = (os.path.join(folder, name) for name in ("one.nrrd", "two.nrrd"))
            phantom.write_nrrd(one, 7)
            phantom.write_nrrd(two, 9)
            with Server(ZOX_VIEW, one) as server:
                with server.view() as view:
                    self.assertEqual(view.opened()["highest"], 7)
                with server.view(file=two) as view:
                    self.assertEqual(view.opened()["do"], "error")


def children_of(process):
    """Numbers of the processes that a process has started and that have not ended."""
    children = []
    for name in filter(str.isdigit, os.listdir("/proc")):
        with contextlib.suppress(OSError), open(f"/proc/{name}/stat", encoding="ascii", errors="replace") as file:
            state, parent = file.read().rpartition(")")[2].split()[:2]
            if int(parent) == process and state not in "ZX":
                children.append(int(name))
    return children


def wait_for_children(process):
    deadline = time.monotonic() + PATIENCE
    while not (children := children_of(process)):
        if time.monotonic() > deadline:
            raise TimeoutError("no process reads")
    return children


class Readers(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        phantom.write_nrrd(os.path.join(self.folder.name, "small.nrrd"), 7)
        phantom.write_packed_zeros(os.path.join(self.folder.name, "large.nrrd"), 512)
        self.server = Server(ZOX_VIEW, self.folder.name)
        self.addCleanup(self.server.__exit__)
        self.keeper, = children_of(self.server.process.pid)

    def check_failure(self, view, name):
        said = view.opened()
        self.assertEqual(said["do"], "error", said)
        self.assertRegex(said["text"], rf"^[^\n]*{name}[^\n]* ended[^\n]*\.$")

    def test_a_reader_that_is_ended_takes_nothing_with_it(self):
        with self.server.view(file="small.nrrd") as old:
            self.assertEqual(old.opened()["highest"], 7)
            for generation in range(2):  # who keeps the file's voxels, and who takes the file apart
                with self.subTest(generation=generation), self.server.view(file="large.nrrd") as view:
                    reader, = wait_for_children(self.keeper)
                    if generation:
                        reader, = wait_for_children(reader)
                    os.kill(reader, signal.SIGKILL)
                    self.check_failure(view, "large.nrrd")
                with self.server.view(file="small.nrrd") as view:
                    self.assertEqual(view.opened()["highest"], 7)
            self.assertEqual(old.frame(width=10, height=10)[0]["do"], "frame")

    def test_when_nobody_is_left_to_read_open_views_go_on(self):
        with self.server.view(file="small.nrrd") as old:
            self.assertEqual(old.opened()["highest"], 7)
            os.kill(self.keeper, signal.SIGKILL)
            for _ in range(2):
                with self.server.view(file="large.nrrd") as view:
                    self.check_failure(view, "large.nrrd")
            self.assertEqual(old.frame(width=10, height=10)[0]["do"], "frame")
        self.assertEqual(self.server.end()[0], 0)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
