#!/usr/bin/env bash
# The demo: takes data/chart.png through a tour of what this build's kroconv offers, writes the
# results as PNG files into demo-out/ with one labelled contact sheet, and prints a table of
# operation, time, and the largest and mean difference against the original for round trips.
# usage: scripts/demo.sh BUILD_DIR   (as `make demo` runs it: scripts/demo.sh build/release)
set -euo pipefail
cd "$(dirname "$0")/.."
BUILD=${1:-build/release}
K=$BUILD/tools/kroconv
CHART=data/chart.png
OUT=demo-out
[ -x "$K" ] || { echo "demo: $K not built" >&2; exit 1; }
rm -rf "$OUT" && mkdir -p "$OUT/work"
W=$(head -c 24 "$CHART" | od -An -tu1 -j16 -N4 | awk '{print $3 * 256 + $4}')
H=$(head -c 24 "$CHART" | od -An -tu1 -j20 -N4 | awk '{print $3 * 256 + $4}')

ROWS=()
SHEET=("chart=$CHART")

# has SUBCOMMAND: whether this build offers it (the help lists only what exists).
has() { "$K" --help | grep -q "^  $1 "; }

# m420 WAY: the 4:2:0 matrices this build has for WAY (to, from), as the convert help lists them.
m420() {
  "$K" convert --help | awk -v way="$1" '/^4:2:0 matrices/ { on = 1; next }
    on && /^  / { if ($2 == "both" || $2 == way) print $1; next } { on = 0 }'
}

# sum A B: A + B for the table's times.
sum() { awk -v a="$1" -v b="$2" 'BEGIN { print a + b }'; }

# run LABEL COMMAND...: runs kroconv, keeps the time in ms in $MS.
run() {
  local t0 t1
  t0=$(date +%s%N)
  "$K" "$@"
  t1=$(date +%s%N)
  MS=$(awk -v a="$t0" -v b="$t1" 'BEGIN { printf "%.1f", (b - a) / 1e6 }')
}

