#!/usr/bin/env bash
# Builds the sanitizer preset if necessary and runs its unit tests.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/../.."

# Each line gets a prefix, so that this summary is not mistaken for that of the whole run.
exec > >(sed -u 's/^/sanitizer: /') 2>&1

[[ -e build/asan/build.ninja ]] || cmake --preset asan -DPENWICK_WARNINGS_AS_ERRORS=ON
cmake --build --preset asan

export ASAN_OPTIONS=detect_stack_use_after_return=1:strict_string_checks=1
# Fontconfig, GLib and Qt's plugins never free some of their allocations.
export LSAN_OPTIONS=suppressions=$PWD/tests/checks/leaks.txt:print_suppressions=0
export UBSAN_OPTIONS=print_stacktrace=1
# One test more than cores, because many of them wait for another process.
# Left out: what passed, so that a failure is found in a report of which only the end is kept.
ctest --test-dir build/asan --output-on-failure --no-tests=error --parallel "$(($(nproc) + 1))" |
    sed -u -e '/^ *Start *[0-9]*: /d' -e '/ Test *#[0-9]*: .* Passed /d' -e '/^PASS   : /d'
