#!/usr/bin/env bash
# Installs what is missing, builds tamesh and runs it on real scanned meshes: draws pictures of them,
# finds paths, packs them as documents, whole and small, and shows those with their figures; makes
# meshes of its own, too. Then the whole road in one session: meshes from a file and from a server,
# commands beside one another, results in a document, and that as a report. A second run does only
# what is new. Nothing is written outside build/.
set -euo pipefail
cd "$(dirname "$0")/.."

tamesh=build/release/bin/tamesh
meshes=build/meshes  # input: fetched once
results=build/demo
package=libcgal-demo # a Debian package that carries scanned meshes

# Name, vertices, faces: what the scans are known to have. The length of the shortest path from the
# first to the last vertex, found in double precision by a program of its own.
scans=('bunny00 37706 75408 0.23710917717' 'refined_elephant 44460 88928 0.61170611760'
    'armadillo 26002 52000 141.78811445')

step() { printf '\n== %s\n' "$*"; }

quietly() { # shows what a command said only when it fails
    local log status=0
    log=$(mktemp)
    "$@" >"$log" 2>&1 || status=$?
    [ $status -eq 0 ] || cat "$log" >&2
    rm -f "$log"
    return $status
}

have_scans() {
    local scan
    for scan in "${scans[@]}"; do
        [ -s "$meshes/${scan%% *}.off" ] || return 1
    done
}

download_package() {
    apt-get download "$package" >/dev/null 2>&1 && return
    # The package lists of a fresh machine may be missing or old.
    local as_root=()
    [ "$(id -u)" -eq 0 ] || as_root=(sudo -n)
    "${as_root[@]}" apt-get update >/dev/null 2>&1 || true
    apt-get download "$package" >/dev/null 2>&1
}

fetch_scans() (
    command -v apt-get >/dev/null && command -v dpkg-deb >/dev/null || return 1
    mkdir -p "$meshes"
    target=$PWD/$meshes
    # On the same file system, so that each mesh is moved in one step.
    work=$(mktemp -d "$target/fetch.XXXXXX")
    trap 'rm -rf "$work"' EXIT
    cd "$work"
    download_package || return 1
    dpkg-deb -x ./"$package"_*.deb package || return 1
    data=$(find package -name data.tar.gz -print -quit)
    [ -n "$data" ] || return 1
    files=("${scans[@]%% *}")
    files=("${files[@]/#/data/meshes/}")
    tar -xzf "$data" "${files[@]/%/.off}" || return 1
    # Moved only when all is there, so that an interrupted run leaves no half of a mesh behind.
    mv data/meshes/*.off "$target"
)

figure() { # name of a figure, then a command that prints figures
    "${@:2}" | sed -n "s/^  $1  *//p"
}

check() { # what, is, should be
    [ "$2" = "$3" ] || {
        echo "demo: $1 is $2, but should be $3" >&2
        exit 1
    }
}

check_scan() { # a mesh, vertices, faces: one that is not as it should be is fetched again next time
    local found
    found="$(figure vertices "$tamesh" info "$1") $(figure faces "$tamesh" info "$1")" || found='not known'
    [ "$found" = "$2 $3" ] || rm -f "$1"
    check "the number of vertices and faces of $1" "$found" "$2 $3"
}

draw() { # a mesh: a scan, which has y upward, by its curvature, another one by height
    local picture how=(--by height)
    picture=$results/$(basename "$1" .off).png
    [ "${1%/*}" != "$meshes" ] || how=(--by curvature --up y --view 1,1,2)
    if [ ! "$picture" -nt "$1" ] || [ ! "$picture" -nt "$tamesh" ]; then
        "$tamesh" picture "$1" "${how[@]}" -o "$picture"
    fi
    echo "$picture"
}

pack_and_show() { # a mesh
    local name document
    name=$(basename "$1" .off)
    document=$results/$name.tadoc
    if [ ! "$document" -nt "$1" ] || [ ! "$document" -nt "$tamesh" ]; then
        "$tamesh" pack "$1" -o "$document"
    fi
    "$tamesh" show "$document" | tee "$results/$name.txt"
    # The figures, and then the data tree with what was known of the mesh when it was packed.
    check "what the document of $name shows" \
        "$(sed -e 1d -e '/^  Root /,$d' "$results/$name.txt")" "$("$tamesh" info "$1" | tail -n +2)"
    check "the vertices in the data tree of $name" \
        "$(sed -n 's/.*-- Vertices (.*) = //p' "$results/$name.txt")" \
        "$(figure vertices "$tamesh" info "$1")"
    printf '  %-20s %s bytes of text, %s bytes as a document\n' stored \
        "$(stat -c %s "$1")" "$(stat -c %s "$document")"
}

pack_small() { # a mesh
    local name packed
    name=$(basename "$1" .off)
    packed=$results/$name.packed
    "$tamesh" pack "$1" -o "$packed.tadoc" --lossless >"$packed.txt"
    "$tamesh" unpack "$packed.tadoc" -o "$packed.off"
    check "what the losslessly packed $name shows" \
        "$("$tamesh" info "$packed.off" | tail -n +2)" "$("$tamesh" info "$1" | tail -n +2)"
    check "the largest error of the losslessly packed $name" \
        "$(figure 'largest error' cat "$packed.txt")" 'none: all bits are the same'
    "$tamesh" pack "$1" -o "$packed.tadoc" --bits 14 | tee "$packed.txt"
    "$tamesh" unpack "$packed.tadoc" -o "$packed.off"
    check "the faces of the packed $name" \
        "$(figure faces "$tamesh" info "$packed.off")" "$(figure faces "$tamesh" info "$1")"
}

