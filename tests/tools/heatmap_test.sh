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

# refuses STATUS WORDS ARGUMENT...: exits with the status, says WORDS on one line and, if the command
# line is at fault, where help is.
refuses() {
  expected=$1
  words=$2
  shift 2
  status=0
  "$heatmap" "$@" >"$work/stdout" 2>"$work/stderr" || status=$?
  [ $status -eq "$expected" ] || fail "answers $status to '$*'"
  grep -q -- "^heatmap: .*$words" "$work/stderr" || fail "said of '$*': $(cat "$work/stderr")"
  [ "$(wc -l <"$work/stderr")" -eq "$expected" ] || fail "says more: $(cat "$work/stderr")"
}

# refuses_at_once STATUS WORDS ARGUMENT...: likewise, before any work is done.
refuses_at_once() {
  refuses "$@"
  [ ! -s "$work/stdout" ] || fail "works before it refuses: $*"
}

"$heatmap" "$part" --out "$work/new/dir" --hot z- --cold z+ --cold ball:0,0,26,5 >"$work/stdout"
cd "$work/new/dir"
for file in heatmap.obj heatmap.mtl viridis.PNG; do
  [ -s $file ] || fail "no $file"
done
[ "$(head -n 1 heatmap.obj)" = "mtllib heatmap.mtl" ] || fail "a viewer would not find the material"
grep -q "^map_Kd viridis.PNG$" heatmap.mtl || fail "a viewer would not find the ramp"
# Prescribed vertices sit a thousandth off the ends of the ramp, which viewers that repeat textures would
# mix; six triangles meet at a vertex on average.
awk '$1 == "v" {v++} $1 == "vt" {vt++; hot += $2 ~ /^0.00099/; cold += $2 ~ /^0.99900/} $1 == "f" {f++}
     END {exit !(v == vt && hot > 100 && cold > 100 && f > 1.9 * v && f < 2.1 * v)}' heatmap.obj ||
  fail "the OBJ is not what was asked for"
cd "$work"

echo "solid empty" >empty.stl
echo "nonsense" >bad.obj
printf 'v 0 0 0\nv 1 0 0\nv 0 1 0\nv 9 0 0\nv 8 0 0\nv 9 1 0\nf 1 2 3\nf 4 5 6\n' >two.obj
printf 'v 0 0 0\nv 1 0 0\nv 2 0 0\nf 1 2 3\n' >flat.obj
printf 'v 0 0 0\nv 1 0 0\nv 0 1 0\n' >points.obj
printf 'v nan 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n' >nan.obj
printf 'OFF\n3 1 0\n0 0 0\n1 0 0\n' >truncated.off
head -c 3000 "$part" >truncated.stl
mkdir folder.stl
: >empty.png

refuses 1 "there is no such file" missing.stl --out o
refuses 1 "is not a file" folder.stl --out o
for file in empty.stl bad.obj points.obj truncated.off truncated.stl; do
  refuses 1 "$file as a mesh of triangles: it has none" $file --out o
done
refuses 1 "triangle 1 of nan.obj has a coordinate that is not a finite" nan.obj --out o
refuses 1 "no triangle of the part has an area" flat.obj --out o
refuses 1 "selects no vertex: the part reaches from (-30, -25, -6) to (30, 25, 26)" "$part" --out o \
  --hot ball:900,0,0,1
refuses 1 '"x+" (hot) and "x+:0.5" (cold) both select the vertex at (' "$part" --out o \
  --hot x+ --cold x+:0.5
refuses 1 '"x-:1" (hot) and "x+" (cold, taken because there is no --cold) both select' "$part" --out o \
  --hot x-:1
refuses 1 "loose piece at (9, 0, 0) has neither" two.obj --out o --hot nearest:0,0,0 \
  --cold nearest:1,0,0
refuses 1 "nearer than 1000 became one" "$part" --out o --tolerance 1000

