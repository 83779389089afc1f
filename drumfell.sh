#!/usr/bin/env bash
# One door to the project: installs what is missing from Debian's packages, builds, and runs.
set -euo pipefail
caller_dir=$PWD
cd "$(dirname "${BASH_SOURCE[0]}")"
project_dir=$PWD

build_packages=(g++ cmake ninja-build ccache zlib1g-dev libxcb1-dev libxcb-shm0-dev
    libxcb-randr0-dev libxcb-xkb-dev libxcb-cursor-dev libxkbcommon-dev libxkbcommon-x11-dev libdbus-1-dev
    libxcb-xtest0-dev libpugixml-dev libcli11-dev libgtest-dev
    libbenchmark-dev pkg-config libsndfile1-dev libcairo2-dev librsvg2-dev libfreetype-dev fonts-inter
    libkissfft-dev nlohmann-json3-dev)
# Effects of other makers, which the renderer must be able to host; an X server without a screen, with the tables of
# dead keys; a bus for a portal to sit on.
test_packages=(dpf-plugins-vst xvfb libx11-data xkb-data dbus-daemon)
# What reads the reports, and recorded drums.
demo_packages=(jq sonic-pi-samples)
# The drums of the plots, and what makes their files small.
picture_packages=(sonic-pi-samples pngquant)
windows_packages=(g++-mingw-w64-x86-64-posix libz-mingw-w64-dev dpkg-dev googletest)
# Runs what was built for Windows, its windows on an X server without a screen.
wine_packages=(wine wine64 xvfb xauth x11-xkb-utils)
package_packages=(dpkg-dev unzip "${wine_packages[@]}")
fuzz_packages=(clang libclang-rt-14-dev)
check_packages=(clang-format)

usage() {
    cat <<'TEXT'
usage: drumfell.sh COMMAND

  demo       build, do the main job on real input and show the result
  test       build and run all tests
  screenshots
             draw the windows and the plots of the documentation anew, without a screen
  check      tell which sources are not laid out as .clang-format says
  bench      build and run the benchmarks (arguments go to Google Benchmark)
  sanitize   run the tests under AddressSanitizer with UBSan and under ThreadSanitizer, then the long fuzz runs
             (DRUMFELL_FUZZ_SECONDS each, default 60); with --address, --thread or --fuzz only that part
  windows    cross-build library, renderer and tests for Windows with MinGW-w64; with --library only what needs no other
             libraries; with --libraries only those others, from Debian's source packages; with --test (last) run the
             tests under wine, and compare sounds and states with those of Linux
  package    build what users get, a Debian package and a zip for Windows, and try both: installed into empty folders, each
             has to render a loop
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
    if [ "$(id -u)" -ne 0 ]; then
        if ! command -v sudo >/dev/null; then
            echo "Missing packages, which only root can install: apt-get install ${missing[*]}" >&2
            exit 1
        fi
        as_root=(sudo)
    fi
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
        local prefix
        prefix=$(cd "$caller_dir" && realpath -m "$2")
        library_dir=$prefix/lib/vst tool_dir=$prefix/bin
        ;;
    *)
        usage >&2
        exit 2
        ;;
    esac
    need "${build_packages[@]}"
    build release
    # Without what only debuggers read. A new file under the old name: a host that has the old one loaded keeps it whole.
    install -D -s -m 644 build/release/Drumfell.so "$library_dir/Drumfell.so.new"
    mv "$library_dir/Drumfell.so.new" "$library_dir/Drumfell.so"
    echo "$library_dir/Drumfell.so"
    for tool in drumfell-render drumfell-inspect; do
        [ -x "build/release/bin/$tool" ] || continue
        install -D -s -m 755 "build/release/bin/$tool" "$tool_dir/$tool"
        echo "$tool_dir/$tool"
    done
    [[ ":$PATH:" == *":$tool_dir:"* ]] || echo "$tool_dir is not in PATH yet."
}

