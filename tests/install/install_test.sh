#!/bin/bash
# install_test.sh GROUP BUILD_FOLDER WORK_FOLDER: installs (Tree), then builds hosts against the installed tree, moves it
# and runs them there. Hosts know of Kestrelid what a stranger's machine has: the tree, no variables, none of its sources.
set -euo pipefail

group=$1
build=$2
work=$3
here=$(cd "$(dirname "$0")" && pwd)
project=$(cd "$here/../.." && pwd)
passport=$project/samples/bangladesh-on-wood.jpg
prefix=$work/prefix
unset LD_LIBRARY_PATH QML2_IMPORT_PATH QML_IMPORT_PATH PKG_CONFIG_PATH

fail() {
    echo "install_test: $*" >&2
    exit 1
}

# fresh_copy NAME: the tree at another place, which is all that is left of it for the group.
fresh_copy() {
    rm -rf "${work:?}/$1"
    mkdir -p "$work/$1"
    cp -a "$prefix" "$work/$1/prefix"
    prefix=$work/$1/prefix
    libraries=$(dirname "$(find "$prefix" -name 'libkestrelid-detection.so')")
}

# host NAME SOURCE_FOLDER CMAKE_ARGUMENT...: configures and builds a host's project in the group's folder.
host() {
    local name=$1 source=$2
    shift 2
    cmake --no-warn-unused-cli -G Ninja -S "$source" -B "$work/$group/$name" -DCMAKE_PREFIX_PATH="$prefix" "$@" > "$work/$group/$name.log" 2>&1 &&
        cmake --build "$work/$group/$name" >> "$work/$group/$name.log" 2>&1
}

