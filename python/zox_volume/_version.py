"""The version of the package, which is that of the libraries it belongs to."""

VERSION = "11.1.0"