# Users have the system's libraries, and none of the compiler's.
need_system_alone() {
    local program
    for program in build/"$1"/Drumfell.dll build/"$1"/bin/*.exe; do
        [ -f "$program" ] || continue
        ! x86_64-w64-mingw32-objdump -p "$program" | grep -i 'DLL Name: lib' || {
            echo "$program needs it." >&2
            exit 1
        }
    done
}

# make_windows_libraries [googletest]: what tools and tests for Windows link, or GoogleTest alone.
make_windows_libraries() {
    need "${build_packages[@]}" "${windows_packages[@]}"
    cmake/windows-libraries.sh build/windows-libraries "$@"
}

# build_windows PRESET [TARGET...]; all without one
build_windows() {
    local preset=$1
    shift
    case $preset in
    windows-library) make_windows_libraries googletest ;;
    *) make_windows_libraries ;;
    esac
    build release drumfell-treec drumfell-presetc drumfell-gfxc
    [ $# -gt 0 ] || build release drumfell-inspect # tells tests where views lie
    build "$preset" "$@"
    need_system_alone "$preset"
}

# Runs a program for Windows, with a Windows and a screen of the project's own, and keys of which some are dead. What
# crashes ends instead of waiting for a debugger.
run_wine() {
    mkdir -p "$project_dir/build/wine"
    env LC_ALL=C.UTF-8 WINEPREFIX="$project_dir/build/wine" WINEDEBUG=-all \
        WINEDLLOVERRIDES="mscoree=;mshtml=;winedbg.exe=" \
        xvfb-run -a -s "-noreset -screen 0 1600x1200x24" sh -c 'setxkbmap us intl && exec timeout 600 wine "$@"' sh "$@"
}

# test_windows PRESET: what was built for Windows, run under wine, and held against the same on Linux.
test_windows() {
    local native=build/release/bin windows=build/$1 program failed=()
    need "${wine_packages[@]}"
    build release drumfell-compare
    for program in "$windows"/bin/drumfell-tests-*.exe; do
        echo "== $(basename "$program")"
        run_wine "$program" --gtest_brief=1 || failed+=("$program")
    done
    echo "== sounds and states of Linux and Windows"
    rm -rf build/compare
    $native/drumfell-compare write build/compare/linux
    run_wine "$windows/bin/drumfell-compare.exe" check build/compare/linux || failed+=("Linux's on Windows")
    run_wine "$windows/bin/drumfell-compare.exe" write build/compare/windows
    $native/drumfell-compare check build/compare/windows || failed+=("Windows' on Linux")
    # The tests of the editor have saved a bank, and loaded the factory's, which Linux made, into the list of banks.
    $native/drumfell-inspect "$windows/written/bank.cbf" >/dev/null || failed+=("a bank of Windows")
    cmp <(presets_in "$windows/written/banks") <(presets_in "$windows/resources/FactoryROM.cbf") ||
        failed+=("the list of banks")
    [ ${#failed[@]} -eq 0 ] || {
        printf 'failed: %s\n' "${failed[@]}" >&2
        exit 1
    }
}

# What a bank or list holds, without the lines that tell its kind and name.
presets_in() {
    build/release/bin/drumfell-inspect "$1" | tail -n +3
}

# pack PRESET PATTERN: the package of that build, as found by the pattern.
pack() {
    local made
    rm -f build/"$1"/$2
    (cd "build/$1" && cpack) >"/tmp/drumfell-pack-$$.log" || {
        cat "/tmp/drumfell-pack-$$.log" >&2
        exit 1
    }
    rm -f "/tmp/drumfell-pack-$$.log"
    made=(build/"$1"/$2)
    echo "${made[0]}"
}

# try_render FOLDER LIBRARY COMMAND...: the renderer has to send a loop through that very library and change it.
try_render() {
    local folder=$1 library=$2
    shift 2
    build/release/bin/drumfell-drumloop "$folder/loop.wav"
    (cd "$folder" && HOME=$folder "$@" loop.wav -o out.wav --preset "Extra Sub" --json report.json --quiet) &&
        grep -qF "$library" "$folder/report.json" && [ -s "$folder/out.wav" ] &&
        ! cmp -s "$folder/loop.wav" "$folder/out.wav"
}

package() {
    local debian windows
    need "${build_packages[@]}" "${package_packages[@]}"
    build release Drumfell drumfell-render drumfell-inspect drumfell-drumloop
    build_windows windows Drumfell drumfell-render
    debian=$(pack release "*.deb")
    windows=$(pack windows "*.zip")

    root=$(mktemp -d) # not local: it goes when the program ends
    trap 'rm -rf "$root"' EXIT
    mkdir -p "$root"/{debian/var/lib/dpkg/{info,updates},windows}
    touch "$root/debian/var/lib/dpkg/status"
    # Unpacked, not configured: an empty root has no shell to run anything.
    dpkg --root="$root/debian" --force-not-root --log=/dev/null --unpack "$debian" >/dev/null
    try_render "$root/debian" "$root/debian/usr/lib/vst/Drumfell.so" "$root/debian/usr/bin/drumfell-render" || {
        echo "$debian does not work." >&2
        exit 1
    }
    unzip -q "$windows" -d "$root/windows"
    mv "$root"/windows/*/* "$root/windows"
    try_render "$root/windows" '\\Drumfell.dll' run_wine drumfell-render.exe || {
        echo "$windows does not work." >&2
        exit 1
    }
    ls -l "$debian" "$windows"
}

