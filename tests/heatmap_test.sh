#!/bin/sh
# heatmap_test HEATMAP PART: the example on its part, and what it says of bad input.
set -eu
heatmap=$1
part=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
  echo "heatmap_test: $1" >&2
  exit 1
}

# refuses WORDS ARGUMENT...: exits non-zero and says WORDS, leaves no result.
refuses() {
  words=$1
  shift
  if "$heatmap" "$@" >"$work/stdout" 2>"$work/stderr"; then
    fail "accepted: $*"
  fi
  grep -q -- "$words" "$work/stderr" || fail "said of '$*': $(cat "$work/stderr")"
}

"$heatmap" "$part" --out "$work/new/dir" --hot z- --cold z+ --cold ball:0,0,26,5 >"$work/stdout"
cd "$work/new/dir"
for file in heatmap.obj heatmap.mtl viridis.PNG; do
  [ -s $file ] || fail "no $file"
done
[ "$(head -n 1 heatmap.obj)" = "mtllib heatmap.mtl" ] || fail "a viewer would not find the material"
grep -q "^map_Kd viridis.PNG$" heatmap.mtl || fail "a viewer would not find the ramp"
# Prescribed vertices sit at both ends of the ramp; six triangles meet at a vertex on average.
awk '$1 == "v" {v++} $1 == "vt" {vt++; hot += $2 == 0; cold += $2 == 1} $1 == "f" {f++}
     END {exit !(v == vt && hot > 100 && cold > 100 && f > 1.9 * v && f < 2.1 * v)}' heatmap.obj ||
  fail "the OBJ is not what was asked for"
cd "$work"

echo "solid empty" >empty.stl
echo "nonsense" >bad.obj
printf 'v 0 0 0\nv 1 0 0\nv 0 1 0\nv 9 0 0\nv 8 0 0\nv 9 1 0\nf 1 2 3\nf 4 5 6\n' >two.obj
printf 'v 0 0 0\nv 1 0 0\nv 2 0 0\nf 1 2 3\n' >flat.obj
refuses "cannot read" missing.stl --out o
refuses "" empty.stl --out o
refuses "cannot read" bad.obj --out o
refuses "no triangle has an area" flat.obj --out o
refuses "selects no vertex" "$part" --out o --hot ball:900,0,0,1
refuses "where a number should be" "$part" --out o --hot ball:1,2,x,1
refuses "needs 4 numbers" "$part" --out o --hot ball:1,2
refuses "is none of" "$part" --out o --cold q+
refuses "cold already" "$part" --out o --hot x+ --cold x+:0.5
refuses "holds neither" two.obj --out o --hot nearest:0,0,0 --cold nearest:1,0,0
refuses "tolerance is too large" "$part" --out o --tolerance 1000
refuses "plain file name" "$part" --out o --name a/b
refuses "cannot make the directory" "$part" --out bad.obj/o
refuses "out" "$part"
[ ! -e o ] || fail "a refused input left results"
"$heatmap" two.obj --out o --largest --hot nearest:0,0,0 --cold nearest:1,0,0 >/dev/null
mkdir -p locked/heatmap.obj/x
refuses "cannot replace" two.obj --out locked --largest --hot nearest:0,0,0 --cold nearest:1,0,0
