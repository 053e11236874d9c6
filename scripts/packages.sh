# shellcheck shell=bash disable=SC2034
# Sourced by the other scripts: installs missing Debian packages.

# need_packages PACKAGE...
need_packages() {
    local package missing=()
    for package in "$@"; do
        if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q '^install ok installed$'; then
            missing+=("$package")
        fi
    done
    if [ ${#missing[@]} -eq 0 ]; then
        return 0
    fi
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        if ! command -v sudo >/dev/null; then
            echo "Missing Debian packages, and no sudo to install them: ${missing[*]}" >&2
            echo "Please run as root: apt-get install ${missing[*]}" >&2
            exit 1
        fi
        as_root=(sudo)
    fi
    echo "Installing ${missing[*]} ..."
    local log
    log=$(mktemp)
    if ! { "${as_root[@]}" apt-get update -qq &&
        "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"; } \
        >"$log" 2>&1; then
        tail -n 20 "$log" >&2
        echo "Cannot install these Debian packages: ${missing[*]}" >&2
        exit 1
    fi
    rm "$log"
}

# Packages for every build of the library and the tool.
build_packages=(cmake ninja-build g++ libcli11-dev nlohmann-json3-dev libopenexr-dev libpng-dev libtiff-dev
    libjpeg-dev liblcms2-dev libfmt-dev)
