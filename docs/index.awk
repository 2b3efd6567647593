# The reference pages' index by C name: awk -f docs/index.awk docs/calls/*.md
FNR == 1 { page = FILENAME; sub(/.*\//, "", page); heading = "" }
/^## / { heading = substr($0, 4); anchor = heading; gsub(/ /, "-", anchor); wanted = 0 }
heading != "" && /^`[a-z_0-9A-Z]+[*]* [a-z_0-9]+\(.*\)`$/ {
    name = $0
    sub(/\(.*/, "", name)
    sub(/.* /, "", name)
    wanted = 1
    next
}
wanted && /^[A-Z]/ {
    summary = $0
    sub(/[.] .*/, ".", summary)
    print "| [`" name "`](" page "#" anchor ") | " summary " |" | "sort"
    wanted = 0
}
