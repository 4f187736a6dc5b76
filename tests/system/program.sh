# For the tests of the varnet program, which source it: a folder of their own to work in, and what to expect.
set -euo pipefail
varnet=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
fail() { echo "FAILED: $*"; exit 1; }
# expect CODE COMMAND...: output goes to out and err
expect() {
    local wanted=$1 code=0
    shift
    "$@" >out 2>err || code=$?
    [ "$code" -eq "$wanted" ] || { cat out err; fail "exit code $code, wanted $wanted: $*"; }
}
