#!/usr/bin/env bash
# The examples in Python run on what was installed, and draw pictures.
# Usage: python.sh EXAMPLES INSTALLED
# shellcheck source=tests/package/common.sh
. "$(dirname "$0")/../package/common.sh"
python=/usr/bin/python3
if ! "$python" -c 'import numpy' 2>/dev/null; then
  echo "no NumPy here"
  exit 77
fi
PYTHONPATH=$(dirname "$(find "$2" -type d -path '*-packages/zox_volume')")
export PYTHONPATH
cd "$scratch"
run "$python" "$1/numpy_to_png.py" spiral.png
grep -q "121, 121) voxels, the brightest pixel at" "$log" || complain "numpy_to_png.py prints: $(cat "$log")"
run "$python" "$1/run_notebook.py" "$1/notebook.ipynb" notebook
for picture in spiral notebook-1 notebook-2 notebook-3; do
  [ "$(head -c 4 $picture.png | tail -c 3)" = PNG ] || complain "$picture.png is no PNG"
  [ "$(wc -c <$picture.png)" -gt 3000 ] || complain "$picture.png is nearly empty"
done
