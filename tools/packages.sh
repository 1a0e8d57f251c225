# The packages of Debian 12 and 13 that penwick needs; docs/dependencies.md gives the reason for each.
# `a|b` means alternatives: the one that is installed, otherwise the first that apt can install.
# Sourced by `run`, `test` and the tools; needs bash.

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

# A virtual display, and tools that control the program in it.
penwick_display_packages=(
    at-spi2-core
    dbus-daemon
    imagemagick
    libx11-6
    libxdamage1
    libxtst6
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

# Programs that penwick-macro is tested with.
penwick_recipe_packages=(
    findutils
    fish
    git
    make
    parallel
    pre-commit
    zsh
)

# Installed only if there is no npm: an npm from another source brings its own Node.js and conflicts with
# these packages.
penwick_npm_packages=(
    nodejs
    npm
)

# Build and check the Debian package.
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

# Cross-compilation for arm64: compiler, libraries, the native qt6-base-dev for moc and rcc, and an emulator
# for the tests.
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

# penwick_missing_packages NAME... prints those that are not installed, one per line. A name may have an
# architecture (`libicu-dev:arm64`); without one it means the native architecture.
penwick_missing_packages() {
    local wanted name status package architecture native
    local -A present=()
    native=$(dpkg --print-architecture)
    # For a package that dpkg does not know, dpkg-query prints only an error: the package is missing.
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

# penwick_chosen_packages NAME... prints the package to install for each name, one per line: of alternatives
# the first for which apt has a candidate. If apt has none, it is the first alternative, so that apt reports
# the error.
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

# penwick_apt_get ARGUMENT... runs apt-get as root. It never asks questions and keeps configuration files
# that the user has changed.
penwick_apt_get() {
    penwick_as_root env DEBIAN_FRONTEND=noninteractive apt-get -q -o Dpkg::Use-Pty=0 \
        -o Dpkg::Options::=--force-confdef -o Dpkg::Options::=--force-confold "$@"
}

# penwick_install_packages NAME... installs missing packages and prints their names. If it cannot, it prints
# one line with the reason and exits with status 1. With PENWICK_SKIP_PACKAGES=1, for systems without apt, it
# does nothing.
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
    # Choose the alternatives after the update: a fresh system has no package lists.
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

# penwick_install_npm installs npm and node unless both are available.
penwick_install_npm() {
    if ! command -v npm >/dev/null || ! command -v node >/dev/null; then
        penwick_install_packages "${penwick_npm_packages[@]}"
    fi
}
