"""ZOX Volume for Python: exact ray casting through scalar volumes, on NumPy arrays.

kernels: every operation of the kernel library, arrays in, planes out.
"""

from . import kernels
from ._version import VERSION as __version__

__all__ = ["__version__", "kernels"]