find_path() { # a mesh, the length that its path should have
    local name last
    name=$results/$(basename "$1" .off).path
    last=$(($(figure vertices "$tamesh" info "$1") - 1))
    "$tamesh" path "$1" --from 0 --to "$last" -o "$name.obj" --picture "$name.png" \
        --up y --view 1,1,2 >"$name.txt"
    check "the length of the path in $1" \
        "$(printf %.5g "$(figure length cat "$name.txt")")" "$(printf %.5g "$2")"
    echo "$name.png: $(figure length cat "$name.txt") long, $(figure vertices cat "$name.txt") vertices"
}

serve() { # a folder: a server on this machine alone, until the demo ends; its port is in a file
    rm -f "$results/port"
    python3 - "$1" <<'PYTHON' >"$results/port" &
import functools, http.server, sys
handler = functools.partial(http.server.SimpleHTTPRequestHandler, directory=sys.argv[1])
handler.log_message = lambda *_: None
server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), handler)
print(server.server_port, flush=True)
server.serve_forever()
PYTHON
    server=$!
    trap 'kill $server 2>/dev/null || true' EXIT
    for _ in $(seq 100); do
        [ ! -s "$results/port" ] || break
        sleep 0.1
    done
}

step 'What it needs, and building it'
tools/setup.sh
quietly cmake --preset release
quietly cmake --build --preset release --target tamesh
echo "$("$tamesh" --version) is in $tamesh"
mkdir -p "$results"

step 'Scanned meshes'
rm -rf "$meshes"/fetch.* # of a run that was killed
have_scans || fetch_scans || true
inputs=()
if have_scans; then
    for scan in "${scans[@]}"; do
        read -r name vertices faces _ <<<"$scan"
        mesh=$meshes/$name.off
        check_scan "$mesh" "$vertices" "$faces"
        inputs+=("$mesh")
    done
    echo "in $meshes, from the Debian package $package: vertices and faces are as they should be"
else
    echo "The Debian package $package cannot be had here, so tamesh makes its input itself."
fi

step 'Meshes that tamesh makes'
for shape in 'terrain 150' 'torus 150' 'sphere 75'; do
    read -r kind resolution <<<"$shape"
    mesh=$results/$kind.off
    [ "$mesh" -nt "$tamesh" ] || "$tamesh" make "$kind" "$resolution" -o "$mesh"
    inputs+=("$mesh")
done
check 'the Euler characteristic of the torus' \
    "$(figure 'Euler characteristic' "$tamesh" info "$results/torus.off")" 0
check 'the Euler characteristic of the sphere' \
    "$(figure 'Euler characteristic' "$tamesh" info "$results/sphere.off")" 2
echo "in $results: terrain.off, torus.off, sphere.off"

step 'Pictures'
for mesh in "${inputs[@]}"; do
    draw "$mesh"
done

if have_scans; then
    step 'Shortest paths'
    for scan in "${scans[@]}"; do
        read -r name _ _ length <<<"$scan"
        find_path "$meshes/$name.off" "$length"
    done
fi

step 'Packed, read back, and the same as before'
for mesh in "${inputs[@]}"; do
    pack_and_show "$mesh"
done

step 'Packed to a fraction: lossless, then with 14 bits for each coordinate'
for mesh in "${inputs[@]}"; do
    pack_small "$mesh"
done

step 'The whole road: a session from a mesh to a document and a report'
first=${inputs[0]}
name=$(basename "$first" .off)
road=$results/road
up=z
[ "${first%/*}" != "$meshes" ] || up=y
serve "$(dirname "$first")"
"$tamesh" make terrain 60 -o "$results/small.off"
cat >"$road.txt" <<SCRIPT
# What happens in the background and what comes behind it work on different meshes.
open $results/small.off
info $name; components $name
distance $name --from 0 &
picture small -o $results/small.png --size 600x400
wait
path $name --from 0 --to $(($(figure vertices "$tamesh" info "$first") - 1))
colour $name --by distance
picture $name --path --up $up --view 1,1,2 -o $road.png
pack $name --bits 16
save $name -o $road.tadoc
close $name
open $road.tadoc --as again
SCRIPT
echo "http://127.0.0.1:PORT/$name.off, and the commands of $road.txt:"
"$tamesh" run "http://127.0.0.1:$(cat "$results/port")/$name.off" --script "$road.txt" \
    | cut -c1-100 | tee "$road.log"
check 'the number of vertices that came over the network and through the document' \
    "$(sed -n 's/^again: \([0-9]*\) vertices.*/\1/p' "$road.log")" \
    "$(figure vertices "$tamesh" info "$first")"
"$tamesh" check "$road.tadoc"
"$tamesh" report "$road.tadoc" -o "$road.html"

step 'A document without its end'
"$tamesh" check "$results/sphere.tadoc"
head -c 9000 "$results/sphere.tadoc" >"$results/damaged.tadoc"
code=0
"$tamesh" salvage "$results/damaged.tadoc" -o "$results/salvaged.tadoc" 2>&1 || code=$?
check 'the exit code of the loss' "$code" 1
"$tamesh" check "$results/salvaged.tadoc"

step 'A mesh with a fault'
printf 'OFF\n3 1 0\n0 0 0\n1 0 0\n0 1 0\n3 0 1 7\n' >"$results/fault.off"
code=0
"$tamesh" info "$results/fault.off" 2>&1 || code=$?
check 'the exit code' "$code" 1

step 'Done'
echo "Pictures (.png), documents (.tadoc) and their figures (.txt) are in $results, the"
echo "meshes in $meshes and $results. Try: $tamesh --help, or $tamesh shell $first"
echo "a picture:  $road.png"
echo "a document: $road.tadoc"
echo "a report:   $road.html"
