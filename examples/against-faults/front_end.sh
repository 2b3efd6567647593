#!/bin/sh
# front_end.sh: the front end under test. It sets a CAN bus up, asks again when
# no answer came or nobody was there, and gives up when the manager refuses.
for attempt in 1 2 3; do
    vorcfg can set-baudrate 1 250000 1 && exit 0
    case $? in
    3 | 6) echo "front end: attempt $attempt came to nothing" ;;
    *) break ;;
    esac
done
echo "front end: gives up"
exit 1
