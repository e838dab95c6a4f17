#!/usr/bin/env bash
# Tests for kroconv, one case per CTest entry: kroconv_tests.sh KROCONV WORKDIR CASE
# Inputs are made here with printf and head; raw round trips are checked byte for byte.
set -u
export LC_ALL=C  # awk's printf "%c" writes single bytes
K=$1
W=$2/$3
CASE=$3
rm -rf "$W" && mkdir -p "$W" && cd "$W" || exit 99

fail() { echo "FAIL ($CASE): $*" >&2; exit 1; }

# expect_error CODE PATTERN OUTPUT -- kroconv args...: exit code, one-line message naming the
# problem, no output file and no temporary left behind.
expect_error() {
  local code=$1 pattern=$2 out=$3
  shift 4
  "$K" "$@" >stdout.txt 2>stderr.txt
  local got=$?
  [ "$got" -eq "$code" ] || fail "exit $got, wanted $code for: $*; stderr: $(cat stderr.txt)"
  [ "$(wc -l <stderr.txt)" -eq 1 ] || fail "wanted one line on stderr, got: $(cat stderr.txt)"
  grep -q -- "$pattern" stderr.txt || fail "message '$(cat stderr.txt)' does not name '$pattern'"
  if [ -n "$out" ]; then
    [ ! -e "$out" ] || fail "output $out left behind"
    ls "$out".kroconv-* >/dev/null 2>&1 && fail "temporary file left behind"
  fi
  return 0
}

ok() { "$K" "$@" 2>stderr.txt || fail "kroconv $* failed: $(cat stderr.txt)"; }

# bytes N SEED: N pseudo-random bytes (a fixed linear congruential sequence).
bytes() {
  awk -v n="$1" -v s="$2" 'BEGIN { for (i = 0; i < n; i++) { s = (s * 1103515245 + 12345) % 2147483648; printf "%c", int(s / 65536) % 256 } }'
}

# ppm W H: a P6 image with pseudo-random pixels; pgm likewise for P5.
ppm() { printf 'P6\n%d %d\n255\n' "$1" "$2"; bytes $(($1 * $2 * 3)) 7; }
pgm() { printf 'P5\n%d %d\n255\n' "$1" "$2"; bytes $(($1 * $2)) 11; }

# frame_bytes LAYOUT W H
frame_bytes() {
  local l=$1 w=$2 h=$3 cw ch
  case $l in
    i420|yv12|nv12|nv21) cw=$(((w + 1) / 2)); ch=$(((h + 1) / 2)) ;;
    i422|yuy2|uyvy) cw=$(((w + 1) / 2)); ch=$h ;;
    i411) cw=$(((w + 3) / 4)); ch=$h ;;
    i444) cw=$w; ch=$h ;;
  esac
  echo $((w * h + 2 * cw * ch))
}

# chain LAYOUT... over a raw file of the first layout: through every layout and back to the
# first, which must give the same bytes.
chain() {
  local w=$1 h=$2; shift 2
  local first=$1 prev=$1 n
  n=$(frame_bytes "$first" "$w" "$h")
  bytes $((n * 2)) 3 >start.raw   # two frames
  cp start.raw "cur.$prev"
  for l in "$@" "$first"; do
    ok convert "cur.$prev" "next.$l" --from "$prev" --to "$l" --size "${w}x$h"
    [ "$(stat -c %s "next.$l")" -eq $((n * 2)) ] || fail "$prev -> $l wrote a wrong size"
    mv "next.$l" "cur.$l"
    prev=$l
  done
  cmp -s start.raw "cur.$first" || fail "round trip through $* changed bytes at ${w}x$h"
}

# m420 WAY: the 4:2:0 matrices this build has for WAY (to: RGB to 4:2:0, from: back), as the
# convert help lists them.
m420() {
  "$K" convert --help | awk -v way="$1" '/^4:2:0 matrices/ { on = 1; next }
    on && /^  / { if ($2 == "both" || $2 == way) print $1; next } { on = 0 }'
}

# offered SUBCOMMAND: whether the help lists it; without it, the subcommand must be unknown.
offered() {
  "$K" --help | grep -q "^  $1 " && return 0
  expect_error 1 "unknown subcommand '$1'" "" -- "$1" a b
  return 1
}

# samples FILE N: the last N bytes of FILE as decimal numbers, one per line.
samples() { tail -c "$2" "$1" | od -An -tu1 -v -w1 | awk '{print $1}'; }

# blocks W H: a P6 image whose 2x2 blocks are each one moderate colour (64..191), so that 4:2:0
# loses nothing but the matrix's rounding.
blocks() {
  printf 'P6\n%d %d\n255\n' "$1" "$2"
  bytes $((($1 + 1) / 2 * ($2 + 1) / 2 * 3)) 13 | od -An -tu1 -v -w1 |
    awk -v w="$1" -v h="$2" '{ c[n++] = 64 + $1 % 128 } END {
      cw = int((w + 1) / 2)
      for (y = 0; y < h; y++) for (x = 0; x < w; x++) for (k = 0; k < 3; k++)
        printf "%c", c[(int(y / 2) * cw + int(x / 2)) * 3 + k] }'
}

# flat W H R G B [MAX]: a P6 image of one colour; MAX 65535 writes 16-bit samples.
flat() {
  awk -v w="$1" -v h="$2" -v r="$3" -v g="$4" -v b="$5" -v m="${6:-255}" 'BEGIN {
    printf "P6\n%d %d\n%d\n", w, h, m
    for (i = 0; i < w * h; i++) for (k = 0; k < 3; k++) {
      v = k == 0 ? r : k == 1 ? g : b
      if (m > 255) printf "%c%c", int(v / 256), v % 256; else printf "%c", v } }'
}

