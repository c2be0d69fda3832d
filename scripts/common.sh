# What the scripts share: messages, the project's folders, and installing what is missing. Sourced, not run.
# Every function may be called again at no cost; a missing tool is named with the package that brings it.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
invoked_from=$PWD
tools="$root/build/tools"   # downloaded and generated helpers; kept out of the repository
cd "$root"

say() { printf '== %s\n' "$*" >&2; }
die() { printf 'error: %s\n' "$*" >&2; exit 1; }

as_root() {
    if [ "$(id -u)" = 0 ]; then "$@"
    elif command -v sudo >/dev/null; then sudo -- "$@"
    else die "installing packages needs root: run this as root, or install sudo"; fi
}

package_installed() { dpkg-query -W -f '${Status}\n' "$1" 2>/dev/null | grep -q '^install ok installed$'; }

# apt_install PACKAGE...: quiet; its output is shown only when it fails. An index that cannot be refreshed is not the end:
# what is already known may be enough. apt_options (an array) goes with both calls.
apt_options=()
apt_install() {
    local log; log=$(mktemp)
    as_root apt-get -q "${apt_options[@]}" update >"$log" 2>&1 </dev/null || true
    if as_root env DEBIAN_FRONTEND=noninteractive apt-get -q -y "${apt_options[@]}" --no-install-recommends \
        install "$@" >>"$log" 2>&1 </dev/null; then rm -f "$log"; return 0; fi
    tail -n 15 "$log" >&2; rm -f "$log"; return 1
}

# need_packages PACKAGE...: Debian packages, installed when one is missing.
need_packages() {
    local package missing=()
    for package in "$@"; do package_installed "$package" || missing+=("$package"); done
    [ ${#missing[@]} -gt 0 ] || return 0
    command -v apt-get >/dev/null || die "missing packages (and no apt-get to install them): ${missing[*]}"
    say "installing ${missing[*]}"
    apt_install "${missing[@]}" || die "could not install ${missing[*]}"
}

# need_node: Node.js 18 or newer with npm; Debian's own when there is none.
need_node() {
    local major
    major=$(node -p 'process.versions.node.split(".")[0]' 2>/dev/null || echo 0)
    [ "$major" -ge 18 ] || need_packages ca-certificates nodejs
    command -v npm >/dev/null || need_packages npm
}

# need_npm_modules: what package-lock.json lists, installed anew when it changed.
need_npm_modules() {
    need_node
    cmp -s package-lock.json node_modules/.installed-lock 2>/dev/null && return 0
    say "installing the npm packages of package-lock.json"
    npm ci --no-audit --no-fund --loglevel=error </dev/null >&2 || die "npm ci failed"
    cp package-lock.json node_modules/.installed-lock
}

need_compiler() { need_packages g++ cmake ninja-build nlohmann-json3-dev; }

# unpack_npm_tool NAME VERSION SHA512 FOLDER: a package that npm would refuse to install here, unpacked under build/tools.
unpack_npm_tool() {
    local name=$1 version=$2 sha512=$3 folder="$tools/$4" archive
    [ -f "$folder/.complete" ] && return 0
    need_node
    say "fetching $name $version"
    rm -rf "$folder"; mkdir -p "$folder"
    (cd "$folder" && npm pack "$name@$version" --loglevel=error </dev/null >/dev/null) || die "could not fetch $name@$version"
    archive=$(echo "$folder"/*.tgz)
    echo "$sha512  $archive" | sha512sum --check --quiet || die "$name@$version is not the package it should be"
    tar -xzf "$archive" -C "$folder" --strip-components=1
    rm "$archive"
    touch "$folder/.complete"
}