# move_on: the tree moves once more after hosts were built, who then are told where it lies.
move_on() {
    mv "$prefix" "$prefix-moved"
    prefix=$prefix-moved
    libraries=${libraries/\/prefix\//\/prefix-moved\/}
    export LD_LIBRARY_PATH=$libraries
}

Tree() {
    rm -rf "$work"
    mkdir -p "$work"
    cmake --install "$build" --strip --prefix "$prefix" > "$work/install.log"
    [[ -f $prefix/share/doc/Kestrelid/LICENSE ]] || fail "the licence is not installed"
    if grep -rlF -e "$build" -e "$project" "$prefix"; then
        fail "the files above name folders of the build"
    fi
}

Detection() {
    # No pkg-config, no OpenCV and no Qt for the host: whoever asks for them fails here.
    local plain=(-DCMAKE_DISABLE_FIND_PACKAGE_PkgConfig=ON -DCMAKE_DISABLE_FIND_PACKAGE_OpenCV=ON
        -DCMAKE_DISABLE_FIND_PACKAGE_Qt6=ON)
    host consumer "$here/consumer" "${plain[@]}" || fail "$(< "$work/$group/consumer.log")"
    if host unknown "$here/consumer" "${plain[@]}" -DCONSUMER_COMPONENT=Telepathy; then
        fail "a component that does not exist was found"
    fi
    grep -q "Kestrelid has no component Telepathy here; it has: Detection" "$work/$group/unknown.log" ||
        fail "the message for an unknown component is missing: $(< "$work/$group/unknown.log")"
    if [[ -f $libraries/libkestrelid.so ]]; then
        if host no-qt "$here/consumer" "${plain[@]}" -DCONSUMER_COMPONENT=Screens; then
            fail "the screens were found without Qt"
        fi
        grep -q "The screens need Qt 6.4 or later" "$work/$group/no-qt.log" || fail "$(< "$work/$group/no-qt.log")"
    fi

    move_on
    "$work/$group/consumer/consumer" "$passport" | tee "$work/$group/consumer.out"
    grep -qx passport "$work/$group/consumer.out" || fail "the host does not see a passport in $passport"
    grep -qF "$libraries/kestrelid-0/" "$work/$group/consumer.out" || fail "the models were not found in the moved tree"

    unset LD_LIBRARY_PATH
    if [[ -x $prefix/bin/kestrelid ]]; then
        "$prefix/bin/kestrelid" validate "$passport" || fail "the installed command line does not run"
    fi
}

PkgConfig() {
    local flags
    export PKG_CONFIG_PATH=$libraries/pkgconfig
    # Where no other module is known.
    flags=$(PKG_CONFIG_LIBDIR=$libraries/pkgconfig pkg-config --cflags --libs kestrelid-detection) ||
        fail "kestrelid-detection.pc asks for other modules"
    [[ $flags != *opencv* && $flags != *Qt6* ]] || fail "a host of the shared library is told of what is inside: $flags"
    # shellcheck disable=SC2086  # words
    c++ -std=c++20 "$here/consumer/main.cpp" $flags -Wl,-rpath,"$libraries" -o "$work/$group/consumer"
    "$work/$group/consumer" "$passport" | grep -qx passport || fail "the host does not see a passport in $passport"
    if [[ -f $libraries/libkestrelid.so ]]; then
        pkg-config --cflags --libs kestrelid > "$work/$group/screens.flags" || fail "kestrelid.pc does not resolve"
        grep -q -- -lQt6Widgets "$work/$group/screens.flags" || fail "kestrelid.pc does not bring Qt"
        [[ -f $(pkg-config --variable=qmldir kestrelid)/Kestrelid/qmldir ]] || fail "kestrelid.pc does not know the QML module"
    fi
}

Screens() {
    export QT_QPA_PLATFORM=offscreen QT_QUICK_BACKEND=software
    host plugin-host "$here/plugin-host" || fail "$(< "$work/$group/plugin-host.log")"
    # This host links nothing of Kestrelid: the module's plugin finds the libraries by itself, where the tree then lies.
    move_on
    unset LD_LIBRARY_PATH
    timeout 60 "$work/$group/plugin-host/plugin-host" "$libraries/qt6/qml" || fail "import Kestrelid does not work"
    timeout 60 "$prefix/bin/kestrelid-demo" --language bn --screenshot "$work/$group/demo.png" --after 0 ||
        fail "the installed demo does not start, or speaks no Bengali"
}

# Each example alone, as its reader would build it.
Examples() {
    local file name
    for file in "$project"/examples/*/CMakeLists.txt; do
        name=$(basename "${file%/*}")
        if [[ $name == own-recogniser ]] && ! pkg-config --exists tesseract; then
            echo "$name is skipped: install libtesseract-dev and tesseract-ocr-eng"
            continue
        fi
        host "$name" "${file%/*}" || fail "$(< "$work/$group/$name.log")"
    done
    "$project/tests/examples/run_examples.sh" "$work/$group" "$project/samples"
}

# Subproject DEPS_FOLDER FLAGS [BUILD_TYPE]
Subproject() {
    local options=(-DKESTRELID_DEPS_DIR="$1" -DCMAKE_CXX_FLAGS="$2" -DCMAKE_BUILD_TYPE="${3-}")
    if command -v ccache > /dev/null; then
        export CCACHE_BASEDIR=/ CCACHE_NOHASHDIR=1
        options+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    fi
    # In its own subfolder, so that a repeated run compiles nothing again.
    mkdir -p "$work/$group"
    host host "$here/subproject" -DKESTRELID_SOURCE="$project" "${options[@]}" ||
        fail "$(tail -n 40 "$work/$group/host.log")"
    "$work/$group/host/consumer" "$passport" | grep -qx passport || fail "the static host sees no passport in $passport"

    # The static library installed, and found by its package with all that it needs.
    rm -rf "$prefix" "$work/$group/static"
    cmake --install "$work/$group/host" --prefix "$prefix" > "$work/$group/install.log"
    [[ -z $(find "$prefix" -name 'libkestrelid*.so*') ]] || fail "a shared library was built"
    host static "$here/consumer" || fail "$(tail -n 40 "$work/$group/static.log")"
    mkdir -p "$prefix/bin"
    cp "$work/$group/static/consumer" "$prefix/bin/"
    "$prefix/bin/consumer" "$passport" > "$work/$group/static.out"
    grep -qx passport "$work/$group/static.out" || fail "the host of the installed static library sees no passport"
    grep -qF "$prefix/" "$work/$group/static.out" || fail "the models were not found in the tree of the static library"
}

shift 3
case $group in
    Tree | Subproject) ;;
    *) fresh_copy "$group" ;;
esac
"$group" "$@"
