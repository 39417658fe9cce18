#!/usr/bin/env bash
# Makes the pictures of README.md, docs/pictures, from what ./run.sh has left in build: tools/pictures.sh
# The report is that of the same job, run where its files have names without folders. Needs Debian's package chromium.
set -euo pipefail
. "$(dirname "$0")/../cmake/setup.sh"
cd "$root"
bin=build/mingw-x64-release/bin
for file in build/out/before.png build/out/after.png "$bin/filterhost.exe"; do
  [ -e "$file" ] || fail "there is no $file; call ./run.sh first"
done
command -v chromium >/dev/null || fail "there is no chromium"
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cp build/mingw-x64-release/samples/sample.xps "$folder"
(
  cd "$folder"
  "$root/cmake/wine-run.sh" "$root/$bin/filterhost.exe" run sample.xps -o turned.xps --device longedge --json report.json \
    --quiet </dev/null
  "$python" "$root/tools/report/makereport.py" report.json -o report.html
  chromium --headless --no-sandbox --disable-gpu --hide-scrollbars --user-data-dir="$folder/profile" \
    --screenshot="$folder/report.png" --window-size=1280,1000 --virtual-time-budget=5000 "file://$folder/report.html" \
    >/dev/null 2>&1
)
mkdir -p docs/pictures
"$python" - "$folder/report.png" <<'PYTHON'
import sys

from PIL import Image

# The name, and how many pixels and colours are enough.
for name, path, size, colors in (("before", "build/out/before.png", 640, 192), ("after", "build/out/after.png", 640, 192),
                                 ("report", sys.argv[1], 1280, 64)):
    with Image.open(path) as picture:
        picture = picture.convert("RGB")
        picture.thumbnail((size, size), Image.Resampling.LANCZOS)
        picture.quantize(colors).save(f"docs/pictures/{name}.png", optimize=True)
PYTHON
step "docs/pictures: $(du -cb docs/pictures/*.png | tail -n 1 | cut -f 1) bytes"
