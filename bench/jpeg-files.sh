#!/bin/bash
# What a JPEG costs: processor seconds of a whole conversion from JPEG to JPEG beside those of libjpeg's own tools and of
# the same conversion between plain BMP files; and wall seconds of describing a small one. Rounds take turns; the least
# of each is printed.
#   bench/jpeg-files.sh IN.jpg [ROUNDS]      SKYVAULT_CLI: the program, by default the native build's
set -euo pipefail
program=$(realpath "${SKYVAULT_CLI:-build/native/bin/skyvault-cli}")
source=$(realpath "$1") rounds=${2:-7}
folder=$(mktemp -d -p /dev/shm)
trap 'rm -r "$folder"' EXIT
cd "$folder"

# measure NAME COMMAND...: appends "NAME processor wall".
measure() {
    local name=$1 TIMEFORMAT="$1 %U %S %R"
    shift
    { time "$@" >/dev/null; } 2>>times
}
turn() {
    "$program" convert --quiet --threads 1 --from equirectangular --to equirectangular --turn 30,20,10 \
        --set Antialiasing=N --set Resolution1=6 "$@"
}

djpeg -bmp -outfile in.bmp "$source"
turn in.bmp out.bmp
convert out.bmp -resize 64x32! small.jpg
for ((round = 0; round < rounds; ++round)); do
    measure jpeg-to-jpeg turn --quality 90 "$source" out.jpg
    measure djpeg djpeg -bmp -outfile decoded.bmp "$source"
    measure bmp-to-bmp turn in.bmp out.bmp
    measure cjpeg cjpeg -quality 90 -outfile encoded.jpg out.bmp
    measure info "$program" info small.jpg
    measure convert-small "$program" convert --quiet --from equirectangular --to equirectangular small.jpg small-out.jpg
done
awk '{ p = $2 + $3; if (!($1 in least) || p < least[$1]) least[$1] = p
       if (!($1 in wall) || $4 < wall[$1]) wall[$1] = $4 }
     END { for (name in least) printf "%s: processor %.3f s, wall %.3f s\n", name, least[name], wall[name]
           sum = least["djpeg"] + least["bmp-to-bmp"] + least["cjpeg"]
           printf "jpeg-to-jpeg / (djpeg + bmp-to-bmp + cjpeg): %.2f\n", least["jpeg-to-jpeg"] / sum }' times
lscpu | sed -n 's/^Model name: */processor: /p'
