#!/bin/bash
# tools/make_doc_pictures.sh: draws every picture of docs/ and of the user guide anew with the program itself.
#
# Wants a build (build/native/bin or build/windows/bin for the console, build/windows/bin for the window),
# ImageMagick to make the pictures small, Wine for the window and Chromium for the web page. What there is no
# program for is left as it is, and said.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
if [ "${1:-}" != --inside ]; then
    if [ -x build/windows/bin/Skyvault.exe ] && command -v wine >/dev/null; then
        exec tools/wine-environment.sh "$0" --inside
    fi
    echo "No Skyvault.exe or no Wine: pictures of the window stay as they are." >&2
fi

if [ -x build/native/bin/skyvault-cli ]; then
    program=("$root/build/native/bin/skyvault-cli")
else
    program=(wine "$root/build/windows/bin/skyvault-cli.exe")
fi
work=$(mktemp -d build/pictures.XXXXXX)
trap 'rm -rf "$work"' EXIT
layouts=docs/images/layouts
guide=Media/Guide/images
mkdir -p "$layouts" "$guide"
lake="Media/Examples/Mountain lake.jpg"
card="Media/Examples/Test card.png"

# console ARGUMENT...: the console program, in silence.
console() { "${program[@]}" "$@" -q; }
# small FROM WIDTHxHEIGHT TO: fits a picture into this size.
small() { convert "$1" -resize "$2" -strip -sampling-factor 4:2:0 -quality 80 "$3"; }

# A longer lens than the default one.
lens=(--set PreviewFOV=0.5)

echo "== layouts"
console convert --from equirectangular --to dds "$card" "$work/card.dds"
console convert --from equirectangular --to qtvr "$lake" "$work/lake.mov"
for picture in lake card; do
    for layout in equirectangular horizontal-cross vertical-cross strip strip-xyz sphere-map mirror-ball heart \
        interior-strip interior-square preview; do
        options=()
        size=400x400
        case $layout in
            equirectangular | preview) size=640x640 ;;
            *cross) size=480x480 ;;
            *strip*) size=960x960 ;;
        esac
        [ $layout != preview ] || options=("${lens[@]}" --camera 25,-5,0)
        console convert --from equirectangular --to $layout "${options[@]}" "${!picture}" "$work/$layout.bmp"
        small "$work/$layout.bmp" $size "$layouts/$layout-$picture.jpg"
    done
done
# The files that hold no one picture, as they are read back: the items of the cube map in the file's order,
# and the movie as players open it, 70° high.
console convert --from dds --to strip-xyz "$work/card.dds" "$work/dds.bmp"
small "$work/dds.bmp" 960x960 "$layouts/dds-card.jpg"
console convert --from qtvr --to preview --set PreviewFOV=0.4017 "$work/lake.mov" "$work/qtvr.bmp"
small "$work/qtvr.bmp" 640x640 "$layouts/qtvr-lake.jpg"

echo "== guide"
for layout in equirectangular horizontal-cross vertical-cross strip strip-xyz sphere-map mirror-ball heart \
    interior-strip interior-square preview; do
    small "$layouts/$layout-lake.jpg" 300x180 "$guide/$layout.jpg"
done
# before-and-after NAME LAYOUT TO-OPTIONS -- OPTIONS: two small pictures.
before_and_after() {
    local name=$1 layout=$2
    shift 2
    local common=()
    while [ "$1" != -- ]; do
        common+=("$1")
        shift
    done
    shift
    console convert --from equirectangular --to "$layout" "${common[@]}" "$lake" "$work/before.bmp"
    console convert --from equirectangular --to "$layout" "${common[@]}" "$@" "$lake" "$work/after.bmp"
    small "$work/before.bmp" 360x360 "$guide/$name-before.jpg"
    small "$work/after.bmp" 360x360 "$guide/$name-after.jpg"
}
before_and_after level equirectangular --turn 0,0,10 -- --turn 0,0,-10
before_and_after horizon equirectangular -- --horizon 1.6
before_and_after logo preview "${lens[@]}" --camera 0,90,0 -- --logo-size 0.3
before_and_after mirror equirectangular -- --mirror-top-to-bottom

generate() {
    local name=$1 kind=$2 palette=$3
    shift 3
    console generate "$kind" --palette "Media/Examples/$palette" --seed 7 --to equirectangular "$@" \
        "$work/$name.bmp"
    small "$work/$name.bmp" 300x180 "$guide/$name.jpg"
}
generate voronoi voronoi "Palette sunset.png" --set VoronoiPoints=60 --set VoronoiBorder=0.006
generate blobs blobs "Palette sunset.png" --set BlobsContrast=0
generate rectangles rectangles "Palette neon.png" --set BlobsForceFields=60
generate fractal-planet fractal-planet "Palette planet.png"
generate dots-of-light dots-of-light "Palette neon.png" --set LightsBrightness=0.04
for solid in tetrahedron octahedron dodecahedron icosahedron; do
    generate $solid $solid "Texture tiles.png" --set PolyhedraBorder=0.03
done
generate hexahedron hexahedron "Texture dice, 6 frames.png" --set PolyhedraFrames=6 \
    --set PolyhedraTextureScale=0.6 --set PolyhedraBorder=0.03
generate football football "Texture football, 2 frames.png" --set PolyhedraFrames=2

if command -v chromium >/dev/null; then
    echo "== web page"
    mkdir "$work/page"
    console convert --from equirectangular --to html --set Resolution1=3 "$lake" "$work/page/lake.jpg"
    chromium --headless=new --no-sandbox --use-gl=angle --use-angle=swiftshader --enable-unsafe-swiftshader \
        --user-data-dir="$root/$work/browser" --no-first-run --virtual-time-budget=8000 \
        --window-size=960,540 --screenshot="$root/$work/page.png" "file://$root/$work/page/lake.html" \
        >/dev/null 2>&1
    small "$work/page.png" 640x640 "$layouts/html-lake.jpg"
    small "$work/page.png" 300x180 "$guide/html.jpg"
else
    echo "No Chromium: the picture of the web page stays as it is." >&2
fi

if [ "${1:-}" = --inside ]; then
    echo "== window"
    # The window straight away in the size of the pictures, so that its texts stay readable.
    settings="$WINEPREFIX/drive_c/users/$(whoami)/AppData/Roaming/Brambleworks Studio/Skyvault"
    mkdir -p "$settings"
    printf 'WindowRect\t40\t40\t1140\t720\r\n' >"$settings/Skyvault.txt"
    tools/window-pictures.sh "$work"
    for view in equirectangular preview heart; do
        small "$work/window-$view.png" 1100x1100 docs/images/window-$view.jpg
    done
    small "$work/window-single-files.png" 900x900 "$layouts/single-files-lake.jpg"
    small "$work/single-files.png" 300x180 "$guide/single-files.jpg"
    small "$work/window-equirectangular.png" 900x900 "$guide/window.jpg"
    small "$work/window-crosshair.png" 900x900 "$guide/crosshair.jpg"
    for shot in menu options batch; do
        [ -f "$work/$shot.png" ] || continue
        convert "$work/$shot.png" -strip -colors 256 "$guide/$shot.png"
    done
fi
du -ch "$layouts" "$guide" docs/images/window-*.jpg | tail -1
