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
    if (text_of($0) !~ /^@file/ && ($0 !~ /^\/\*|\*\//)) {
        about = about text_of($0) "\n"
    }
    next
}
# a call's comment, or the codes'; then the declaration
/^\/\*\*$/ { inside = 1; comment = ""; next }
inside && /^ \*\/$/ { inside = 0; declaring = 1; declaration = ""; next }
inside { comment = comment text_of($0) "\n"; next }
declaring {
    declaration = declaration (/^[{]/ ? ";" : "\n" $0)
    if (declaration !~ /;$/) {
        next
    }
    declaring = 0
    if (declaration ~ /^\n[^(]*[{]/) {
        codes_about = comment
        codes = declaration
        next
    }
    gsub(/[ \n]+/, " ", declaration)
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
# types, with the comment before them; what is declared extern; macros with a value
/^\/\* / { note = ""; noting = 1 }
noting { note = note $0 "\n"; noting = $0 !~ /\*\/$/; next }
/^(typedef|struct) .*[{;]/ { types = types (types != "" && (note != "" || /[{]/) ? "\n" : "") note; typing = 1 }
typing { types = types $0 "\n"; typing = $0 !~ /^[^ ].*;/ }
/^extern [^"]*;$/ {
    externs++
    extern[externs] = $0
    gsub(/^\/\* ?|\n *\*|\*\/\n$/, "", note)
    extern_about[externs] = note
}
/^#define DEVICE_MGMT_[A-Z_]*[ (]/ {
    sub(/^#define /, "")
    sub(/ *\\$/, "")
    macros = macros note $0 "\n"
}
{ note = "" }
# Paragraphs, list items and indented examples.
function prose(text, started,    count, lines, i, line, pending, kind)
{
    count = split(text, lines, "\n")
    for (i = 1; i <= count + 1; i++) {
        line = i <= count ? lines[i] : ""
        if (kind == "example" && (line ~ /^    / || line == "" && lines[i + 1] ~ /^    /)) {
            print line == "" ? "" : escaped(substr(line, 5))
            continue
        }
        if (line == "" || line ~ /^(- |    )/) {
            if (pending != "") {
                if (kind == "" && started++) {
                    print ".Pp"
                }
                paragraph(pending)
                pending = ""
            }
            if (kind == "example") {
                print ".Ed"
            } else if (kind == "list" && line == "") {
                print ".El"
            }
            if (line == "" || kind == "example") {
                kind = ""
            }
        }
        if (line ~ /^    / && kind == "") {
            print ".Bd -literal -offset indent"
            kind = "example"
            print escaped(substr(line, 5))
        } else if (line ~ /^- /) {
            if (kind == "") {
                print ".Bl -dash -compact"
                kind = "list"
            }
            print ".It"
            pending = substr(line, 3)
        } else if (line != "") {
            sub(/^ +/, "", line)
            pending = pending (pending == "" ? "" : " ") line
        }
    }
}
function literal(heading, text,    count, lines, i)
{
    if (text != "") {
        print ".Ss " heading
        print ".Bd -literal"
        count = split(text, lines, "\n")
        for (i = 1; i < count; i++) {
            print escaped(lines[i])
        }
        print ".Ed"
    }
}
# The enumerators with the comment behind each.
function list_codes(    count, lines, i, line, comment)
{
    print ".Ss Codes"
    prose(codes_about, 0)
    print ".Bl -tag -width Ds"
    count = split(codes, lines, "\n")
    for (i = 1; i <= count; i++) {
        line = lines[i]
        if (line ~ /\/\*\*</) {
            comment = line
            sub(/.*\/\*\*< */, "", comment)
            sub(/ *\*\/ *$/, "", comment)
            sub(/^ */, "", line)
            sub(/,? *\/\*.*/, "", line)
            print ".It Dv " line
            paragraph(comment)
        }
    }
    print ".El"
}
function described(comment, returned,    count, lines, i, line, tag, list)
{
    count = split(comment, lines, "\n")
    text = ""
    tag = ""
    list = 0
    result = returned == "void" ? "" : "The common codes."
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
    if (result != "") {
        print ".Pp"
        paragraph("Returns " tolower(substr(result, 1, 1)) substr(result, 2) (result ~ /[.]$/ ? "" : "."))
    }
    common = common || result ~ /^[Tt]he common codes/
}
# The first sentence of a header's comment, after its name.
function brief_of(text)
{
    sub(/^[^:]*: */, "", text)
    sub(/\n.*/, "", text)
    sub(/[.]( .*)?$/, "", text)
    return text
}
# The pages of the headers that this one includes.
function list_families(    file, line, folder, header)
{
    folder = FILENAME
    sub(/[^\/]*$/, "", folder)
    print ".Ss Families"
    print "Each has a header and a page:"
    print ".Bl -tag -width Ds"
    while ((getline line < FILENAME) > 0) {
        if (line ~ /^#include <device_mgmt\//) {
            header = line
            gsub(/^#include <|>$/, "", header)
            file = folder header
            gsub(/^device_mgmt\/|[.]h$/, "", header)
            do {
                getline line < file
            } while (line !~ /^ \* [a-z0-9_]*[.]h: /)
            close(file)
            print ".It Xr device_mgmt_" header " 3"
            filled(brief_of(text_of(line)))
        }
    }
    print ".El"
}
END {
    page = stem == "device_mgmt" ? stem : "device_mgmt_" stem
    print ".Dd " date
    print ".Dt " toupper(page) " 3"
    print ".Os"
    print ".Sh NAME"
    names = page
    for (i = 1; i <= calls; i++) {
        names = names (name[i] == page ? "" : " ,\n.Nm " name[i])
    }
    print ".Nm " names
    sub(/^[^:]*: */, "", about)
    print ".Nd " brief_of("x: " about)
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
    for (i = 1; i <= externs; i++) {
        print ".Vt \"" extern[i] "\""
    }
    print ".Sh DESCRIPTION"
    prose(toupper(substr(about, 1, 1)) substr(about, 2), 0)
    for (i = 1; i <= calls; i++) {
        print ".Ss " name[i]
        described(comments[i], returned[i])
    }
    if (codes != "") {
        list_codes()
    }
    for (i = 1; i <= externs; i++) {
        sub(/[(;].*/, "", extern[i])
        sub(/.* /, "", extern[i])
        print ".Ss " extern[i]
        paragraph(extern_about[i])
    }
    literal("Types", types)
    literal("Macros", macros)
    if (stem == "device_mgmt") {
        list_families()
    }
    if (common) {
        print ".Sh RETURN VALUES"
        print "The common codes are in"
        print ".Xr device_mgmt_types 3 ."
    }
    print ".Sh SEE ALSO"
    print stem == "device_mgmt" ? ".Xr device_mgmt_code_text 3" \
        : ".Xr device_mgmt 3 ,\n.Xr device_mgmt_" (stem == "types" ? "code_text" : "types") " 3"
}