refuses_at_once 2 "where a number should be" "$part" --out o --hot ball:1,2,x,1
refuses_at_once 2 "needs 4 numbers" "$part" --out o --hot ball:1,2
refuses_at_once 2 "needs one number" "$part" --out o --hot z+:
refuses_at_once 2 "radius" "$part" --out o --hot ball:1,2,3,-1
refuses_at_once 2 "fraction between 0 and 1" "$part" --out o --hot z+:10
refuses_at_once 2 "is none of" "$part" --out o --cold q+
refuses_at_once 2 '"nan" is not a finite number' "$part" --out o --hot-value nan
refuses_at_once 2 '"1e999" is not a finite number' "$part" --out o --cold-value 1e999
refuses_at_once 2 '"-1" is negative' "$part" --out o --tolerance -1
refuses_at_once 2 '"80C" is not a number' "$part" --out o --hot-value 80C
refuses_at_once 2 '"1,5" is not a number' "$part" --out o --tolerance 1,5
# Long nonsense is not said back whole.
refuses_at_once 2 '"1\{60\}..." is not a finite number' "$part" --out o --hot-value "$(printf '1%.0s' $(seq 400))"
refuses_at_once 2 '"\(ü\)\{30\}..." is none of' "$part" --out o --hot "$(printf 'ü%.0s' $(seq 40))"
refuses_at_once 2 "are the same" "$part" --out o --hot-value 20 --cold-value 20
refuses_at_once 2 "too far apart" "$part" --out o --hot-value 1e308 --cold-value -1e308
# Fields whose colours would be rounding errors, infinite or NaN.
refuses_at_once 2 "too near to each other" "$part" --out o --hot-value 293.1500000000001 --cold-value 293.15
refuses_at_once 2 "too small to compute with" "$part" --out o --hot-value 1e-320
refuses_at_once 2 "is too wide" "$part" --out o --range -1e308 1e308
refuses_at_once 2 "prescribed values, 0 and 1" "$part" --out o --range 0 0.5
refuses_at_once 2 "out is required" "$part"
refuses_at_once 2 "not expected: .*--hott" "$part" --out o --hott z+
refuses_at_once 2 "PART is empty" '' --out o
refuses_at_once 2 "out is empty" "$part" --out ''
refuses_at_once 1 "plain file name" "$part" --out o --name a/b
refuses_at_once 1 "plain file name" "$part" --out o --name ..
refuses_at_once 1 "name is too long" "$part" --out o --name "$(printf 'n%.0s' $(seq 246))"
refuses_at_once 1 "bad.obj is not a directory" "$part" --out bad.obj/o
refuses_at_once 1 "colour ramp nowhere.png: there is no such file" "$part" --out o --ramp nowhere.png
refuses_at_once 1 "colour ramp empty.png: it is no PNG" "$part" --out o --ramp empty.png
refuses_at_once 1 "colour ramp two.obj: it is no PNG" "$part" --out o --ramp two.obj
for result in heatmap.obj heatmap.html viridis.PNG; do
  mkdir -p locked/$result
  refuses_at_once 1 "$result: it is a directory" "$part" --out locked --html
  rmdir locked/$result
done
cp two.obj kept.obj
refuses_at_once 1 "would replace the part" kept.obj --out . --name kept
cmp two.obj kept.obj
[ ! -e o ] || fail "a refused input left results"
[ -z "$(find . -name '*probe*')" ] || fail "looking whether files can be written left one"
# Root may do everything but for this; another user could not even come here if the clone is root's own.
if command -v setpriv >/dev/null && [ "$(id -u)" -eq 0 ]; then
  unprivileged='setpriv --bounding-set=-dac_override,-dac_read_search'
else
  unprivileged=
