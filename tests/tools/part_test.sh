#!/bin/sh
# part_test C_PROGRAM CPP_PROGRAM DATA RAMP: the programs that read a part, on parts of a CAD system and on
# files that are none.
set -eu
c=$1
cpp=$2
data=$3
ramp=$4
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

fail() {
  echo "part_test: $1" >&2
  exit 1
}

for part in bracket fins; do
  "$c" "$data/$part.stl" "$ramp" >said
  [ "$(sed 's/^part.obj: \([0-9]*\) vertices, \([0-9]*\) .*/\1 \2/' said)" = \
    "$(awk '$1 == "v" {v++} $1 == "f" {f++} END {print v, f}' part.obj)" ] || fail "$part: $(cat said)"
  # Hot where x is least, cold where it is largest, a thousandth off the ends of the ramp.
  awk '$1 == "v" {x[++v] = $2; low = v == 1 || $2 < low ? $2 : low; high = v == 1 || $2 > high ? $2 : high}
    $1 == "vt" {u[++n] = $2}
    END {
      for (i = 1; i <= v; ++i) {
        bad += u[i] < 0.00099 || u[i] > 0.99901
        bad += x[i] == low && u[i] > 0.001 || x[i] == high && u[i] < 0.999
      }
      exit bad > 0 || v != n
    }' part.obj || fail "$part: the field is not what was asked for"
  mv part.obj c.obj
  "$cpp" "$data/$part.stl" "$ramp" >/dev/null
  cmp part.obj c.obj
done
[ -s viridis.PNG ] || fail "no ramp"
# The same part as text, with the blanks and line ends of two systems.
python3 - "$data/fins.stl" <<'TEXT'
import struct, sys

with open(sys.argv[1], "rb") as file:
    triangles = list(struct.iter_unpack("<12fH", file.read()[84:]))
for name, margin, end in [("blanks", "   ", "\n"), ("tabs", "\t", "\r\n")]:
    lines = ["solid any name"]
    for t in triangles:
        lines += ["facet normal 0 0 0", margin + "outer loop"]
        lines += [f"{margin}vertex {t[k]!r} {t[k + 1]!r} {t[k + 2]!r}" for k in (3, 6, 9)]
        lines += [margin + "endloop", "endfacet"]
    with open(name + ".stl", "w", newline="") as file:
        file.write(end.join([*lines, "endsolid", ""]))
TEXT
"$c" "$data/fins.stl" "$ramp" >/dev/null
mv part.obj c.obj
for program in "$c" "$cpp"; do
  for file in blanks tabs; do
    "$program" $file.stl "$ramp" >/dev/null
    cmp part.obj c.obj
  done
done
grep -q '"minimum": 30, "maximum": 80' part.json || fail "no numbers for the legend"

rm -f part.*
head -c 3000 "$data/bracket.stl" >short.stl
head -c 84 "$data/bracket.stl" >head.stl
printf '%84s' '' | tr ' ' '\0' >none.stl
echo "solid of words" >words.stl
: >empty.stl
head -n 700 blanks.stl >cut.stl
sed '6s/vertex .*/vertex 1 2 x/' blanks.stl >letters.stl
for program in "$c" "$cpp"; do
  for file in short head none words empty cut letters missing; do
    status=0
    "$program" $file.stl "$ramp" >said 2>&1 || status=$?
    [ "$status $(grep -c '^part: .*\(not an STL\|damaged\|cannot open\)' said) $(wc -l <said)" = "1 1 1" ] ||
      fail "answers $status to $file.stl: $(cat said)"
  done
  ! "$program" words.stl 2>said || fail "needs no ramp"
  grep -q usage said || fail "does not say what it wants: $(cat said)"
done
[ -z "$(find . -name 'part.*')" ] || fail "files that are no part left results"
