# The Debian 12 packages that penwick needs, each named once; docs/dependencies.md says what for.
# Sourced by `run`, `test` and the tools: needs bash.

penwick_build_packages=(
    cmake
    g++
    libexpected-dev
    libfontconfig-dev
    libgl-dev
    libicu-dev
    libjavascriptcoregtk-4.1-dev
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

# penwick_missing_packages NAME... prints those that are not installed, one a line.
penwick_missing_packages() {
    local wanted
    wanted=$(printf '%s\n' "$@" | sort -u)
    # A package that dpkg does not know at all is an error line on stderr: it is missing, too.
    comm -23 <(echo "$wanted") <(
        dpkg-query --show --showformat='${db:Status-Abbrev}${Package}\n' "$@" 2>/dev/null |
            sed -n 's/^.i[^a-z]*//p' | sort -u
    )
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

    local as_root=()
    if ((EUID != 0)); then
        if ! command -v sudo >/dev/null; then
            echo "penwick: packages are missing and there is no sudo; as root, run:" \
                "apt-get install --no-install-recommends ${missing[*]}" >&2
            exit 1
        fi
        as_root=(sudo)
    fi
    echo "penwick: installing with apt: ${missing[*]}"
    local apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -o Dpkg::Use-Pty=0)
    if ! "${apt[@]}" update ||
        ! "${apt[@]}" install --yes --no-install-recommends "${missing[@]}"; then
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