fi
# denies WORDS ARGUMENT...: exits with 1 and says WORDS.
denies() {
  words=$1
  shift
  status=0
  $unprivileged "$heatmap" "$@" >stdout 2>stderr || status=$?
  [ "$status $(grep -c "$words" stderr)" = "1 1" ] || fail "without permission says: $(cat stdout stderr)"
}
mkdir -m 555 locked_up
cp two.obj secret.obj
chmod 000 secret.obj
denies 'needs permission' "$part" --out locked_up
[ ! -s stdout ] || fail "works before it refuses a directory"
denies 'secret.obj: it is not yours to read' secret.obj --out o
denies 'ramp secret.obj: it is not yours to read' "$part" --out o --ramp secret.obj
# A page that finds no room, here of 512 KB for a file, leaves nothing half written, and the page of before.
mkdir small
echo before >small/heatmap.html
status=0
(
  ulimit -f 1024
  trap '' XFSZ
  exec "$heatmap" two.obj --out small --html --largest --hot nearest:0,0,0 --cold nearest:1,0,0 >stdout 2>stderr
) || status=$?
[ "$status $(cat small/heatmap.html)" = "1 before" ] || fail "answers $status without room: $(cat stderr)"
grep -q 'cannot write small/heatmap.html: no permission, or no space' stderr || fail "no room: $(cat stderr)"
[ -z "$(find small -name '*.part')" ] || fail "a page that found no room left a part"

# chooses RULES OPTION...: with these options the sides without a rule get these.
chooses() {
  rules=$1
  shift
  "$heatmap" "$part" --out o "$@" >"$work/stdout"
  grep -q "^tag .*$rules" "$work/stdout" || fail "chose with $*: $(grep ^tag "$work/stdout")"
}
chooses "hot (x-), .* cold (x+)"
chooses "cold (z-)" --hot z+
chooses "hot (y+)" --cold y-:0.1
chooses "cold (x-)" --hot ball:30,0,0,5

"$heatmap" two.obj --out o --largest --hot nearest:0,0,0 --cold nearest:1,0,0 >/dev/null
"$heatmap" --version | grep -qE '^heatmap of quor [0-9]+[.][0-9]+[.][0-9]+$' || fail "no version"
"$heatmap" --help | grep -q "Exit status" || fail "no help"

# A raw tessellation is refined before it is solved on, and the ends are faces, however fine that is.
raw=$(dirname "$part")/bracket.stl
# triangles OPTION...: how many the result has.
triangles() {
  "$heatmap" "$raw" --out raw "$@" >"$work/stdout"
  grep -c '^f ' raw/heatmap.obj
}
triangles --edge none >/dev/null
before=$(sed -n 's/^read.* \([0-9]*\) triangles.*/\1/p' stdout)
[ "$(triangles --edge none)" -eq "$before" ] || fail "--edge none changes the mesh"
[ "$(triangles)" -gt $((2 * before)) ] || fail "does not refine"
grep -q '^refine .*1/32 of the diagonal' stdout || fail "does not say how fine the mesh is"
[ "$(triangles --edge 2)" -gt $((3 * before)) ] || fail "--edge does not refine"
grep -q '^refine .*edges up to 2 ' stdout || fail "does not say which edge"
refuses_at_once 2 'neither a length' "$raw" --out o --edge 0
refuses_at_once 2 'neither a length' "$raw" --out o --edge coarse
refuses 1 "more triangles than fit" "$raw" --out o --edge 1e-9

# What is at an end of the part does not depend on how fine the mesh is: whole triangles, or where there
# is none whole edges, as the ridge of a roof, or else vertices.
printf 'v 0 -1 0\nv 0 1 0\nv 4 -1 0\nv 4 1 0\nv 0 0 3\nv 4 0 3\nf 1 3 6\nf 1 6 5\nf 2 5 6\nf 2 6 4\nf 1 5 2\nf 3 4 6\n' >roof.obj
printf 'v 0 0 0\nv 4 0 0\nv 0 4 0\nv 1 1 3\nf 1 2 4\nf 2 3 4\nf 3 1 4\nf 1 3 2\n' >peak.obj
# hot FILE EDGE: how many vertices are hot at the top.
hot() {
  "$heatmap" "$1" --out top --hot z+ --cold z- --edge "$2" | sed -n 's/^tag *\([0-9]*\) hot.*/\1/p'
}
[ "$(hot roof.obj none) $(hot peak.obj none) $(hot peak.obj 0.5)" = "2 1 1" ] || fail "other vertices are hot"
ridge=$(hot roof.obj 0.5)
awk '$1 == "v" && $4 == 3' top/heatmap.obj | wc -l | grep -qx "$ridge" || fail "not the ridge is hot"
[ "$ridge" -gt 8 ] || fail "the ridge is hot at $ridge vertices"

