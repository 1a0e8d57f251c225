#!/usr/bin/env bash
# Tests which packages tools/packages.sh selects and how it calls apt. Stubs replace apt and dpkg and answer
# from the variables below, so the test needs no network and installs nothing.
set -euo pipefail
repository=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/../.." && pwd)
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
failures=0

# stub NAME creates a command NAME that runs the script on standard input.
stub() {
    { echo '#!/usr/bin/env bash'; cat; } >"$folder/$1"
    chmod +x "$folder/$1"
}

# $installed has a line "STATUS NAME ARCHITECTURE" for each package that dpkg knows, $candidates the names that
# apt can install.
stub dpkg-query <<<'echo "$installed"'
stub dpkg <<<'echo amd64'
stub apt-cache <<'END'
[[ " $candidates " == *" ${*: -1} "* ]] || { printf 'x:\n  Candidate: (none)\n'; exit; }
printf 'x:\n  Installed: (none)\n  Candidate: 1.0-1\n'
END
stub apt-get <<<'echo "${DEBIAN_FRONTEND:-} $*" >>"$calls"'
stub sudo <<<'exec "$@"'
export calls=$folder/calls PATH=$folder:$PATH installed candidates
unset PENWICK_SKIP_PACKAGES

# expect TITLE WANTED NAME... checks which packages penwick_install_packages NAME... passes to apt. WANTED is
# empty if it must not call apt.
expect() {
    local title=$1 wanted=$2 said
    shift 2
    : >"$calls"
    said=$(source "$repository/tools/packages.sh" && penwick_install_packages "$@" 2>&1) || true
    local got
    got=$(sed -n 's/.* install //p' "$calls" | sed 's/--[a-z-]* //g')
    [[ $got == "$wanted" ]] && return
    echo "$title: apt had to install \"$got\" instead of \"$wanted\"; output: $said"
    failures=$((failures + 1))
}

installed='ii  a amd64' candidates='a b c'
expect "an installed package is not installed again" "" a
expect "a missing package is installed" "b" a b
expect "an installed alternative is enough, whichever it is" "" 'b|a'
expect "of missing alternatives the first is installed" "b c" 'b|c' c
candidates='c'
expect "an alternative without a candidate is skipped" "c" 'b|c'
candidates=''
expect "without any candidate apt gets the first, and reports the error" "b" 'b|c'
candidates='a:arm64 b:arm64'
expect "another architecture is another package" "a:arm64" a a:arm64
expect "alternatives may be of another architecture" "b:arm64" 'c:arm64|b:arm64'
installed=$'ii  a arm64\nrc  b amd64\nii  d all' candidates='a b d'
expect "a package of another architecture does not count" "a" a
expect "a removed package with configuration files left is missing" "b" b
expect "a package for all architectures counts" "" d

expect "apt is called with the options below" "b" b
while read -r call; do
    for option in noninteractive Dpkg::Options::=--force-confdef Dpkg::Options::=--force-confold; do
        [[ $call == *"$option"* ]] && continue
        echo "apt-get can stop at a question without $option: $call"
        failures=$((failures + 1))
    done
done <"$calls"

((failures == 0)) && echo "packages: passed"
