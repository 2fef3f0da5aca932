# Shared by run.sh and test.sh, which source it with `root` set: the packages of the build, and quiet, locked builds.
# Nothing here prints to standard output; standard error gets a line before a long wait, and the output of what fails.
# shellcheck shell=bash

: "${root:?the folder of the checkout}"

readonly packages=(g++ cmake ninja-build libgtest-dev libbenchmark-dev libcli11-dev nlohmann-json3-dev libicu-dev
    libboost-dev libsimpleini-dev)
readonly system_failure=3

say() { printf 'quillon: %s\n' "$*" >&2; }

fail() {
    say "$@"
    exit "$system_failure"
}

# Runs a command without its output, which is shown when the command fails.
quietly() {
    local log status=0
    log=$(mktemp)
    "$@" >"$log" 2>&1 </dev/null || status=$?
    [ "$status" -eq 0 ] || cat "$log" >&2
    rm -f "$log"
    return "$status"
}

# Prints those of the packages that are not installed.
missing_packages() {
    local installed package
    installed=$(dpkg-query -W -f='${db:Status-Abbrev}${Package}\n' "${packages[@]}" 2>/dev/null || true)
    for package in "${packages[@]}"; do
        grep -qxF "ii $package" <<<"$installed" || printf '%s\n' "$package"
    done
}

# Prints what apt-get must be called through: nothing for root, sudo for who may use it without a question or can answer
# one. Fails when there is no way.
privilege() {
    [ "$(id -u)" -ne 0 ] || return 0
    command -v sudo >/dev/null || return 1
    [ -t 0 ] || sudo -n true 2>/dev/null || return 1
    echo sudo
}

install_packages() {
    local through apt=(env DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=300)
    through=$(privilege) || fail "missing packages: $*. Install them as root: apt-get install $*"
    say "installing $*"
    if [ -n "$through" ]; then
        sudo -v || fail "missing packages: $*"
        apt=(sudo "${apt[@]}")
    fi
    quietly "${apt[@]}" update || fail "apt-get update failed; missing packages: $*"
    quietly "${apt[@]}" install -y --no-install-recommends "$@" || fail "cannot install $*"
}

ensure_packages() {
    local missing tool
    if command -v dpkg-query >/dev/null; then
        mapfile -t missing < <(missing_packages)
        [ "${#missing[@]}" -eq 0 ] || install_packages "${missing[@]}"
        return
    fi
    for tool in cmake ninja c++; do # another system: its own packages, found by cmake
        command -v "$tool" >/dev/null || fail "missing: $tool (needed: ${packages[*]}, by the names of this system)"
    done
}

# Is the build folder of a preset there, made for this checkout, and from the presets as they are?
is_configured() {
    local dir="$root/build/$1"
    [ -f "$dir/build.ninja" ] && [ ! "$root/CMakePresets.json" -nt "$dir/build.ninja" ] &&
        grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "$dir/CMakeCache.txt"
}

configure() { (cd "$root" && cmake --fresh --preset "$1"); }

# build PRESET [TARGET...]: configures when needed and builds. One at a time in a checkout.
build() {
    local preset=$1 dir="$root/build/$1"
    shift
    mkdir -p "$root/build"
    (
        flock 9
        [ -f "$dir/.ninja_log" ] || say "building build/$preset; the first time this takes minutes"
        is_configured "$preset" || quietly configure "$preset" || exit
        quietly ninja --quiet -j "$(nproc)" -C "$dir" "$@"
    ) 9>"$root/build/.lock" || fail "the build failed"
}