run_tests() {
    ctest --preset "$1" -j "$(nproc)"
}

# sanitize PRESET: all tests under the sanitizers of that build.
sanitize() {
    need "${build_packages[@]}" "${test_packages[@]}"
    build "$1"
    run_tests "$1"
}

# Longer than the ordinary tests do, and guided by what the inputs reach.
fuzz() {
    local fuzzer seconds=${DRUMFELL_FUZZ_SECONDS:-60}
    need "${build_packages[@]}" "${fuzz_packages[@]}"
    build fuzz drumfell-fuzzers
    for fuzzer in build/fuzz/bin/drumfell-fuzz-*; do
        echo "== $(basename "$fuzzer"), $seconds s"
        "$fuzzer" -max_total_time="$seconds" -rss_limit_mb=1024 -timeout=10 -print_final_stats=1 \
            -artifact_prefix=build/fuzz/ 2>&1 | grep -vE '^#|^INFO|NEW|REDUCE|pulse' || exit 1
    done
}

# The files of the demo, one a line: a recorded break and a bass drum, or a generated loop where they are not to be had.
demo_loops() {
    local folder=/usr/share/sonic-pi/samples
    if (need "${demo_packages[@]}") >&2 && [ -f "$folder/loop_amen.flac" ]; then
        printf '%s\n' "$folder/loop_amen.flac" "$folder/drum_bass_hard.flac"
    else
        echo "Recorded drums could not be installed; this is a generated loop." >&2
        build/release/bin/drumfell-drumloop build/demo/generated_loop.wav
        echo build/demo/generated_loop.wav
    fi
}

