#!/bin/sh
# Builds and runs every example by the commands at its head; the pictures go into a folder.
# Usage: run.sh FOLDER
set -eu
here=$(cd "$(dirname "$0")" && pwd)
cd "$1"
# shellcheck disable=SC2046  # several flags
cc "$here/blocked_picture.c" -o blocked_picture $(pkg-config --cflags --libs zox_volume) -lm
./blocked_picture knot.pgm
# shellcheck disable=SC2046
c++ -std=c++17 "$here/uneven_stack.cpp" -o uneven_stack $(pkg-config --cflags --libs zox_volume) -pthread
./uneven_stack rings.pgm
python3 "$here/numpy_to_png.py" spiral.png
python3 "$here/run_notebook.py" "$here/notebook.ipynb" notebook