# row OPERATION MS [A B]: a table line, with the difference of A and B when given.
row() {
  local diff="-"
  if [ $# -ge 4 ]; then diff=$("$K" compare "$3" "$4" | awk '{printf "%5s %8s", $2, $4}'); else diff=$(printf '%5s %8s' - -); fi
  ROWS+=("$(printf '%-44s %8s  %s' "$1" "$2" "$diff")")
}

# 1. Container round trip: PNG -> PPM -> PNG.
run convert "$CHART" "$OUT/work/chart.ppm"; a=$MS
run convert "$OUT/work/chart.ppm" "$OUT/png-ppm-png.png"; b=$MS
row "PNG -> PPM -> PNG" "$(sum "$a" "$b")" "$CHART" "$OUT/png-ppm-png.png"
SHEET+=("png-ppm-png=$OUT/png-ppm-png.png")

# 2. One channel as grey: the luma source for the layout tour.
run convert "$CHART" "$OUT/green.png" --channel g
row "green channel as grey" "$MS"
SHEET+=("green=$OUT/green.png")

# 3. 4:2:0 layouts: grey as luma with neutral chroma, through every 4:2:0 layout and Y4M.
total=0
prev=$OUT/green.png; from=()
for l in i420 nv12 nv21 yv12; do
  run convert "$prev" "$OUT/work/chart.$l" "${from[@]}" --to "$l" ${from:+--size ${W}x$H}
  total=$(sum "$total" "$MS")
  prev=$OUT/work/chart.$l; from=(--from "$l" --size "${W}x$H")
done
run convert "$prev" "$OUT/work/chart.y4m" "${from[@]}"; total=$(sum "$total" "$MS")
run convert "$OUT/work/chart.y4m" "$OUT/layouts-420.png" --luma; total=$(sum "$total" "$MS")
row "grey -> I420 -> NV12 -> NV21 -> YV12 -> Y4M" "$total" "$OUT/green.png" "$OUT/layouts-420.png"
SHEET+=("420 layouts=$OUT/layouts-420.png")
run convert "$OUT/work/chart.nv12" "$OUT/nv12-planes.png" --from nv12 --size "${W}x$H" --planes
row "NV12 plane view" "$MS"
SHEET+=("nv12 planes=$OUT/nv12-planes.png")

# 4. 4:2:2 packed and planar.
run convert "$OUT/green.png" "$OUT/work/chart.i422" --to i422; total=$MS
run convert "$OUT/work/chart.i422" "$OUT/work/chart.yuy2" --from i422 --to yuy2 --size "${W}x$H"; total=$(sum "$total" "$MS")
run convert "$OUT/work/chart.yuy2" "$OUT/work/chart.uyvy" --from yuy2 --to uyvy --size "${W}x$H"; total=$(sum "$total" "$MS")
run convert "$OUT/work/chart.uyvy" "$OUT/layouts-422.png" --from uyvy --size "${W}x$H" --luma; total=$(sum "$total" "$MS")
row "grey -> I422 -> YUY2 -> UYVY" "$total" "$OUT/green.png" "$OUT/layouts-422.png"
SHEET+=("422 layouts=$OUT/layouts-422.png")

# Colour models this build has (the convert help lists them), each as a full-resolution 4:4:4
# round trip and as a strip of its three channels.
# (Matrices marked "only" decode and are skipped here.)
for m in $("$K" convert --help | awk '/^colour matrices/ { on = 1; next } on && /^  / && !/only/ { print $1 } on && !/^  / { on = 0 }'); do
  run convert "$CHART" "$OUT/work/chart-$m.yuv" --to i444 --matrix "$m"; a=$MS
  run convert "$OUT/work/chart-$m.yuv" "$OUT/rgb-$m-rgb.png" --from i444 --size "${W}x$H" --matrix "$m"
  row "RGB -> $m 4:4:4 -> RGB" "$(sum "$a" "$MS")" "$CHART" "$OUT/rgb-$m-rgb.png"
  SHEET+=("rgb-$m-rgb=$OUT/rgb-$m-rgb.png")
  if has model; then
    run model "$CHART" "$OUT/model-$m.png" --to "$m" --layout packed
    row "model $m (channels as R,G,B)" "$MS"
    SHEET+=("$m as rgb=$OUT/model-$m.png")
  fi
done

# Gamma: the transfer curve and back (8-bit tables, so the way back is within a step or two).
if has gamma; then
  run gamma "$CHART" "$OUT/gamma-fwd.png"; a=$MS
  run gamma "$OUT/gamma-fwd.png" "$OUT/gamma-roundtrip.png" --inverse
  row "gamma forward -> inverse" "$(sum "$a" "$MS")" "$CHART" "$OUT/gamma-roundtrip.png"
  SHEET+=("gamma=$OUT/gamma-fwd.png")
fi

# 4:2:0 colour: RGB to I420 and NV12 (chroma averaged over 2x2 blocks) and back, with every
# matrix this build has both ways; NV12 goes through the two-plane exports where they exist.
for m in $(m420 to); do
  m420 from | grep -qx "$m" || continue
  for l in i420 nv12; do
    run convert "$CHART" "$OUT/work/chart-$m.$l" --to $l --matrix "$m"; a=$MS
    run convert "$OUT/work/chart-$m.$l" "$OUT/420-$m-$l.png" --from $l --size "${W}x$H" --matrix "$m"
    row "RGB -> $m $(echo $l | tr a-z A-Z) -> RGB" "$(sum "$a" "$MS")" "$CHART" "$OUT/420-$m-$l.png"
    SHEET+=("$m $l=$OUT/420-$m-$l.png")
  done
done

# Dithering: the chart reduced to a few levels per channel.
if has dither; then
  for d in "floyd 2" "bayer 2" "stucki 4" "jjn 8"; do
    set -- $d
    run dither "$CHART" "$OUT/dither-$1-$2.png" --kind "$1" --levels "$2"
    row "dither $1, $2 levels" "$MS"
    SHEET+=("$1 $2 levels=$OUT/dither-$1-$2.png")
  done
  run dither "$CHART" "$OUT/dither-floyd-2-noise.png" --kind floyd --levels 2 --noise 30
  row "dither floyd, 2 levels, noise 30" "$MS"
  SHEET+=("floyd noise 30=$OUT/dither-floyd-2-noise.png")
fi

# 5. Bayer mosaic of the colour chart, shown as a grey plane, and demosaiced back with every
# method this build has.
run convert "$CHART" "$OUT/work/chart-rggb.raw" --to bayer --grid rggb; a=$MS
run convert "$OUT/work/chart-rggb.raw" "$OUT/bayer-rggb.png" --from bayer --size "${W}x$H"
row "RGB -> RGGB mosaic (shown as grey)" "$(sum "$a" "$MS")"
SHEET+=("rggb mosaic=$OUT/bayer-rggb.png")
if has demosaic; then
  for meth in $("$K" demosaic --help | awk '/^methods/ { on = 1; next } on && /^  / { print $1; next } { on = 0 }'); do
    run demosaic "$OUT/work/chart-rggb.raw" "$OUT/demosaic-$meth.png" --size "${W}x$H" --grid rggb --method "$meth"
    row "RGGB mosaic -> RGB, $meth" "$MS" "$CHART" "$OUT/demosaic-$meth.png"
    SHEET+=("demosaic $meth=$OUT/demosaic-$meth.png")
  done
fi

# Contact sheet.
run sheet "$OUT/contact-sheet.png" --columns 5 --title "KROCC $("$K" --version | grep -o "[0-9]*\.[0-9]*\.[0-9]*" | head -1) DEMO" "${SHEET[@]}"
row "contact sheet" "$MS"
rm -rf "$OUT/work"

printf '%-44s %8s  %5s %8s\n' "operation" "ms" "max" "mean"
printf '%s\n' "${ROWS[@]}"
echo
echo "demo: $(ls "$OUT"/*.png | wc -l) PNG files in $OUT/, contact sheet $OUT/contact-sheet.png"
