# To be read by the shell scripts of this project: where it stands, the compiler cache, building.
root=$(CDPATH='' cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd)

if command -v ccache >/dev/null 2>&1; then
    export CMAKE_C_COMPILER_LAUNCHER=ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache
fi

# logged NAME COMMAND...: runs a command and shows what it printed only when it fails.
logged() {
    local log=$root/build/$1.log
    shift
    mkdir -p "$root/build"
    "$@" >"$log" 2>&1 </dev/null && return 0
    cat "$log" >&2
    return 1
}

configure_and_build() {
    local preset=$1
    shift
    cmake --preset "$preset" && cmake --build --preset "$preset" --parallel ${@:+--target "$@"}
}

# build PRESET [TARGET...]
build() (
    cd "$root" && logged "build-$1" configure_and_build "$@"
)
