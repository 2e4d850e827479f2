#!/bin/sh
# scripts_test SCRIPTS: each script of this directory says what it wants when it is asked, and when it is
# called in a way that it does not know; then it does nothing else.
set -eu
scripts=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
  echo "scripts_test: $1" >&2
  exit 1
}

# refuses WORDS SCRIPT ARGUMENT...
refuses() {
  words=$1
  script=$2
  shift 2
  status=0
  (cd "$work" && timeout 20 "$scripts/$script" "$@" >stdout 2>stderr </dev/null) || status=$?
  [ $status -eq 2 ] || fail "$script answers $status to '$*': $(cat "$work/stderr")"
  grep -q -- "$words" "$work/stderr" || fail "$script says of '$*': $(cat "$work/stderr")"
  [ "$(wc -l <"$work/stderr")" -gt 1 ] || fail "$script does not say what it wants"
  [ ! -s "$work/stdout" ] || fail "$script works before it refuses '$*': $(cat "$work/stdout")"
}

# A Python that comes first on the path, without what Debian's has, is not what runs here.
mkdir "$work/bin"
printf '#!/bin/sh\necho "another Python"\nexit 9\n' >"$work/bin/python3"
chmod +x "$work/bin/python3"
export PATH="$work/bin:$PATH"
for plot in "$scripts"/../benchmarks/plot_*.py; do
  ! "$plot" 2>&1 | grep 'another Python' || fail "$plot takes any Python"
done

for script in "$scripts"/* "$scripts"/steps/*; do
  [ ! -d "$script" ] || continue
  path=${script#"$scripts"/} name=$(basename "$script")
  [ -x "$script" ] || continue  # what is not executable is no script
  # Whoever does not look at the arguments would start to install and to build.
  grep -qE '^\. "\$\(dirname "\$0"\)/(steps/)?usage"|sys\.argv' "$script" || fail "$name takes anything"
  timeout 20 "$script" --help >"$work/help" || fail "$name --help: status $?"
  head -n 1 "$work/help" | grep -qE "^$name( .*)?:" || fail "$name --help says $(cat "$work/help")"
  refuses "^$name: " "$path" --no-such-option
done

refuses 'name one of the six' bench
refuses '"wled" is no benchmark' bench wled
refuses 'none of these is a file: part.stl --out o' demo part.stl --out o
refuses '"soon" is no number' fuzz soon
refuses 'does not know.*"--chekc"' format --chekc
refuses 'does not know.*"now"' release now
refuses 'does not know.*"now"' test_release --made now
refuses 'needs an OBJ' steps/picture
refuses 'there is no file part.obj' steps/picture part.obj part.png
touch "$work/part.obj"
refuses '"part.jpg" is not the name of a picture' steps/picture part.obj part.jpg
refuses '"up" is not NAME=VALUE' steps/picture part.obj part.png up
refuses 'is no purpose "tset". There are: .*test' setup build tset
refuses 'for which purpose? There are: build' setup
refuses 'is not the name of a page' steps/viewer_page ../viewer
refuses 'does not know.*"3"' view . 1 3
# What installs needs root, and says so at once.
if command -v setpriv >/dev/null && [ "$(id -u)" -eq 0 ] && [ -f /etc/debian_version ]; then
  mkdir -p "$work/scripts/steps"
  cp "$scripts/setup" "$work/scripts"
  cp "$scripts/steps/usage" "$work/scripts/steps"
  echo "build a-package-that-nobody-has" >"$work/scripts/steps/packages.txt"
  chmod -R a+rX "$work"
  if setpriv --reuid 65534 --regid 65534 --clear-groups "$work/scripts/setup" build >"$work/log" 2>&1; then
    fail "setup installs for anybody"
  fi
  grep -q 'needs root' "$work/log" || fail "setup as another user says: $(cat "$work/log")"
  # Root may read everything but for this.
  unprivileged='setpriv --bounding-set=-dac_override,-dac_read_search'
else
  unprivileged=
fi
mkdir -m 000 "$work/mine"
if timeout 20 $unprivileged "$scripts/view" "$work/mine" 0 >"$work/log" 2>&1; then
  fail "view shows what it cannot read"
fi
[ "$(cat "$work/log")" = "view: $work/mine is not yours to read" ] || fail "view says: $(cat "$work/log")"
