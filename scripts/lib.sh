# SPDX-License-Identifier: Apache-2.0
# Shared by the scripts; sourced with ROOT set to the repository.
# shellcheck shell=sh

say() { printf '%s\n' "$*" >&2; }

# Names of Debian's packages that debian/control asks for at build time, without those that the named
# build profiles leave out: build_depends PROFILE...
build_depends() {
    awk -v profiles=" $* " '
        /^Build-Depends:/ { inside = 1; next }
        inside && !/^ / { exit }
        inside {
            name = $1
            sub(/,$/, "", name)
            asked = left_out = 0
            for (rest = $0; match(rest, /<![^>]*>/); rest = substr(rest, RSTART + RLENGTH)) {
                ++asked
                left_out += index(profiles, " " substr(rest, RSTART + 2, RLENGTH - 3) " ") > 0
            }
            if (asked && left_out == asked)
                next
            if (name != "debhelper-compat")
                print name
        }' "$ROOT/debian/control"
}

# Packages that a part of the work needs, one name a line.
packages_of() {
    case $1 in
    tool) printf '%s\n' g++ && build_depends nocheck pkg.kvt.nolab ;;
    lab) printf '%s\n' g++ && build_depends nocheck ;;
    test) printf '%s\n' g++ ccache && build_depends ;;
    bench) packages_of tool && printf '%s\n' libbenchmark-dev ;;
    fuzz) packages_of lab && printf '%s\n' clang libclang-rt-14-dev llvm ;;
    arm64) packages_of test && printf '%s\n' g++-aarch64-linux-gnu qemu-user ;;
    lint) printf '%s\n' clang-format clang-tidy shellcheck ;;
    package) printf '%s\n' debhelper dpkg-dev fakeroot lintian ;;
    esac
}

# Installs what the named parts need and the machine lacks: need PART...
need() {
    # shellcheck disable=SC2046 # one word a package
    need_packages $(for part in "$@"; do packages_of "$part"; done)
}

# What other systems call Debian's packages: dnf, then pacman. Names from their public lists; the build
# was not run there.
other_names='g++ gcc-c++ gcc
cmake cmake cmake
ninja-build ninja-build ninja
ccache ccache ccache
libcli11-dev cli11-devel cli11
nlohmann-json3-dev json-devel nlohmann-json
libtomlplusplus-dev tomlplusplus-devel tomlplusplus
libpugixml-dev pugixml-devel pugixml
libpcap-dev libpcap-devel libpcap
libre2-dev re2-devel re2
jq jq jq
python3 python3 python
python3-jsonschema python3-jsonschema python-jsonschema
tshark wireshark-cli wireshark-cli
libsimdjson-dev simdjson-devel simdjson
libgtest-dev gtest-devel gtest
libgmock-dev gmock-devel gtest
libbenchmark-dev google-benchmark-devel benchmark'

# The command that installs the named packages on a machine without dpkg.
elsewhere() {
    if command -v dnf >/dev/null; then
        column=2 install='sudo dnf install'
    elif command -v pacman >/dev/null; then
        column=3 install='sudo pacman -S --needed'
    else
        column=1 install="by this system's own means what Debian calls"
    fi
    names=
    for package in "$@"; do
        name=$(printf '%s\n' "$other_names" | awk -v p="$package" -v c=$column '$1 == p { print $c }')
        names="$names ${name:-$package}"
    done
    say "This machine has no dpkg, and some of what the build needs is missing. Install:"
    say "    $install$names"
}

# Installs those of the named packages that are missing. Prints nothing on standard output.
need_packages() {
    if ! command -v dpkg-query >/dev/null; then
        command -v c++ >/dev/null && command -v cmake >/dev/null && command -v ninja >/dev/null && return 0
        elsewhere "$@"
        return 1
    fi
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
        say "Some packages are missing, and only root can install them:"
        say "    sudo apt-get install --no-install-recommends$missing"
        return 1
    fi
    say "Installing$missing"
    log=$(mktemp) || return 1
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

# Runs a command that shows its own progress: seen on a terminal, otherwise only when it fails.
with_progress() {
    if [ -t 2 ]; then
        "$@" >&2
    else
        quietly "$@"
    fi
}

# Configures and builds a preset: preset NAME [TARGET...]
preset() {
    name=$1
    shift
    launcher=
    command -v ccache >/dev/null && launcher=-DCMAKE_CXX_COMPILER_LAUNCHER=ccache
    export CCACHE_SLOPPINESS=pch_defines,time_macros # else what uses a precompiled header is compiled again
    say "Building $name"
    quietly cmake --preset "$name" $launcher &&
        with_progress cmake --build --preset "$name" -j "$(nproc)" ${1:+--target "$@"}
}
