#!/usr/bin/env bash
# windows-libraries.sh FOLDER [googletest]: what tools and tests for Windows link, built as static libraries from Debian's
# sources into FOLDER, since Debian has no packages of them for MinGW; or GoogleTest alone, whose sources are an ordinary
# package. Does nothing for a library that is there.
set -euo pipefail
folder=$(realpath -m "$1")
toolchain=$(realpath "$(dirname "${BASH_SOURCE[0]}")/windows-toolchain.cmake")
mkdir -p "$folder/src" "$folder/include"

# Source packages come from the places that are set up for packages, without a change to the system's lists.
apt_sources=$folder/src/apt
as_source() {
    apt-get -o Dir::Etc::sourcelist=/dev/null -o Dir::Etc::sourceparts="$apt_sources/sources.list.d" \
        -o Dir::State::lists="$apt_sources/lists" -o Dir::Cache="$apt_sources/cache" \
        -o APT::Sandbox::User="$(id -un)" "$@"
}

update_sources() {
    local file
    mkdir -p "$apt_sources"/{sources.list.d,lists/partial,cache/archives/partial}
    for file in /etc/apt/sources.list /etc/apt/sources.list.d/*; do
        [ -f "$file" ] && grep -q '/debian' "$file" || continue
        # One-line files have the .list that the plain name lacks.
        sed -e 's/^Types: deb$/Types: deb-src/' -e 's/^deb /deb-src /' "$file" \
            >"$apt_sources/sources.list.d/$(basename "$file")"
    done
    if [ -f "$apt_sources/sources.list.d/sources.list" ]; then
        mv "$apt_sources/sources.list.d/sources.list" "$apt_sources/sources.list.d/main.list"
    fi
    as_source update -qq || {
        rm -rf "$apt_sources"
        return 1
    }
}

fetch() {
    [ -d "$folder/src/$1" ] && return
    [ -d "$apt_sources" ] || update_sources
    rm -rf "$folder/src/$1.new" # of an attempt that failed
    mkdir "$folder/src/$1.new"
    (cd "$folder/src/$1.new" && as_source source -qq "$1" >/dev/null)
    mv "$folder/src/$1.new" "$folder/src/$1"
}

# make_library NAME SOURCES CMAKE_OPTION...
make_library() {
    local name=$1 sources=$2
    shift 2
    cmake -S "$sources" -B "$folder/src/build-$name" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$toolchain" \
        -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$folder" -DBUILD_SHARED_LIBS=OFF "$@" \
        >"$folder/src/$name.log" 2>&1 &&
        cmake --build "$folder/src/build-$name" --target install ${DRUMFELL_JOBS:+-j "$DRUMFELL_JOBS"} \
            >>"$folder/src/$name.log" 2>&1 || {
        cat "$folder/src/$name.log" >&2
        return 1
    }
}

# need_library FILE PACKAGE CMAKE_OPTION...: from a Debian source package.
need_library() {
    local file=$1 package=$2
    shift 2
    [ -f "$folder/lib/$file" ] && return
    fetch "$package"
    make_library "$package" "$(echo "$folder/src/$package"/*/)" "$@"
}

[ -f "$folder/lib/libgtest.a" ] || make_library googletest /usr/src/googletest -DBUILD_GMOCK=OFF
[ "${2:-}" = googletest ] && exit

# Of this folder, not of the system that builds.
export PKG_CONFIG_LIBDIR=$folder/lib/pkgconfig

need_library libogg.a libogg
need_library libvorbisenc.a libvorbis
need_library libFLAC.a flac -DBUILD_CXXLIBS=OFF -DBUILD_PROGRAMS=OFF -DBUILD_EXAMPLES=OFF -DBUILD_TESTING=OFF -DBUILD_DOCS=OFF \
    -DINSTALL_MANPAGES=OFF -DWITH_STACK_PROTECTOR=OFF -DWITH_FORTIFY_SOURCE=OFF
# libsndfile takes all coders or none. This one's files for CMake are not in its package.
if [ ! -f "$folder/lib/libopus.a" ]; then
    fetch opus
    (cd "$folder"/src/opus/*/ &&
        ./configure --host=x86_64-w64-mingw32 CC=x86_64-w64-mingw32-gcc-posix --prefix="$folder" --disable-shared \
            --disable-doc --disable-extra-programs --disable-stack-protector &&
        make -j "${DRUMFELL_JOBS:-$(nproc)}" install) >"$folder/src/opus.log" 2>&1 || {
        cat "$folder/src/opus.log" >&2
        exit 1
    }
    mkdir -p "$folder/lib/cmake/Opus"
    cat >"$folder/lib/cmake/Opus/OpusConfig.cmake" <<TEXT
add_library(Opus::opus STATIC IMPORTED)
set_target_properties(Opus::opus PROPERTIES IMPORTED_LOCATION $folder/lib/libopus.a
    INTERFACE_LINK_LIBRARIES $(x86_64-w64-mingw32-gcc-posix -print-file-name=libssp.a)) # it checks its bounds
TEXT
fi
need_library libsndfile.a libsndfile -DENABLE_EXTERNAL_LIBS=ON -DENABLE_MPEG=OFF -DBUILD_PROGRAMS=OFF -DBUILD_EXAMPLES=OFF \
    -DBUILD_TESTING=OFF -DENABLE_CPACK=OFF -DCMAKE_C_FLAGS=-DFLAC__NO_DLL
need_library libpugixml.a pugixml
# Headers without a library are the same for all systems.
cp -rp -t "$folder/include" /usr/include/CLI /usr/include/nlohmann /usr/include/kissfft
