# Prints a header as a manual page: awk -v date="November 21, 2026" -f man.awk include/device_mgmt/gpio.h > device_mgmt_gpio.3
function escaped(text)
{
    gsub(/\\/, "\\e", text)
    sub(/^[.']/, "\\\\\\&&", text)
    return text
}
# One sentence per line, as usual in mdoc.
function paragraph(text)
{
    sub(/^ +/, "", text)
    sub(/ +$/, "", text)
    while (match(text, /[.;:)] [A-Z]/)) {
        filled(substr(text, 1, RSTART))
        text = substr(text, RSTART + 2)
    }
    if (text != "") {
        filled(text)
    }
}
function filled(text,    count, words, i, line)
{
    count = split(text, words, " ")
    line = words[1]
    for (i = 2; i <= count; i++) {
        if (length(line) + length(words[i]) > 77) {
            print escaped(line)
            line = words[i]
        } else {
            line = line " " words[i]
        }
    }
    print escaped(line)
}
function text_of(line)
{
    sub(/^ *\/?\*+\/? ?/, "", line)
    sub(/ *\*\/ *$/, "", line)
    return line
}
FNR == 1 { stem = FILENAME; sub(/.*\//, "", stem); header = stem; sub(/[.].*/, "", stem) }
# the header's comment
FNR == 1, /\*\// {
    line = text_of($0)
    if (line ~ /^@file/) {
        next
    }
    if (line == "") {
        about = about (about == "" ? "" : "\n")
    } else {
        about = about (about == "" || about ~ /\n$/ ? "" : " ") line
    }
    next
}
# a call's comment, then its declaration
/^\/\*\*$/ { inside = 1; comment = ""; next }
inside && /^ \*\/$/ { inside = 0; declaring = 1; declaration = ""; next }
inside { comment = comment text_of($0) "\n"; next }
declaring {
    declaration = declaration " " $0
    if ($0 !~ /;$/) {
        next
    }
    declaring = 0
    gsub(/  +/, " ", declaration)
    if (declaration ~ /\(/ && declaration !~ /[{}]/) {
        calls++
        comments[calls] = comment
        open = index(declaration, "(")
        name[calls] = returned[calls] = substr(declaration, 2, open - 2)
        sub(/.* /, "", name[calls])
        sub(/ [^ ]*$/, "", returned[calls])
        list = substr(declaration, open + 1)
        sub(/\);$/, "", list)
        parameters[calls] = list
    }
}
function described(comment,    count, lines, i, line, tag, list)
{
    count = split(comment, lines, "\n")
    text = ""
    tag = ""
    list = 0
    result = "The common codes."
    for (i = 1; i <= count + 1; i++) {
        line = i <= count ? lines[i] : "@"
        if (line ~ /^@/ || line == "") {
            if (tag == "param") {
                if (!list++) {
                    print ".Bl -tag -width Ds"
                }
                word = text
                sub(/ .*/, "", word)
                sub(/^[^ ]+ */, "", text)
                print word == "..." ? ".It ..." : ".It Fa " word
                paragraph(text)
            } else if (tag == "return") {
                result = text
            } else if (text != "") {
                paragraph(text)
            }
            text = tag = ""
        }
        if (line ~ /^@(param|return) /) {
            tag = line ~ /^@param/ ? "param" : "return"
            sub(/^@[a-z]+ +/, "", line)
        }
        gsub(/^ +/, "", line)
        text = text (text == "" || line == "" ? "" : " ") (line ~ /^@/ ? "" : line)
    }
    if (list) {
        print ".El"
    }
    print ".Pp"
    paragraph("Returns " tolower(substr(result, 1, 1)) substr(result, 2) (result ~ /[.]$/ ? "" : "."))
}
END {
    page = stem == "device_mgmt" ? stem : "device_mgmt_" stem
    print ".Dd " date
    print ".Dt " toupper(page) " 3"
    print ".Os"
    print ".Sh NAME"
    print ".Nm " page (calls ? " ," : "")
    for (i = 1; i <= calls; i++) {
        print ".Nm " name[i] (i < calls ? " ," : "")
    }
    count = split(about, paragraphs, "\n")
    first = paragraphs[1]
    sub(/^[^:]*: */, "", first)
    brief = first
    sub(/[.] .*/, "", brief)
    sub(/[.]$/, "", brief)
    print ".Nd " brief
    print ".Sh SYNOPSIS"
    print ".In device_mgmt" (stem == "device_mgmt" ? "" : "/" stem) ".h"
    for (i = 1; i <= calls; i++) {
        print ".Ft " returned[i]
        print ".Fo " name[i]
        many = split(parameters[i], each, /, */)
        for (j = 1; j <= many; j++) {
            sub(/^ +/, "", each[j])
            print ".Fa \"" each[j] "\""
        }
        print ".Fc"
    }
    print ".Sh DESCRIPTION"
    paragraph(toupper(substr(first, 1, 1)) substr(first, 2))
    for (i = 2; i <= count; i++) {
        if (paragraphs[i] != "") {
            print ".Pp"
            paragraph(paragraphs[i])
        }
    }
    for (i = 1; i <= calls; i++) {
        print ".Ss " name[i]
        described(comments[i])
    }
    print ".Sh SEE ALSO"
    print stem == "device_mgmt" ? ".Xr device_mgmt_common 3" : ".Xr device_mgmt 3"
}