# Sounds that reach full scale get headroom, as in a mix; what goes over it all the same is kept by floating point.
demo() {
    local presets=("Acoustic Drums Punch" "Defined Kicks" "Extra Sub") loops preset folder
    rm -rf build/demo
    mkdir -p build/demo
    mapfile -t loops < <(demo_loops)
    [ ${#loops[@]} -gt 0 ] || exit 1
    for preset in "${presets[@]}"; do
        folder="build/demo/${preset// /_}"
        mkdir -p "$folder"
        build/release/bin/drumfell-render "${loops[@]}" --preset "$preset" --input-gain -9 --tail 0.5 \
            --output-dir "$folder" --type wav --format float --plot "$folder" --json "$folder/report.json" \
            -j "$(nproc)" --quiet
    done
    demo_table build/demo/*/report.json
    echo
    echo "Listen and look; each folder also has its report.json:"
    ls -d build/demo/*/*.wav build/demo/*/*.png | sed 's/^/  /'
}

demo_table() {
    local heads='%-22s %-22s %15s %15s %15s %8s %8s\n'
    local LC_ALL=C
    printf "$heads" "" "" "peak dB" "RMS dB" "< 120 Hz dB" "delay" "times"
    printf "$heads" "loop" "preset" "before   after" "before   after" "before   after" "samples" "real"
    jq -r '.files[] | [(.input | split("/") | last), .preset, .before.peakDb, .after.peakDb, .before.rmsDb, .after.rmsDb,
            .before.lowBandRmsDb, .after.lowBandRmsDb, .latencySamples, .realTimeFactor]
        | map(. // "-inf") | @tsv' "$@" |
        while IFS=$'\t' read -r -a cells; do
            printf '%-22s %-22s %7.1f %7.1f %7.1f %7.1f %7.1f %7.1f %8d %8.1f\n' "${cells[@]}"
        done
}

# picture NAME [option of the inspector...]
picture() {
    local name=$1
    shift
    build/release/bin/drumfell-inspect --views --png "Docs/pictures/$name.png" --scale 1.25 "$@" 2>/dev/null
    echo "Docs/pictures/$name.png"
}

screenshots() {
    local sound=(--sound 1.5 --level -16 --set "instance-name=Kick bus" --set punch-enable=On --set punch-gain=5 --set sat-enable=On --set sat-drive=16.4
        --set sat-gain=-4.5 --set sub-enable=On --set sub-gain=-6 --set mono-enable=On --set mix-gain=1.2) palette
    local window
    mkdir -p Docs/pictures
    picture main "${sound[@]}" --hover ui.main-window.c.mix.row.sub
    for palette in Blue Green Military Red; do
        picture "main-${palette,,}" "${sound[@]}" --palette "$palette"
    done
    for window in settings global-settings preset-manager channel-routing; do
        picture "$window" --window "ui:win-$window"
    done
    plot punch --set PncEnab=On --set PncGain=+9
    plot saturation --set SatEnab=On --set SatDrv=+18
    plot sub --set SubEnab=On --set XOverFr=120
}

# plot NAME [option of the renderer...]: a recorded bass drum before and after.
plot() {
    local name=$1 sound
    shift
    sound=$(mktemp --suffix .wav)
    build/release/bin/drumfell-render /usr/share/sonic-pi/samples/drum_bass_hard.flac --input-gain -9 --tail 0.5 --quiet \
        -o "$sound" --plot "Docs/pictures/plot-$name.png" "$@"
    rm -f "$sound"
    pngquant --force --ext .png 32 "Docs/pictures/plot-$name.png"
    echo "Docs/pictures/plot-$name.png"
}

case "${1:-}" in
demo)
    need "${build_packages[@]}" "${demo_packages[@]:0:1}"
    build release Drumfell drumfell-render drumfell-drumloop
    demo
    ;;
test)
    need "${build_packages[@]}" "${test_packages[@]}"
    build release
    run_tests release
    ;;
screenshots)
    need "${build_packages[@]}" "${picture_packages[@]}"
    build release Drumfell drumfell-inspect drumfell-render
    screenshots
    ;;
check)
    need "${check_packages[@]}"
    find Sources Tests Tools Benchmarks -name '*.h' -o -name '*.cpp' | xargs clang-format --dry-run --Werror
    ;;
bench)
    shift
    need "${build_packages[@]}"
    build release drumfell-bench
    build/release/bin/drumfell-bench "$@"
    ;;
sanitize)
    shift
    case "$*" in
    "")
        sanitize asan-ubsan
        sanitize tsan
        fuzz
        ;;
    --address) sanitize asan-ubsan ;;
    --thread) sanitize tsan ;;
    --fuzz) fuzz ;;
    *)
        usage >&2
        exit 2
        ;;
    esac
    ;;
windows)
    shift
    case "$*" in
    "")
        build_windows windows
        ls -l build/windows/Drumfell.dll build/windows/bin/drumfell-render.exe
        ;;
    --library)
        build_windows windows-library
        ls -l build/windows-library/Drumfell.dll
        ;;
    --libraries)
        make_windows_libraries
        ;;
    --test)
        build_windows windows
        test_windows windows
        ;;
    "--library --test")
        build_windows windows-library
        test_windows windows-library
        ;;
    *)
        usage >&2
        exit 2
        ;;
    esac
    ;;
package)
    package
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
