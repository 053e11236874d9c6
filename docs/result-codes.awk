# Prints the table of docs/result-codes.md from the comments of the public header:
#
#   awk -f docs/result-codes.awk include/tvmeta.h

function row(code, text) { rows[++count] = "`" code "` | " text }

# Takes what has been gathered of a @retval, @return or @param.
function finish(    names, i, code) {
    gsub(/\\|\|/, "/", text)
    if (kind == "@retval") {
        code = text
        sub(/ .*/, "", code)
        sub(/^[^ ]+ +/, "", text)
        gsub(/,/, ", ", code)
        row(code, text)
    } else if (kind == "@return") {
        rows[++count] = "| " text
    } else if (kind == "@param" && match(text, /[Nn]ull[^:.]*: -?[0-9]+/)) {
        code = substr(text, RSTART, RLENGTH)
        sub(/.*: /, "", code)
        sub(/ .*/, "", text)
        gsub(/,/, "`, `", text)
        if (nulls[code] == "") {
            codes[++codeCount] = code
        }
        nulls[code] = nulls[code] (nulls[code] == "" ? "null `" : ", `") text "`"
    }
    kind = ""
}

/^\/\*\*/ { delete nulls; count = codeCount = 0; copied = "" }
/@copydetails/ { copied = $0; sub(/.*@copydetails /, "", copied); sub(/ .*/, "", copied) }
/^ \*(\/| @| *$)/ { finish() }
/^ \* @(retval|return|param) / {
    kind = $2
    text = $0
    sub(/^ \* @[a-z]+ +/, "", text)
    next
}
kind != "" { sub(/^ \* */, ""); text = text " " $0 }

/^TVMETA_API/ {
    name = $0
    sub(/\(.*/, "", name)
    sub(/.* \*?/, "", name)
    for (i = 1; i <= codeCount; ++i) {
        row(codes[i], nulls[codes[i]])
    }
    table = copied != "" ? tables[copied] : ""
    for (i = 1; i <= count; ++i) {
        table = table "| " (i == 1 ? "@" : "") " | " rows[i] " |\n"
    }
    if (table == "") {
        table = "| @ | | nothing |\n"
    }
    tables[name] = table
    sub(/@/, name "()", table)
    printf "%s", table
}
