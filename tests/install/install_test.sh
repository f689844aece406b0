#!/bin/bash
# install_test.sh BUILD_FOLDER WORK_FOLDER PASSPORT_PICTURE: installs, builds a host against the installed package,
# moves the installed tree and runs the host and the command line from there
set -euo pipefail

build=$1
work=$2
picture=$3
consumer=$(cd "$(dirname "$0")" && pwd)/consumer
example=$(cd "$(dirname "$0")/../.." && pwd)/examples/judge

fail() {
    echo "install_test: $*" >&2
    exit 1
}

# configure FOLDER COMPONENT
configure() {
    # No pkg-config and no OpenCV for the host: whoever asks for them fails here.
    cmake --no-warn-unused-cli -G Ninja -S "$consumer" -B "$work/$1" -DCMAKE_PREFIX_PATH="$work/prefix" -DCONSUMER_COMPONENT="$2" \
        -DCMAKE_DISABLE_FIND_PACKAGE_PkgConfig=ON -DCMAKE_DISABLE_FIND_PACKAGE_OpenCV=ON
}

rm -rf "$work"
mkdir -p "$work"
cmake --install "$build" --prefix "$work/prefix" > "$work/install.log"
[[ -f $work/prefix/share/doc/Kestrelid/LICENSE ]] || fail "the licence is not installed"
if grep -rlF "$build" "$work/prefix/include" "$work"/prefix/lib*/cmake "$work"/prefix/lib*/*/cmake 2> /dev/null; then
    fail "the files above name the build folder"
fi

configure build Detection
cmake --build "$work/build"

if configure unknown Telepathy > "$work/unknown.log" 2>&1; then
    fail "a component that does not exist was found"
fi
grep -q "Kestrelid has no component Telepathy here; it has: Detection" "$work/unknown.log" ||
    fail "the message for an unknown component is missing: $(< "$work/unknown.log")"

cmake --no-warn-unused-cli -G Ninja -S "$example" -B "$work/example" -DCMAKE_PREFIX_PATH="$work/prefix"
cmake --build "$work/example"

mv "$work/prefix" "$work/moved"
library=$(dirname "$(find "$work/moved" -name 'libkestrelid-detection.so')")
: > "$work/no-picture.jpg"
[[ $(LD_LIBRARY_PATH=$library "$work/example/judge" "$picture") == "a passport" ]] || fail "the example sees no passport"
if LD_LIBRARY_PATH=$library "$work/example/judge" "$work/no-picture.jpg" 2> "$work/example.log"; then
    fail "the example takes an empty file for a picture"
fi
LD_LIBRARY_PATH=$library "$work/build/consumer" "$picture" | tee "$work/consumer.log"
grep -qx passport "$work/consumer.log" || fail "the host does not see a passport in $picture"
grep -qF "$library/kestrelid/" "$work/consumer.log" || fail "the models were not found in the moved tree"

if [[ -x $work/moved/bin/kestrelid ]]; then
    "$work/moved/bin/kestrelid" validate "$picture" || fail "the installed command line does not run"
fi
rm -rf "$work"
