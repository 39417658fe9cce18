#!/usr/bin/env bash
# Makes the pictures of README.md, docs/pictures, from what ./run.sh has left in build/out: tools/pictures.sh
set -euo pipefail
. "$(dirname "$0")/../cmake/setup.sh"
cd "$root"
for name in before after; do
  [ -e "build/out/$name.png" ] || fail "there is no build/out/$name.png; call ./run.sh first"
done
mkdir -p docs/pictures
"$python" - <<'PYTHON'
from PIL import Image

for name in ("before", "after"):
    with Image.open(f"build/out/{name}.png") as sheet:
        sheet = sheet.convert("RGB")
        sheet.thumbnail((640, 640), Image.Resampling.LANCZOS)
        sheet.quantize(64).save(f"docs/pictures/{name}.png", optimize=True)
PYTHON
step "docs/pictures: $(du -cb docs/pictures/*.png | tail -n 1 | cut -f 1) bytes"
