# The environment of Wine for the Windows tests. Sourced after common.sh; scripts/setup windows-hosts installs Wine.
# shellcheck shell=bash disable=SC2154
# Wine can name a file beyond ASCII only in a UTF-8 locale, and not every machine sets one.
export LC_ALL=C.UTF-8
export WINEPREFIX="$tools/wine-prefix" WINEARCH=win64 WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
