#!/usr/bin/env bash
# Checks the sources without running the program.
#
#   tools/check.sh [format] [layers] [wording] [cppcheck] [tidy]     default: all of these
#   tools/check.sh analyzer      clang's path-sensitive analyzer: slow, so not part of ./test
#   tools/check.sh tests         everything, same as ./test
#
# tidy and analyzer need build/release/compile_commands.json: run ./test or ./run first.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."

mapfile -t folders <<<"$(tools/check-layers.py --folders)"
database=build/release/compile_commands.json

check_format() {
    tools/format --check
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

# Takes as long as all other checks together, so it runs only on request.
check_analyzer() {
    need_database
    tools/check-tidy.py --analyzer build/release
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
