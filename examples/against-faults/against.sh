#!/bin/sh
# against.sh EXIT RULE COMMAND...: starts a gateway that fails as the rule says,
# runs the command, and checks its exit code.
set -eu
expected=$1
rule=$2
shift 2

place=$(mktemp -d)
export VORINFRA_DIR="$place/run" VORINFRA_ROOT="$place" VORINFRA_TIMEOUT_MS=500
gateway=""
finish() {
    if [ -n "$gateway" ]; then
        kill "$gateway" 2>/dev/null || true
        wait "$gateway" || true
    fi
    rm -rf "$place"
}
trap finish EXIT

echo "$rule" >"$place/faults"
mkfifo "$place/lines"
vorsim --faults "$place/faults" >"$place/lines" &
gateway=$!
exec 3<"$place/lines"
read -r ready <&3 || exit 1 # "vorsim: ready, ..."; otherwise it has reported why not
cat <&3 >"$place/log" &

code=0
"$@" || code=$?
if [ "$code" -ne "$expected" ]; then
    echo "against.sh: expected exit code $expected, got $code; the gateway printed:"
    cat "$place/log"
    exit 1
fi
