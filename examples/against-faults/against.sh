#!/bin/sh
# against.sh EXIT RULE COMMAND...: runs a command beside a gateway of its own
# that fails by the rule, and tells whether it ended with the exit code.
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
read -r ready <&3 || exit 1 # "vorsim: ready, ..."; what is wrong has been said
cat <&3 >"$place/log" &

code=0
"$@" || code=$?
if [ "$code" -ne "$expected" ]; then
    echo "against.sh: exit code $code, expected $expected; the gateway's side of it:"
    cat "$place/log"
    exit 1
fi
