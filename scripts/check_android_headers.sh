#!/usr/bin/env bash
# Builds with Android's own libutils, libcutils and liblog, as Debian packages them, in the place of what
# platform/api and platform/host have of them: the library in both variants with g++ and clang, warnings
# as errors, nothing undefined; and the tests of the library and of the host platform with g++. The programs
# are not built on these libraries.
set -euo pipefail
. "$(dirname "$0")/usage.sh"
cd "$(dirname "$0")/.."

scripts/setup.sh clang tests android-libutils-dev android-libcutils-dev android-liblog-dev \
    android-platform-system-core-headers

# Tests that ask for what Android's own libraries do otherwise.
readonly others=(
    # Android's log library writes a fatal text to standard error itself and then hands it on: these
    # see it twice.
    library.IspMetadataEncodingDeathTest.TheWriterFails
    library.LifecycleDeathTest.InitFails
    library.LifecycleDeathTest.UinitFails
    library.StreamConfigurationDeathTest.TheIspDeviceRejectsTheConfiguration
    # It does not know the host's levels, and names a line that has no tag after the program.
    host.LogTest.ASinkTakesBothKindsOfLines
    host.LogTest.LevelsAreSetByNameAndByTag
    host.LogTest.StandardErrorGetsTheLetterOfTheLevel
    # What Debian has lets an object be deleted while a weak reference is left.
    host.ReferenceDeathTest.AnObjectWithWeakReferencesIsNotItsMakersToDelete
)

# build COMPILER HARDENED TARGET...
build() {
    local log
    cmake --preset android -B "build/android-headers-$1" -DCMAKE_CXX_COMPILER="$1" -DQUEN_HARDENED="$2" \
        -DQUEN_BUILD_TESTS=ON >/dev/null
    log=$(cmake --build "build/android-headers-$1" --target "${@:3}") || {
        echo "$log" >&2
        echo "android: the build with $1 fails, QUEN_HARDENED $2" >&2
        exit 1
    }
}

build clang++-14 ON quenOfflineDevice
build clang++-14 OFF quenOfflineDevice
build g++ ON quenOfflineDevice hardened_request_path_test hardened_isp_metadata_decoding_test
for test in build/android-headers-g++/tests/hardened_*_test; do
    output=$("$test" --gtest_brief=1 2>&1) || {
        echo "$output" >&2
        echo "android: $test fails" >&2
        exit 1
    }
done
mapfile -t tests < <(find tests/host tests/library tests/request_path -name '*_test.cpp' \
    ! -name 'cli_*' | sed 's|^tests/||; s|/|_|; s|\.cpp$||')
build g++ OFF quenOfflineDevice "${tests[@]}"
for library in utils cutils log; do
    readelf -d build/android-headers-g++/quencode/quenOfflineDevice/libquenOfflineDevice.so |
        grep -q "NEEDED.*lib$library.so" || {
        echo "android: the library does not link Android's lib$library" >&2
        exit 1
    }
done

known=$(ctest --test-dir build/android-headers-g++ -N)
for test in "${others[@]}"; do
    grep -q ": $test\$" <<<"$known" || {
        echo "android: there is no test $test to leave out" >&2
        exit 1
    }
done
pattern=$(printf '|%s' "${others[@]//./[.]}")
output=$(ctest --test-dir build/android-headers-g++ -j 2 --output-on-failure --no-tests=error \
    -E "^(${pattern:1})\$|_NOT_BUILT" 2>&1) || {
    echo "$output" >&2
    echo "android: tests fail on Android's own libraries" >&2
    exit 1
}
echo "android: both variants build with Android's own libraries (g++, clang);" \
    "${#others[@]} tests left out, $(sed -n 's/.*% tests passed, .* out of/all pass of/p' <<<"$output")"
