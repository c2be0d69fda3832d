# What the scripts share: messages, the project's folders, and asking for what must be installed. Sourced, not run.
# shellcheck shell=bash
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
# shellcheck disable=SC2034  # used by the scripts that source this one
invoked_from=$PWD
tools="$root/build/tools"   # downloaded and generated helpers; git ignores it
cd "$root"
source "$root/scripts/versions.sh"

say() { printf '== %s\n' "$*" >&2; }
die() { printf 'error: %s\n' "$*" >&2; exit 1; }

# usage SCRIPT: prints the comment at the top of a script, and ends with status 2.
usage() { sed -n '2,/^[^#]/s/^# \{0,1\}//p' "$1" >&2; exit 2; }

# need PART...: installs what is missing of these parts. scripts/setup lists the parts.
need() { "$root/scripts/setup" "$@"; }
