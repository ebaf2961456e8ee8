# Shared by the scripts; sourced with ROOT set to the repository.

# Packages of Debian that a part of the work needs, one name a word.
packages_tool='g++ cmake ninja-build'
packages_lab="$packages_tool libcli11-dev nlohmann-json3-dev libtomlplusplus-dev libpugixml-dev libre2-dev"
packages_test="$packages_lab libgtest-dev libgmock-dev ccache"
packages_bench="$packages_tool libbenchmark-dev"
packages_fuzz="$packages_tool clang libclang-rt-14-dev llvm"
packages_arm64="$packages_test g++-aarch64-linux-gnu qemu-user"

say() { printf '%s\n' "$*" >&2; }

# Installs those of the named packages that are missing. Prints nothing on standard output.
need_packages() {
    missing=
    for package in "$@"; do
        dpkg-query -W -f '${db:Status-Status}\n' "$package" 2>/dev/null | grep -q '^installed$' ||
            missing="$missing $package"
    done
    [ -z "$missing" ] && return 0
    if [ "$(id -u)" = 0 ]; then
        as_root=
    elif command -v sudo >/dev/null && sudo -n true 2>/dev/null; then
        as_root=sudo
    else
        say "These packages are missing, and only root can install them:$missing"
        return 1
    fi
    say "Installing$missing"
    log=$(mktemp)
    if $as_root env DEBIAN_FRONTEND=noninteractive sh -c \
        "apt-get update && apt-get install -y --no-install-recommends$missing" >"$log" 2>&1; then
        rm -f "$log"
    else
        cat "$log" >&2
        rm -f "$log"
        return 1
    fi
}

# Runs a command with its output kept aside, shown on standard error when it fails.
quietly() {
    log=$(mktemp)
    if "$@" >"$log" 2>&1; then
        rm -f "$log"
    else
        cat "$log" >&2
        rm -f "$log"
        return 1
    fi
}

# Configures and builds a preset: preset NAME [TARGET...]
preset() {
    name=$1
    shift
    launcher=
    command -v ccache >/dev/null && launcher=-DCMAKE_CXX_COMPILER_LAUNCHER=ccache
    say "Building $name"
    quietly cmake --preset "$name" $launcher &&
        quietly cmake --build --preset "$name" -j "$(nproc)" ${1:+--target "$@"}
}