case $CASE in
  help)
    "$K" --help >out.txt || fail "--help failed"
    for c in convert compare sheet; do grep -q "^  $c " out.txt || fail "--help lacks $c"; done
    "$K" convert --help | grep -q nv21 || fail "convert --help lacks the layouts"
    "$K" --version | grep -q '[0-9]\.[0-9]' || fail "--version prints no version"
    ;;
  unknown_command) expect_error 1 "unknown subcommand 'frobnicate'" "" -- frobnicate ;;
  unknown_option)
    ppm 4 4 >a.ppm
    expect_error 1 "unknown option --bogus" out.png -- convert a.ppm out.png --bogus 3
    expect_error 1 "--size needs a value" out.raw -- convert a.raw out.raw --from i420 --size
    ;;
  missing_file)
    expect_error 2 "cannot open nothere.png" out.ppm -- convert nothere.png out.ppm
    expect_error 2 "cannot open nothere.yuv" out.y4m -- convert nothere.yuv out.y4m --from nv12 --size 4x4
    ;;
  unreadable_file)
    mkdir adir.png
    expect_error 2 "adir.png" out.ppm -- convert adir.png out.ppm
    ;;
  bad_png)
    printf 'not a png at all' >bad.png
    expect_error 3 "bad.png: not a readable PNG" out.ppm -- convert bad.png out.ppm
    ppm 16 16 >a.ppm && ok convert a.ppm good.png
    head -c 100 good.png >cut.png
    expect_error 3 "cut.png" out.ppm -- convert cut.png out.ppm
    printf 'P6\n4 4\n255\n' >short.ppm && bytes 20 1 >>short.ppm
    expect_error 3 "short.ppm: truncated" out.png -- convert short.ppm out.png
    ;;
  pnm_roundtrip)
    ppm 7 5 >a.ppm
    ok convert a.ppm b.pnm && ok convert b.pnm c.ppm
    cmp -s a.ppm c.ppm || fail "PPM copy changed bytes"
    printf 'P5\n# comment\n3 2\n65535\n' >w.pgm && bytes 12 5 >>w.pgm
    ok convert w.pgm w2.pgm
    cmp -s <(tail -c 12 w.pgm) <(tail -c 12 w2.pgm) || fail "16-bit PGM samples changed"
    head -3 w2.pgm | tail -1 | grep -q '^65535$' || fail "16-bit PGM maxval"
    ok convert w2.pgm w3.pgm && cmp -s w2.pgm w3.pgm || fail "16-bit PGM copy changed bytes"
    expect_error 1 "goes to .pgm" g.ppm -- convert w.pgm g.ppm
    ;;
  png_roundtrip)
    for s in "1 1" "13 7" "64 3"; do
      set -- $s
      ppm "$1" "$2" >a.ppm
      ok convert a.ppm a.png && ok convert a.png b.ppm
      cmp -s a.ppm b.ppm || fail "PPM -> PNG -> PPM changed bytes at $1x$2"
      "$K" compare a.png b.ppm | grep -q '^max 0 mean 0.0000$' || fail "compare of equal images"
    done
    ;;
  gray_roundtrip)
    pgm 9 6 >g.pgm
    ok convert g.pgm g.png && ok convert g.png g2.pgm
    cmp -s g.pgm g2.pgm || fail "grey PNG round trip changed bytes"
    # Grey as luma with neutral chroma, back through --luma.
    ok convert g.pgm g.yuv --to i420
    [ "$(stat -c %s g.yuv)" -eq $((54 + 2 * 15)) ] || fail "i420 size"
    [ "$(tail -c 30 g.yuv | od -An -tu1 | tr -s ' ' '\n' | sort -u | tr -d '\n')" = 128 ] || fail "chroma not neutral"
    ok convert g.yuv g3.pgm --from i420 --size 9x6 --luma
    cmp -s g.pgm g3.pgm || fail "luma round trip changed bytes"
    ok convert g.yuv view.pgm --from i420 --size 9x6 --planes
    head -2 view.pgm | tail -1 | grep -q '^10 9$' || fail "plane view size"  # Y 9x6 over U,V 5x3 each
    # one channel of a colour image
    ppm 5 5 >c.ppm && ok convert c.ppm r.pgm --channel r
    tail -c 75 c.ppm | od -An -tu1 -v -w3 | awk '{print $1}' >want.txt
    tail -c 25 r.pgm | od -An -tu1 -v -w1 | awk '{print $1}' >got.txt
    cmp -s want.txt got.txt || fail "--channel r took the wrong samples"
    [ -n "$(m420 to)" ] || expect_error 1 "a colour image to" c.yuv -- convert c.ppm c.yuv --to nv12
    [ -n "$(m420 from)" ] || expect_error 1 "YUV to a colour image" c.png -- convert g.yuv c.png --from i420 --size 9x6
    ;;
  yuv_layouts_420)
    for s in "8 4" "7 5" "1 1" "2 3"; do chain $s i420 yv12 nv12 nv21 i420; done
    # NV12 interleaves U and V: check one pixel's place against I420.
    printf 'YYYYUV' >t.i420 && ok convert t.i420 t.nv21 --from i420 --to nv21 --size 2x2
    [ "$(cat t.nv21)" = YYYYVU ] || fail "nv21 order"
    ok convert t.i420 t.yv12 --from i420 --to yv12 --size 2x2
    [ "$(cat t.yv12)" = YYYYVU ] || fail "yv12 order"
    ;;
  yuv_layouts_422)
    for s in "8 4" "6 5" "2 1"; do chain $s i422 yuy2 uyvy i422; done
    printf 'ABCDuuvv' >t.i422 && ok convert t.i422 t.yuy2 --from i422 --to yuy2 --size 2x2
    [ "$(cat t.yuy2)" = AuBvCuDv ] || fail "yuy2 order: $(cat t.yuy2)"
    ok convert t.i422 t.uyvy --from i422 --to uyvy --size 2x2
    [ "$(cat t.uyvy)" = uAvBuCvD ] || fail "uyvy order: $(cat t.uyvy)"
    printf 'ABuuvv' >n.i422
    expect_error 1 "width must be even" o.yuy2 -- convert n.i422 o.yuy2 --from i422 --to yuy2 --size 1x2
    expect_error 1 "width must be even" o.raw -- convert t.i422 o.raw --from yuy2 --to i422 --size 1x4
    ;;
  yuv_layout_411)
    for s in "8 2" "5 3"; do chain $s i411 i411; done
    bytes $(frame_bytes i411 5 3) 2 >a.raw
    ok convert a.raw a.y4m --from i411 --size 5x3 && ok convert a.y4m b.raw --to i411
    cmp -s a.raw b.raw || fail "4:1:1 through Y4M changed bytes"
    ;;
  y4m_roundtrip)
    n=$(frame_bytes i420 6 4)
    bytes $((n * 3)) 9 >a.raw
    ok convert a.raw a.y4m --from i420 --size 6x4
    head -1 a.y4m | grep -q '^YUV4MPEG2 W6 H4 .*C420jpeg$' || fail "Y4M header: $(head -1 a.y4m)"
    [ "$(grep -a -o FRAME a.y4m | wc -l)" -eq 3 ] || fail "Y4M frame count"
    ok convert a.y4m b.nv12 --to nv12 && ok convert b.nv12 c.y4m --from nv12 --size 6x4
    cmp -s a.y4m c.y4m || fail "Y4M -> NV12 -> Y4M changed bytes"
    ok convert a.y4m f2.pgm --luma --frame 2
    cmp -s <(tail -c 24 f2.pgm) <(tail -c $n a.raw | head -c 24) || fail "--frame 2 luma"
    expect_error 1 "--frame wants" f.pgm -- convert a.y4m f.pgm --luma --frame 3
    ;;
  truncated_y4m)
    n=$(frame_bytes i420 6 4)
    bytes $((n * 2)) 9 >a.raw && ok convert a.raw a.y4m --from i420 --size 6x4
    head -c -5 a.y4m >cut.y4m
    expect_error 3 "truncated Y4M: frame 1" out.raw -- convert cut.y4m out.raw --to i420
    printf 'YUV4MPEG2 W4 H4 C420p10\nFRAME\n' >p10.y4m
    expect_error 3 "420p10" out.raw -- convert p10.y4m out.raw --to i420
    printf 'RIFF' >n.y4m
    expect_error 3 "not a Y4M" out.raw -- convert n.y4m out.raw --to i420
    ;;
  truncated_raw)
    bytes 20 1 >short.yuv
    expect_error 3 "short.yuv: truncated: 20 bytes, one 4x4 nv12 frame needs 24" out.png -- \
      convert short.yuv out.png --from nv12 --size 4x4 --luma
    : >empty.yuv
    expect_error 3 "empty file" out.y4m -- convert empty.yuv out.y4m --from i420 --size 4x4
    bytes 30 1 >short.raw
    expect_error 3 "truncated: 30 bytes" out.pgm -- convert short.raw out.pgm --from bayer --size 4x4 --bits 16
    ;;
  size_mismatch)
    bytes 30 1 >odd.yuv
    expect_error 3 "not a whole number of 4x4 i420 frames" out.y4m -- convert odd.yuv out.y4m --from i420 --size 4x4
    bytes 17 1 >b.raw
    expect_error 3 "does not fit a 4x4 8-bit Bayer plane" out.pgm -- convert b.raw out.pgm --from bayer --size 4x4
    ;;
  bad_size)
    bytes 24 1 >a.yuv
    expect_error 1 "--size wants WxH" out.y4m -- convert a.yuv out.y4m --from nv12 --size 4by4
    expect_error 1 "--size wants WxH" out.y4m -- convert a.yuv out.y4m --from nv12 --size 0x4
    expect_error 1 "--size WxH is needed" out.y4m -- convert a.yuv out.y4m --from nv12
    ;;
  unknown_layout)
    bytes 24 1 >a.yuv
    expect_error 1 "unknown layout 'nv16'" out.y4m -- convert a.yuv out.y4m --from nv16 --size 4x4
    expect_error 1 "cannot tell the kind of out.dat" out.dat -- convert a.yuv out.dat --from nv12 --size 4x4
    ppm 4 4 >c.ppm
    expect_error 1 "unknown Bayer grid 'rgbg'" out.raw -- convert c.ppm out.raw --to bayer --grid rgbg
    expect_error 1 "not a conversion kroconv makes" out.raw -- convert a.yuv out.raw --from gray --size 4x6 --to bayer
    ;;
  resampling_refused)
    bytes 24 1 >a.yuv
    expect_error 1 "needs chroma resampling" out.uyvy -- convert a.yuv out.uyvy --from i420 --to uyvy --size 4x4
    ;;
  bayer_roundtrip)
    ppm 6 4 >c.ppm
    ok convert c.ppm m.raw --to bayer --grid grbg
    [ "$(stat -c %s m.raw)" -eq 24 ] || fail "mosaic size"
    # grbg: (0,0) is G, (1,0) R, (0,1) B, (1,1) G.
    px() { tail -c 72 c.ppm | od -An -tu1 -v -j $((($2 * 6 + $1) * 3 + $3)) -N1 | tr -d ' '; }
    mo() { od -An -tu1 -v -j $(($2 * 6 + $1)) -N1 m.raw | tr -d ' '; }
    [ "$(mo 2 0)" = "$(px 2 0 1)" ] && [ "$(mo 3 0)" = "$(px 3 0 0)" ] && [ "$(mo 0 1)" = "$(px 0 1 2)" ] &&
      [ "$(mo 5 3)" = "$(px 5 3 1)" ] || fail "grbg sites"
    ok convert m.raw m.pgm --from bayer --size 6x4
    cmp -s <(tail -c 24 m.pgm) m.raw || fail "Bayer plane to grey changed samples"
    ok convert m.pgm m2.raw --to bayer && cmp -s m.raw m2.raw || fail "grey to Bayer plane"
    ;;
  bayer16)
    bytes 32 4 >b16.raw
    ok convert b16.raw b.pgm --from bayer --size 4x4 --bits 16
    head -3 b.pgm | tail -1 | grep -q 65535 || fail "16-bit PGM maxval"
    ok convert b.pgm back.raw --to bayer && cmp -s b16.raw back.raw || fail "16-bit Bayer round trip"
    expect_error 1 "--bits wants 8 or 16" o.pgm -- convert b16.raw o.pgm --from bayer --size 4x4 --bits 12
    expect_error 1 "PNG output holds 8-bit" o.png -- convert b.pgm o.png
    ;;
  compare)
    printf 'P5\n2 2\n255\n\000\010\020\030' >a.pgm
    printf 'P5\n2 2\n255\n\003\010\020\021' >b.pgm
    [ "$("$K" compare a.pgm b.pgm)" = "max 7 mean 2.5000" ] || fail "compare: $("$K" compare a.pgm b.pgm)"
    printf 'P5\n1 2\n255\n\000\010' >c.pgm
    expect_error 3 "differ in size" "" -- compare a.pgm c.pgm
    ;;
  sheet)
    ppm 10 6 >a.ppm && pgm 4 9 >b.pgm
    ok sheet s.png --columns 2 --title "TEST" one=a.ppm two=b.pgm three=a.ppm
    ok convert s.png s.ppm
    # 2 columns of cells 15 wide (label 'THREE' is 5*4-1=19 px at scale 2 = 38): width 8+2*(38+8)
    head -2 s.ppm | tail -1 | grep -q '^100 ' || fail "sheet width: $(head -2 s.ppm | tail -1)"
    expect_error 1 "is not LABEL=FILE" t.png -- sheet t.png a.ppm
    expect_error 2 "cannot open zz.png" t.png -- sheet t.png x=zz.png
    ;;
  unwritable_output)
    ppm 4 4 >a.ppm
    expect_error 2 "cannot write nodir/out.png" "" -- convert a.ppm nodir/out.png
    echo keep >old.png
    printf 'P6\n4 4\n255\n' >short.ppm
    "$K" convert short.ppm old.png 2>/dev/null && fail "short input accepted"
    [ "$(cat old.png)" = keep ] || fail "failed conversion touched an existing output"
    ;;
  model)
    if ! "$K" --help | grep -q '^  model '; then
      expect_error 1 "unknown subcommand 'model'" "" -- model a.png b.png --to yuv
      exit 0
    fi
    # A grey picture (R = G = B) has luma equal to its level and neutral chroma.
    printf 'P6\n4 2\n255\n' >g.ppm
    for v in 0 17 64 128 200 255 3 99; do printf "\\$(printf %o $v)%.0s" 1 2 3; done >>g.ppm
    ok model g.ppm packed.ppm --to yuv --layout packed
    tail -c 24 g.ppm | od -An -tu1 -v -w3 | awk '{print $1}' >level.txt
    tail -c 24 packed.ppm | od -An -tu1 -v -w3 >yuv.txt
    paste level.txt yuv.txt | awk '{ d = $1 - $2; if (d < -1 || d > 1 || $3 < 127 || $3 > 129 || $4 < 127 || $4 > 129) bad = 1 } END { exit bad }' ||
      fail "grey to YUV: $(paste level.txt yuv.txt | tr '\n' ';')"
    # The strip holds the same three channels side by side.
    ok model g.ppm strip.pgm --to yuv
    head -2 strip.pgm | tail -1 | grep -q '^12 2$' || fail "strip size"
    for c in 0 1 2; do
      tail -c 24 packed.ppm | od -An -tu1 -v -w3 | awk -v c=$((c + 1)) '{print $c}' >p$c.txt
      tail -c 24 strip.pgm | od -An -tu1 -v -w4 | awk -v c=$c 'NR % 3 == c + 1' | tr -s ' ' '\n' | sed '/^$/d' >s$c.txt
    done
    cat p0.txt p1.txt p2.txt | paste -sd' ' >a.txt
    for r in 0 1; do for c in 0 1 2; do sed -n "$((r * 4 + 1)),$((r * 4 + 4))p" p$c.txt; done; done | paste -sd' ' >want.txt
    tail -c 24 strip.pgm | od -An -tu1 -v -w1 | awk '{print $1}' | paste -sd' ' >got.txt
    cmp -s want.txt got.txt || fail "strip differs from packed: $(cat want.txt) / $(cat got.txt)"
    expect_error 1 "unknown matrix 'nosuch'" o.png -- model g.ppm o.png --to nosuch
    expect_error 1 "--layout wants strip or packed" o.png -- model g.ppm o.png --to yuv --layout side
    expect_error 1 "needs --to" o.png -- model g.ppm o.png
    ;;
  gamma)
    if ! "$K" --help | grep -q '^  gamma '; then
      expect_error 1 "unknown subcommand 'gamma'" "" -- gamma a.png b.png
      exit 0
    fi
    # Values of the 8-bit curve: 1 -> 4, 5 -> 23, 255 -> 255, 20 -> 64 forward; 20 -> 4 inverse.
    printf 'P5\n4 1\n255\n\001\005\377\024' >g.pgm
    ok gamma g.pgm f.pgm
    [ "$(tail -c 3 f.pgm | od -An -tu1 | tr -s ' ' | sed 's/^ //')" = "23 255 64" ] ||
      fail "forward: $(tail -c 4 f.pgm | od -An -tu1)"
    [ "$(tail -c 4 f.pgm | head -c 1 | od -An -tu1 | tr -d ' ')" = 4 ] || fail "forward of 1"
    ok gamma g.pgm i.pgm --inverse
    [ "$(tail -c 1 i.pgm | od -An -tu1 | tr -d ' ')" = 4 ] || fail "inverse of 20"
    expect_error 1 "wants an input and an output" "" -- gamma g.pgm
    expect_error 2 "cannot open nosuch.pgm" o.pgm -- gamma nosuch.pgm o.pgm
    ;;
  colour_roundtrip)
    if ! "$K" convert --help | grep -q '^  yuv '; then
      ppm 4 4 >c.ppm
      expect_error 1 "colour image to YUV" c.yuv -- convert c.ppm c.yuv --to i444
      exit 0
    fi
    # Moderate colours (96..159) stay inside the YUV range; rounding U (scaled back by 1/0.492)
    # and V in 8 bits puts the way back within 3 steps.
    printf 'P6\n9 7\n255\n' >c.ppm
    bytes $((9 * 7 * 3)) 5 | od -An -tu1 -v -w1 | awk '{printf "%c", 96 + $1 % 64}' >>c.ppm
    for m in $("$K" convert --help | awk '/^colour matrices/ { on = 1; next } on && /^  / && !/only/ { print $1 } on && !/^  / { on = 0 }'); do
      ok convert c.ppm c.yuv --to i444 --matrix "$m"
      [ "$(stat -c %s c.yuv)" -eq $((9 * 7 * 3)) ] || fail "i444 size"
      ok convert c.yuv back.ppm --from i444 --size 9x7 --matrix "$m"
      "$K" compare c.ppm back.ppm | awk '{ exit !($2 <= 3) }' || fail "$m round trip: $("$K" compare c.ppm back.ppm)"
    done
    # Without --matrix: the first matrix that converts both ways.
    ok convert c.ppm c.yuv --to i444 && ok convert c.yuv back.ppm --from i444 --size 9x7
    ok convert c.ppm c.y4m && head -1 c.y4m | grep -q 'C444$' || fail "colour Y4M is not 4:4:4"
    ok convert c.y4m back2.ppm && cmp -s back.ppm back2.ppm || fail "Y4M and raw 4:4:4 differ"
    [ -n "$(m420 to)" ] || expect_error 1 "needs chroma subsampling" c.nv12 -- convert c.ppm c.nv12 --to nv12
    expect_error 1 "unknown matrix 'bt2020'" c2.yuv -- convert c.ppm c2.yuv --to i444 --matrix bt2020
    ;;
  decode_only)
    if ! "$K" convert --help | grep -q '^  bt709 .*only'; then exit 0; fi
    ppm 2 2 >c.ppm
    expect_error 1 "bt709 only converts YUV to RGB" c.yuv -- convert c.ppm c.yuv --to i444 --matrix bt709
    # Y 100 with Cr high and Cb low is reddish: R must come out above B (the inverse writes
    # B, G, R and the tool puts them back in R, G, B order).
    printf 'dddd\120\120\120\120\320\320\320\320' >red.i444
    ok convert red.i444 red.ppm --from i444 --size 2x2 --matrix bt709
    tail -c 3 red.ppm | od -An -tu1 | awk '{ exit !($1 > $3 + 50) }' || fail "bt709 decode: $(tail -c 3 red.ppm | od -An -tu1)"
    ;;
  chroma420)
    if [ -z "$(m420 to)$(m420 from)" ]; then
      blocks 4 4 >c.ppm
      expect_error 1 "needs chroma subsampling" c.yuv -- convert c.ppm c.yuv --to i420
      exit 0
    fi
    blocks 10 6 >c.ppm
    n=$(frame_bytes i420 10 6)
    for m in $(m420 to); do
      for l in i420 yv12 nv12 nv21; do
        ok convert c.ppm "c.$l" --to "$l" --matrix "$m"
        [ "$(stat -c %s "c.$l")" -eq "$n" ] || fail "$m $l size"
      done
      # Plane order is the file's business: each layout holds the same samples as i420.
      # (The 709 two-plane encoder's last columns follow their own arithmetic, so its nv12 and
      # nv21 may differ from the planar form there.)
      for l in yv12 nv12 nv21; do
        ok convert c.i420 "re.$l" --from i420 --to "$l" --size 10x6
        case $m,$l in bt709,nv*) ;; *) cmp -s "c.$l" "re.$l" || fail "$m: --to $l differs from --to i420 re-laid as $l" ;; esac
      done
      # A grey block stays grey: Cb and Cr near 128 whatever the layout.
      flat 4 4 120 120 120 >g.ppm && ok convert g.ppm g.nv12 --to nv12 --matrix "$m"
      samples g.nv12 8 | awk '{ if ($1 < 126 || $1 > 130) bad = 1 } END { exit bad }' || fail "$m: grey has colour"
    done
    for m in $(m420 from); do
      m420 to | grep -qx "$m" || continue
      for l in i420 yv12 nv12 nv21; do
        ok convert c.ppm "c.$l" --to "$l" --matrix "$m"
        ok convert "c.$l" "back-$m-$l.ppm" --from "$l" --size 10x6 --matrix "$m"
        "$K" compare c.ppm "back-$m-$l.ppm" | awk '{ exit !($2 <= 4) }' ||
          fail "$m $l round trip: $("$K" compare c.ppm "back-$m-$l.ppm")"
      done
      cmp -s "back-$m-i420.ppm" "back-$m-yv12.ppm" || fail "$m: yv12 and i420 decode differently"
    done
    # Y4M 4:2:0 decodes as planes.
    m=$(m420 from | head -1)
    if [ -n "$(m420 to | grep -x "$m")" ]; then
      ok convert c.ppm c.i420 --to i420 --matrix "$m" && ok convert c.i420 c.y4m --from i420 --size 10x6
      ok convert c.y4m y4m.ppm --matrix "$m"
      cmp -s y4m.ppm "back-$m-i420.ppm" || fail "Y4M 4:2:0 decode differs from i420"
    fi
    ;;
  chroma420_decode)
    [ -n "$(m420 from)" ] || exit 0
    for m in $(m420 from); do
      [ $m = yuv ] && lo=16 hi=235 || lo=0 hi=255
      # 2x2 frames: white and black of the matrix's range, then a red (Y 81, U 90, V 240) in
      # every layout's byte order, which must come back red whichever export reads it.
      printf '\353\353\353\353\200\200' >w.i420 && printf '\020\020\020\020\200\200' >k.i420
      for f in w:$hi k:$lo; do
        ok convert ${f%:*}.i420 ${f%:*}.ppm --from i420 --size 2x2 --matrix $m
        samples ${f%:*}.ppm 12 | awk -v v=${f#*:} '$1 != v { bad = 1 } END { exit bad }' ||
          fail "$m: level ${f#*:} came back as $(samples ${f%:*}.ppm 12 | paste -sd' ')"
      done
      for l in i420:ZP nv12:ZP yv12:PZ nv21:PZ; do
        printf "QQQQ$(echo ${l#*:} | sed 's/Z/\\132/; s/P/\\360/')" >red.${l%:*}
        ok convert red.${l%:*} red.ppm --from ${l%:*} --size 2x2 --matrix $m
        samples red.ppm 12 | paste - - - | awk '{ if (!($1 > $2 + 100 && $1 > $3 + 100)) bad = 1 } END { exit bad }' ||
          fail "$m ${l%:*}: red came back as $(samples red.ppm 3 | paste -sd' ')"
      done
    done
    ;;
  chroma420_errors)
    [ -n "$(m420 to)$(m420 from)" ] || exit 0
    blocks 7 5 >odd.ppm
    m=$(m420 to | head -1)
    if [ -n "$m" ]; then
      # Odd sizes: the library warns (status 35) and converts the even part; the output stays.
      "$K" convert odd.ppm odd.i420 --to i420 --matrix "$m" 2>stderr.txt || fail "odd size refused: $(cat stderr.txt)"
      grep -q "warning: .*status 35" stderr.txt || fail "no warning for odd size: $(cat stderr.txt)"
      [ "$(stat -c %s odd.i420)" -eq "$(frame_bytes i420 7 5)" ] || fail "odd-size frame size"
      expect_error 1 "unknown matrix 'bt2020' for RGB to 4:2:0" o.yuv -- convert odd.ppm o.yuv --to nv12 --matrix bt2020
      pgm 4 4 >g.pgm
      expect_error 1 "applies to colour images" o.yuv -- convert g.pgm o.yuv --to i420 --matrix "$m"
    fi
    if m420 to | grep -qx bt709; then
      # The 709 encoder needs 2x2 at least: a library error, one line, nothing written.
      flat 1 3 10 20 30 >thin.ppm
      expect_error 4 "kroiBGRToYCbCr420_709CSC_8u_C3P3R failed with status -6" o.yuv -- convert thin.ppm o.yuv --to i420 --matrix bt709
    fi
    m=$(m420 from | head -1)
    if [ -n "$m" ]; then
      bytes $(frame_bytes i420 7 5) 3 >odd.yuv
      "$K" convert odd.yuv odd.ppm --from nv21 --size 7x5 --matrix "$m" 2>stderr.txt || fail "odd size refused: $(cat stderr.txt)"
      grep -q "warning: .*status 35" stderr.txt || fail "no warning for odd size on decoding"
      expect_error 3 "truncated" o.ppm -- convert odd.yuv o.ppm --from nv12 --size 8x6 --matrix "$m"
      expect_error 1 "unknown matrix 'none' for 4:2:0 to RGB" o.ppm -- convert odd.yuv o.ppm --from nv12 --size 7x5 --matrix none
    fi
    ;;
  demosaic)
    offered demosaic || exit 0
    methods=$("$K" demosaic --help | awk '/^methods/ { on = 1; next } on && /^  / { print $1; next } { on = 0 }')
    [ -n "$methods" ] || fail "demosaic offered without methods"
    ppm 13 11 >c.ppm
    for g in rggb grbg gbrg bggr; do
      # One colour everywhere: every method must give it back exactly, so the grid names agree
      # with the library's grid codes.
      flat 12 10 200 100 40 >f.ppm && ok convert f.ppm f.raw --to bayer --grid $g
      ok convert c.ppm m.raw --to bayer --grid $g && ok convert m.raw m.pgm --from bayer --size 13x11
      for meth in $methods; do
        ok demosaic f.raw out.ppm --size 12x10 --grid $g --method $meth
        cmp -s f.ppm out.ppm || fail "$meth $g: a flat colour came back as $(samples out.ppm 6 | paste -sd' ')"
        # Each site keeps its own sample in its own channel (odd sizes, so rows and columns of
        # both phases end the picture).
        ok demosaic m.raw d.ppm --size 13x11 --grid $g --method $meth
        samples d.ppm 429 | paste - - - | awk -v g=$g -v w=13 '
          BEGIN { split(g, c, ""); for (i = 1; i <= 4; i++) ch[i - 1] = c[i] == "r" ? 1 : c[i] == "g" ? 2 : 3 }
          { x = (NR - 1) % w; y = int((NR - 1) / w); print $(ch[(y % 2) * 2 + x % 2]) }' >site.txt
        samples m.raw 143 >want.txt
        cmp -s site.txt want.txt || fail "$meth $g: sites do not keep their samples"
        ok demosaic m.pgm d2.ppm --grid $g --method $meth
        cmp -s d.ppm d2.ppm || fail "$meth $g: PGM input differs from raw input"
      done
    done
    # 16 bits: a flat colour of 16-bit samples through a 16-bit plane.
    flat 12 10 40000 20000 5000 65535 >f16.ppm && ok convert f16.ppm f16.raw --to bayer --grid gbrg
    [ "$(stat -c %s f16.raw)" -eq 240 ] || fail "16-bit mosaic size"
    for meth in $methods; do
      ok demosaic f16.raw out16.ppm --size 12x10 --bits 16 --grid gbrg --method $meth
      cmp -s f16.ppm out16.ppm || fail "$meth: 16-bit flat colour changed"
    done
    ;;
  demosaic_errors)
    offered demosaic || exit 0
    bytes 120 1 >m.raw
    expect_error 1 "demosaic needs --grid" o.png -- demosaic m.raw o.png --size 12x10
    expect_error 1 "unknown option --levels for 'demosaic'" o.png -- demosaic m.raw o.png --size 12x10 --grid rggb --levels 2
    expect_error 1 "demosaic wants an input and an output" "" -- demosaic m.raw --size 12x10 --grid rggb
    expect_error 1 "unknown Bayer grid 'rgbg'" o.png -- demosaic m.raw o.png --size 12x10 --grid rgbg
    expect_error 1 "unknown method 'nearest'" o.png -- demosaic m.raw o.png --size 12x10 --grid rggb --method nearest
    expect_error 3 "does not fit a 12x9 8-bit Bayer plane" o.png -- demosaic m.raw o.png --size 12x9 --grid rggb
    expect_error 3 "truncated: 120 bytes" o.png -- demosaic m.raw o.png --size 12x10 --bits 16 --grid rggb
    expect_error 1 "--size WxH is needed" o.png -- demosaic m.raw o.png --grid rggb
    expect_error 1 "cannot tell the kind of o.raw" o.raw -- demosaic m.raw o.raw --size 12x10 --grid rggb
    ppm 4 4 >c.ppm
    expect_error 3 "a Bayer plane is one channel" o.png -- demosaic c.ppm o.png --grid rggb
    bytes 8 1 >tiny.raw
    for meth in $("$K" demosaic --help | awk '/^methods/ { on = 1; next } on && /^  / { print $1; next } { on = 0 }'); do
      # Too small for the library (bilinear needs 2x2, the adaptive method 5x5).
      case $meth in bilinear) sz=8x1 ;; ahd) sz=4x2 ;; *) continue ;; esac
      expect_error 4 "failed with status -6" o.png -- demosaic tiny.raw o.png --size $sz --grid rggb --method $meth
    done
    bytes 240 1 >m16.raw
    expect_error 1 "PNG output holds 8-bit" o.png -- demosaic m16.raw o.png --size 12x10 --bits 16 --grid rggb
    ;;
  dither)
    offered dither || exit 0
    # Every 8-bit value once, 16x16.
    { printf 'P5\n16 16\n255\n'; awk 'BEGIN { for (i = 0; i < 256; i++) printf "%c", i }'; } >ramp.pgm
    # No dither, 2 levels: the nearest of 0 and 255, an exact half (none in 8 bits) rounding down.
    ok dither ramp.pgm two.pgm --levels 2 --kind none
    samples two.pgm 256 | awk '{ if ($1 != (NR - 1 < 128 ? 0 : 255)) bad = NR - 1 } END { exit bad != "" }' ||
      fail "none, 2 levels: $(samples two.pgm 256 | sed -n '126,131p' | paste -sd' ')"
    ok dither ramp.pgm same.pgm --levels 256 --kind none
    cmp -s ramp.pgm same.pgm || fail "none, 256 levels changed samples"
    # Ordered dither of a flat 128 at 2 levels: white where the 4x4 Bayer entry is 7 or less.
    { printf 'P5\n4 4\n255\n'; awk 'BEGIN { for (i = 0; i < 16; i++) printf "%c", 128 }'; } >half.pgm
    ok dither half.pgm bayer.pgm --levels 2 --kind bayer
    [ "$(samples bayer.pgm 16 | paste -sd' ')" = "255 0 255 0 0 255 0 255 255 0 255 0 0 255 0 255" ] ||
      fail "bayer pattern: $(samples bayer.pgm 16 | paste -sd' ')"
    # Error diffusion of a flat 128: about half white, only the two levels, first pixel white.
    { printf 'P5\n16 16\n255\n'; awk 'BEGIN { for (i = 0; i < 256; i++) printf "%c", 128 }'; } >half16.pgm
    for k in floyd jjn stucki; do
      ok dither half16.pgm d.pgm --levels 2 --kind $k
      samples d.pgm 256 | awk '$1 == 255 { w++ } $1 != 0 && $1 != 255 { bad = 1 }
        NR == 1 && $1 != 255 { bad = 1 } END { exit bad || w < 100 || w > 156 }' ||
        fail "$k: $(samples d.pgm 256 | sort | uniq -c | paste -sd' ')"
    done
    # Colour, 4 levels: every sample on 0, 85, 170 or 255.
    ppm 9 7 >c.ppm
    for k in none floyd jjn stucki bayer; do
      ok dither c.ppm c4.ppm --levels 4 --kind $k
      head -2 c4.ppm | tail -1 | grep -q '^9 7$' || fail "$k: size"
      samples c4.ppm 189 | awk '$1 % 85 { bad = 1 } END { exit bad }' || fail "$k: samples off the 4 levels"
    done
    # Noise moves thresholds, the same way on every run.
    ok dither half16.pgm n1.pgm --levels 2 --kind bayer --noise 30
    ok dither half16.pgm n2.pgm --levels 2 --kind bayer --noise 30
    ok dither half16.pgm n0.pgm --levels 2 --kind bayer
    cmp -s n1.pgm n2.pgm || fail "noise differs between runs"
    cmp -s n0.pgm n1.pgm && fail "noise 30 changed nothing"
    ok dither half16.pgm f1.pgm --levels 2 --kind floyd --noise 50 && ok dither half16.pgm f2.pgm --levels 2 --kind floyd --noise 50
    cmp -s f1.pgm f2.pgm || fail "floyd noise differs between runs"
    if ! "$K" dither --help | grep -q '8-bit images only'; then
      printf 'P5\n2 1\n65535\n\177\377\200\000' >w.pgm
      ok dither w.pgm w2.pgm --levels 2 --kind none
      [ "$(samples w2.pgm 4 | paste -sd' ')" = "0 0 255 255" ] || fail "16-bit, 2 levels: $(samples w2.pgm 4 | paste -sd' ')"
    fi
    ;;
  dither_errors)
    offered dither || exit 0
    ppm 4 4 >c.ppm
    expect_error 1 "dither needs --levels" o.png -- dither c.ppm o.png
    expect_error 1 "unknown option --grid for 'dither'" o.png -- dither c.ppm o.png --levels 2 --grid rggb
    expect_error 1 "--levels wants a whole number" o.png -- dither c.ppm o.png --levels two
    expect_error 1 "--levels wants a whole number in 2..65536" o.png -- dither c.ppm o.png --levels 1
    expect_error 1 "unknown dither kind 'atkinson'" o.png -- dither c.ppm o.png --levels 2 --kind atkinson
    expect_error 1 "--noise wants a whole number in 0..100" o.png -- dither c.ppm o.png --levels 2 --noise 101
    expect_error 4 "kroiReduceBits_8u_C3R failed with status -54" o.png -- dither c.ppm o.png --levels 300
    expect_error 2 "cannot open none.png" o.png -- dither none.png o.png --levels 2
    expect_error 1 "cannot tell the kind of o.raw" o.raw -- dither c.ppm o.raw --levels 2
    ;;
  progress)
    command -v script >/dev/null || { echo "no 'script' to give kroconv a terminal; case not run"; exit 0; }
    n=$(frame_bytes i420 4 4)
    bytes $((n * 3)) 1 >f.raw && ppm 8 8 >a.ppm
    # On a terminal (script gives one): a progress line per job, cleared before the end.
    script -qec "'$K' convert f.raw f.y4m --from i420 --size 4x4 >/dev/null" /dev/null >tty.txt ||
      fail "convert on a terminal failed: $(cat tty.txt)"
    grep -q 'kroconv: writing f.y4m *[0-9]*%' tty.txt || fail "no frame progress on a terminal: $(od -c tty.txt | head -3)"
    script -qec "'$K' convert a.ppm a.png >/dev/null" /dev/null >tty.txt
    grep -q 'kroconv: convert a.ppm *[0-9]*%' tty.txt || fail "no progress for an image on a terminal"
    [ "$(tail -c 1 tty.txt | od -An -c | tr -d ' ')" = '\r' ] || fail "progress line not cleared"
    # Not on a terminal: quiet.
    "$K" convert f.raw g.y4m --from i420 --size 4x4 2>err.txt && "$K" convert a.ppm b.png 2>>err.txt ||
      fail "conversion failed"
    [ ! -s err.txt ] || fail "output on a stderr that is no terminal: $(cat err.txt)"
    cmp -s f.y4m g.y4m && cmp -s a.png b.png || fail "terminal and pipe runs differ"
    ;;
  *) fail "unknown case" ;;
esac
exit 0
