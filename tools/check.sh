#!/usr/bin/env bash
# Checks the sources without running the program.
#
#   tools/check.sh [format] [layers] [wording] [bench] [cppcheck] [tidy]     default: all of these
#   tools/check.sh analyzer      clang's path-sensitive analyzer: slow, so not part of ./test
#   tools/check.sh tests         everything, same as ./test
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."

mapfile -t folders <<<"$(tools/check-layers.py --folders)"

check_format() {
    tools/format --check
}

# Runs clang-tidy with the checks of .clang-tidy, changed by $1. It spends most of its time per file on the
# declarations in Qt's headers: a file with all sources of a target (unity build) takes hardly longer than one
# with a few. Therefore names in the unnamed namespaces of a target must differ.
run_tidy() {
    local all
    all=$(IFS='|'; echo "${folders[*]}")
    cmake --preset release -B build/tidy -DCMAKE_CXX_COMPILER=clang++ -DPENWICK_TESTS=OFF \
        -DPENWICK_BENCH=ON -DCMAKE_UNITY_BUILD=ON \
        -DCMAKE_UNITY_BUILD_BATCH_SIZE=0 -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON -DCMAKE_AUTOMOC=OFF >/dev/null
    # run-clang-tidy succeeds when it finds no file.
    if ! grep -qE "/build/tidy/($all)/.*/Unity/" build/tidy/compile_commands.json; then
        echo "check.sh: there is no source to check" >&2
        return 1
    fi
    run-clang-tidy -quiet -p build/tidy -header-filter "/($all)/[^.]*\.(h|cpp)$" \
        -checks="-bugprone-suspicious-include,$1" "/build/tidy/($all)/.*/Unity/"
}

# Nothing else in ./test compiles the benchmarks; the check that is named only has to be a quick one.
compile_bench() {
    grep -q "/build/tidy/bench/.*/Unity/" build/tidy/compile_commands.json
    run-clang-tidy -quiet -p build/tidy -checks="-*,bugprone-use-after-move" "/build/tidy/bench/.*/Unity/"
}

check_tidy() {
    run_tidy "-clang-analyzer-*"
    compile_bench
}

# Takes as long as all other checks together, so it runs only on request.
check_analyzer() {
    run_tidy "-bugprone-*,-performance-*,-modernize-*,-readability-*"
}

check_cppcheck() {
    # Newer versions skip branches at their default level; older versions do not have the option.
    local level=()
    if [[ $(cppcheck --help) == *--check-level=* ]]; then
        level=(--check-level=exhaustive)
    fi
    # Third-party headers are not included: cppcheck's own description of Qt (--library=qt) is enough.
    cppcheck "${level[@]}" -j "$(nproc)" --quiet --error-exitcode=1 --language=c++ --std=c++20 -I . \
        --enable=warning,performance,portability --library=qt --inline-suppr \
        -D'Q_DISABLE_COPY_MOVE(name)=' --template='{file}:{line}: {id}: {message}' \
        "${folders[@]}"
}

check_layers() {
    tools/check-layers.py --self-test
    tools/check-layers.py
}

check_wording() {
    tools/check-wording-keys.py --self-test
    tools/check-wording-keys.py
}

check_bench() {
    bench/selftest.py
}

(($#)) || set -- format layers wording bench cppcheck tidy
for check in "$@"; do
    case $check in
    format | layers | wording | bench | cppcheck | tidy | analyzer) ;;
    tests) exec ./test ;;
    *)
        echo "check.sh: unknown check: $check" >&2
        exit 2
        ;;
    esac
    echo "== $check"
    "check_$check"
done
