#!/usr/bin/env bash
# Checks the sources without running the program.
#
#   tools/check.sh [format] [layers] [wording] [cppcheck] [tidy]     default: all of these
#   tools/check.sh analyzer      clang's analyzer, path by path: slow, so not part of ./test
#   tools/check.sh tests         everything, same as ./test
#
# tidy and analyzer read build/release/compile_commands.json: run ./test or ./run once before.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."

folders=()
for folder in platform text wording controls editor macro app; do
    [[ -d $folder ]] && folders+=("$folder")
done
database=build/release/compile_commands.json

# Sources of the given folders that exist, one a line.
sources() {
    find "$@" -name '*.h' -o -name '*.cpp' | sort
}

check_format() {
    local extra=()
    [[ -d bench ]] && extra+=(bench)
    sources "${folders[@]}" tests "${extra[@]}" | xargs clang-format --dry-run -Werror
}

need_database() {
    if [[ ! -e $database ]]; then
        echo "check.sh: there is no $database: run \"cmake --preset release\" first" >&2
        exit 1
    fi
}

check_tidy() {
    need_database
    tools/check-tidy.py --self-test
    tools/check-tidy.py build/release
}

# Takes as long again as all the other checks, so it is run by hand.
check_analyzer() {
    need_database
    tools/check-tidy.py --analyzer build/release
}

check_cppcheck() {
    # Newer versions leave branches out of what they look at unless told so; older ones know no levels.
    local level=()
    if [[ $(cppcheck --help) == *--check-level=* ]]; then
        level=(--check-level=exhaustive)
    fi
    # Foreign headers are not looked for: what matters of Qt is in cppcheck's own description of it.
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

(($#)) || set -- format layers wording cppcheck tidy
for check in "$@"; do
    case $check in
    format | layers | wording | cppcheck | tidy | analyzer) ;;
    tests) exec ./test ;;
    *)
        echo "check.sh: unknown check: $check" >&2
        exit 2
        ;;
    esac
    echo "== $check"
    "check_$check"
done
