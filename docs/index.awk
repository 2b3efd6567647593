# Prints the reference pages' index by C name: awk -f docs/index.awk docs/calls/*.md
FNR == 1 { page = FILENAME; sub(/.*\//, "", page); heading = "" }
/^## / { heading = substr($0, 4); anchor = heading; gsub(/ /, "-", anchor); pending = 0 }
heading != "" && /^`[a-z_0-9A-Z]+[*]* [a-z_0-9]+\(.*\)`$/ {
    name = $0
    sub(/\(.*/, "", name)
    sub(/.* /, "", name)
    pending = 1
    next
}
pending && /^[A-Z]/ {
    summary = $0
    sub(/[.] .*/, ".", summary)
    print "| [`" name "`](" page "#" anchor ") | " summary " |" | "sort"
    pending = 0
}
