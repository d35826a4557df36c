import os
import tempfile

from hypothesis import settings
from hypothesis.configuration import set_hypothesis_home_dir

# ZOX_TEST_SCALE: how many times as many examples. The same walk each time, so that a failure is a change's and not luck's; nothing is kept beside the tests.
settings.register_profile(
    "tree",
    deadline=None,
    derandomize=True,
    database=None,
    max_examples=max(1, int(40 * float(os.environ.get("ZOX_TEST_SCALE", 1)))),
)
settings.load_profile("tree")
set_hypothesis_home_dir(tempfile.gettempdir() + "/hypothesis")
