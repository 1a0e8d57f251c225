# The packages of Debian 12 and 13 that penwick needs, each named once; docs/dependencies.md says what for.
# `a|b` means alternatives: the one that is installed, otherwise the first that apt can install.
# Sourced by `run`, `test` and the tools: needs bash.

penwick_build_packages=(
    cmake
    g++
    libexpected-dev
    libfontconfig-dev
    libgl-dev
    libicu-dev
    "libjavascriptcoregtk-4.1-dev|libjavascriptcoregtk-6.0-dev"
    libseccomp-dev
    libxcb1-dev
    ninja-build
    nlohmann-json3-dev
    pkgconf
    qt6-base-dev
    qt6-svg-dev
)

penwick_run_packages=(
    fcitx5-frontend-qt6
    fonts-dejavu-core
    fonts-noto-cjk
    fonts-noto-color-emoji
    qt6-wayland
)

# A display without a screen, and what drives the program in it from outside.
penwick_display_packages=(
    at-spi2-core
    dbus-daemon
    imagemagick
    openbox
    python3
    python3-pyatspi
    x11-utils
    xdotool
    xvfb
)

penwick_test_packages=(
    clang
    clang-format
    clang-tidy
    cppcheck
    fcitx5
    fcitx5-anthy
    fcitx5-mozc
    libclang-rt-dev
    python3-jsonschema
    unicode-data
)

# Installed where there is no npm only: an npm from elsewhere, which comes with its own Node.js, does not
# go with these.
penwick_npm_packages=(
    nodejs
    npm
)

# What makes the Debian package, and what judges it.
penwick_package_packages=(
    appstream
    desktop-file-utils
    dpkg-dev
    lintian
    man-db
)

penwick_bench_packages=(
    libbenchmark-dev
)

# Cross-compilation for arm64: compiler, libraries, this system's own qt6-base-dev for moc and rcc, and an
# emulator for the tests.
penwick_arm64_packages=(
    cmake
    crossbuild-essential-arm64
    libexpected-dev
    libfontconfig-dev:arm64
    libgl-dev:arm64
    libicu-dev:arm64
    "libjavascriptcoregtk-4.1-dev:arm64|libjavascriptcoregtk-6.0-dev:arm64"
    libseccomp-dev:arm64
    libxcb1-dev:arm64
    ninja-build
    nlohmann-json3-dev
    pkgconf
    "qemu-user-static|qemu-user"
    qt6-base-dev
    qt6-base-dev:arm64
    qt6-svg-dev:arm64
    unicode-data
)

# For tools/in-release.
penwick_release_packages=(
    ca-certificates
    git
    mmdebstrap
)

# penwick_missing_packages NAME... prints those that are not installed, one a line. A name without an
# architecture (`libicu-dev:arm64`) means this system's.
penwick_missing_packages() {
    local wanted name status package architecture native
    local -A present=()
    native=$(dpkg --print-architecture)
    # A package that dpkg does not know at all is an error line on stderr: it is missing, too.
    while read -r status package architecture; do
        [[ $status == ?i* ]] || continue
        present[$package:$architecture]=1
        [[ $architecture != "$native" && $architecture != all ]] || present[$package]=1
    done < <(
        dpkg-query --show --showformat='${db:Status-Abbrev} ${Package} ${Architecture}\n' \
            ${*//|/ } 2>/dev/null
    )
    for wanted in "$@"; do
        for name in ${wanted//|/ }; do
            [[ ! ${present[$name]:-} ]] || continue 2
        done
        echo "$wanted"
    done | sort -u
}

# penwick_chosen_packages NAME... prints the package to install for each name, one a line: of alternatives the
# first that apt has a candidate for, or the first of all if it has none, so that apt reports the error.
penwick_chosen_packages() {
    local wanted name chosen
    for wanted in "$@"; do
        chosen=${wanted%%|*}
        if [[ $wanted == *'|'* ]]; then
            for name in ${wanted//|/ }; do
                [[ $(LC_ALL=C apt-cache policy "$name") =~ Candidate:\ [^\(] ]] || continue
                chosen=$name
                break
            done
        fi
        echo "$chosen"
    done
}

penwick_as_root() {
    local as_root=()
    ((EUID == 0)) || as_root=(sudo)
    "${as_root[@]}" "$@"
}

# penwick_apt_get ARGUMENT... runs apt-get as root. It never asks: configuration files that the user changed
# are kept.
penwick_apt_get() {
    penwick_as_root env DEBIAN_FRONTEND=noninteractive apt-get -q -o Dpkg::Use-Pty=0 \
        -o Dpkg::Options::=--force-confdef -o Dpkg::Options::=--force-confold "$@"
}

# penwick_install_packages NAME... installs what is missing and says so. Exits with status 1 and one
# clear line where it cannot. PENWICK_SKIP_PACKAGES=1 leaves the packages to the caller, for systems
# without apt.
penwick_install_packages() {
    [[ ${PENWICK_SKIP_PACKAGES:-} ]] && return 0
    if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
        echo "penwick: this is no Debian system: install the equivalents of these packages and set" \
            "PENWICK_SKIP_PACKAGES=1: $*" >&2
        exit 1
    fi
    local missing
    mapfile -t missing < <(penwick_missing_packages "$@")
    ((${#missing[@]})) || return 0

    if ((EUID != 0)) && ! command -v sudo >/dev/null; then
        mapfile -t missing < <(penwick_chosen_packages "${missing[@]}")
        echo "penwick: packages are missing and there is no sudo; as root, run:" \
            "apt-get install --no-install-recommends ${missing[*]}" >&2
        exit 1
    fi
    # The alternatives are chosen after the update: a fresh system has no package lists.
    if ! penwick_apt_get update; then
        echo "penwick: apt could not update its package lists; missing packages: ${missing[*]}" >&2
        exit 1
    fi
    mapfile -t missing < <(penwick_chosen_packages "${missing[@]}")
    echo "penwick: installing with apt: ${missing[*]}"
    if ! penwick_apt_get install --yes --no-install-recommends "${missing[@]}"; then
        echo "penwick: apt could not install: ${missing[*]}" >&2
        exit 1
    fi
}

# penwick_install_npm makes sure that there are npm and node.
penwick_install_npm() {
    if ! command -v npm >/dev/null || ! command -v node >/dev/null; then
        penwick_install_packages "${penwick_npm_packages[@]}"
    fi
}