# The default's field is that of a finer mesh, also around a small hot face whose corners reach into others.
printf 'v 0 0 0\nv 60 0 0\nv 60 40 0\nv 0 40 0\nv 20 10 20\nv 30 10 20\nv 30 15 20\nv 20 15 20\nf 1 3 2\nf 1 4 3\nf 5 6 7\nf 5 7 8\nf 1 2 6\nf 1 6 5\nf 2 3 7\nf 2 7 6\nf 3 4 8\nf 3 8 7\nf 4 1 5\nf 4 5 8\n' >wedge.obj
for edge in 2.32 0.58; do
  "$heatmap" wedge.obj --out wedge --name "by_$edge" --hot z+ --cold z- --edge "$edge" >/dev/null
done
# How far the field is at most from the finer one, in thousandths of the span, at the vertices of both.
error=$(
  awk 'FNR == 1 { v = vt = 0 }
    $1 == "v" { place[v++] = $2 " " $3 " " $4 }
    $1 == "vt" && FNR == NR { fine[place[vt++]] = $2 }
    $1 == "vt" && FNR < NR { at = place[vt++]; if (at in fine) { ++n; d = $2 - fine[at]; d = d < 0 ? -d : d; most = d > most ? d : most } }
    END { print n < 8 ? "no vertices in common" : int(1000 * most) }' wedge/by_0.58.obj wedge/by_2.32.obj
)
[ "$error" -lt 10 ] || fail "the refined wedge is wrong by $error thousandths"

# Ctrl-C, while a large mesh is built or written: nothing is left but a sentence.
"$heatmap" "$raw" --out stopped --edge 0.6 >stdout 2>stderr &
pid=$!
until grep -q '^refine .*ms$' stdout; do
  kill -0 $pid || fail "a large mesh: $(cat stderr)"
  sleep 0.05
done
kill -INT $pid
status=0
wait $pid || status=$?
[ "$status $(grep -c 'stopped; nothing was written' stderr)" = "130 1" ] ||
  fail "Ctrl-C answers $status: $(cat stderr)"
[ ! -e stopped ] || fail "Ctrl-C left files"

# The legend beside the result, for any words, and a range that two results share: the same value has
# the same place on the ramp, and the coordinates of the part are what they are without it.
"$heatmap" "$part" --out hot --hot-value 100 --cold-value 20 --title 'a "sink" \ 5 µm' --unit °C \
  --field "$(printf 'T\011\377')" >/dev/null
printf '{"quor": 1,\n "title": "a \\"sink\\" \\\\ 5 µm",\n "unit": "°C",\n "minimum": 20,\n "maximum": 100,\n "field": "T\\u0009?"}\n' |
  diff - hot/heatmap.json || fail "the legend is not what was asked for"
"$heatmap" "$part" --out warm --hot-value 60 --cold-value 20 --range 20 100 >/dev/null
grep -q '"maximum": 100' warm/heatmap.json || fail "the legend does not have the range"
vertices=$(grep -c "^v " hot/heatmap.obj)
[ "$(grep -c "^v " warm/heatmap.obj)" -eq $((vertices + 3)) ] || fail "the range adds other than 3 vertices"
for result in hot warm; do
  grep '^vt ' $result/heatmap.obj | sort | uniq -c >$result.vt
done
# The hottest vertices of the warm result, 60 of 20 to 100, are in the middle of the ramp.
[ "$(awk '$3 == 0.5 {n = $1} END {print n}' warm.vt)" -eq "$(awk '$3 ~ /^0.00099/ {n = $1} END {print n}' hot.vt)" ] ||
  fail "the same value has another colour in the other result"
