#!/usr/bin/env bash
# One door to the project: installs what is missing from Debian's packages, builds, and runs.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

build_packages=(g++ cmake ninja-build ccache zlib1g-dev libx11-dev libpugixml-dev libcli11-dev libgtest-dev
    libbenchmark-dev)
windows_packages=(g++-mingw-w64-x86-64-posix libz-mingw-w64-dev)
fuzz_packages=(clang libclang-rt-14-dev)

usage() {
    cat <<'TEXT'
usage: drumfell.sh COMMAND

  demo       build, do the main job on real input and show the result
  test       build and run all tests
  bench      build and run the benchmarks (arguments go to Google Benchmark)
  sanitize   run the tests under AddressSanitizer with UBSan and under ThreadSanitizer, then the long fuzz runs
             (DRUMFELL_FUZZ_SECONDS each, default 60)
  windows    cross-build the Windows library with MinGW-w64
  install    put the library where hosts look, ~/.vst, and the tools into ~/.local/bin; with --prefix DIR into DIR/lib/vst
             and DIR/bin
  clean      remove all builds

Every command first installs the Debian packages it needs, if any is missing.
TEXT
}

# Installs the packages of the list that are not there; says nothing and touches nothing when all are.
need() {
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f '${db:Status-Abbrev}' "$package" 2>/dev/null | grep -q '^ii' || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    local as_root=()
    [ "$(id -u)" -eq 0 ] || as_root=(sudo)
    echo "Installing ${missing[*]}"
    "${as_root[@]}" apt-get update -qq
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

# build PRESET [TARGET...]
build() {
    local preset=$1
    shift
    cmake --preset "$preset" >"/tmp/drumfell-configure-$$.log" || {
        cat "/tmp/drumfell-configure-$$.log"
        exit 1
    }
    rm -f "/tmp/drumfell-configure-$$.log"
    cmake --build --preset "$preset" ${1:+--target "$@"}
}

# install_product [--prefix DIR]
install_product() {
    local library_dir=$HOME/.vst tool_dir=$HOME/.local/bin tool
    case "${1:-}" in
    "") ;;
    --prefix)
        [ -n "${2:-}" ] && [ $# -eq 2 ] || { usage >&2; exit 2; }
        library_dir=$2/lib/vst tool_dir=$2/bin
        ;;
    *)
        usage >&2
        exit 2
        ;;
    esac
    need "${build_packages[@]}"
    build release
    # A new file under the old name: a host that has the old one loaded keeps it whole.
    install -D -m 644 build/release/Drumfell.so "$library_dir/Drumfell.so.new"
    mv "$library_dir/Drumfell.so.new" "$library_dir/Drumfell.so"
    echo "$library_dir/Drumfell.so"
    for tool in drumfell-render drumfell-inspect; do
        [ -x "build/release/bin/$tool" ] || continue
        install -D -m 755 "build/release/bin/$tool" "$tool_dir/$tool"
        echo "$tool_dir/$tool"
    done
}

run_tests() {
    ctest --preset "$1" -j "$(nproc)"
}

case "${1:-}" in
demo)
    need "${build_packages[@]}"
    build release
    build/release/bin/drumfell-inspect build/release/resources/SharedData.xml
    echo
    echo "This is the compiled tree in build/release/Drumfell.so. Rendering audio comes with the host boundary."
    ;;
test)
    need "${build_packages[@]}"
    build release
    run_tests release
    ;;
bench)
    shift
    need "${build_packages[@]}"
    build release drumfell-bench
    build/release/bin/drumfell-bench "$@"
    ;;
sanitize)
    need "${build_packages[@]}" "${fuzz_packages[@]}"
    build asan-ubsan
    run_tests asan-ubsan
    build tsan
    run_tests tsan
    build fuzz drumfell-fuzzers
    for fuzzer in build/fuzz/bin/drumfell-fuzz-*; do
        echo "== $(basename "$fuzzer"), ${DRUMFELL_FUZZ_SECONDS:-60} s"
        "$fuzzer" -max_total_time="${DRUMFELL_FUZZ_SECONDS:-60}" -rss_limit_mb=1024 -timeout=10 -print_final_stats=1 \
            -artifact_prefix=build/fuzz/ 2>&1 | grep -vE '^#|^INFO|NEW|REDUCE|pulse' || exit 1
    done
    ;;
windows)
    need "${build_packages[@]}" "${windows_packages[@]}"
    build release drumfell-treec drumfell-presetc
    build windows
    ls -l build/windows/Drumfell.dll
    ;;
install)
    shift
    install_product "$@"
    ;;
clean)
    rm -rf build
    ;;
-h | --help | help)
    usage
    ;;
*)
    usage >&2
    exit 2
    ;;
esac
