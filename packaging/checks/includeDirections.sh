#!/bin/sh
# Dependencies inside the library point one way, and only qvr/platform knows the operating system:
#   model -> image -> marks -> platform    display -> image    image -> toolkit -> platform
# (the compiler's own headers of vector instructions are no part of the operating system).
# A header that is installed includes none that is not (detail/).
# usage: includeDirections.sh    prints each line that breaks a rule; 1 when there is one
set -eu
cd "$(dirname "$0")/../.."

find qvr -type f \( -name '*.h' -o -name '*.cpp' \) | LC_ALL=C sort | {
    bad=0
    seen=0
    while IFS= read -r file; do
        seen=$((seen + 1))
        awk -v file="$file" '
            BEGIN {
                may["platform"] = " platform "
                may["toolkit"] = " toolkit platform "
                may["marks"] = " marks platform "
                may["image"] = " image marks toolkit platform "
                may["display"] = " display image toolkit platform "
                may["model"] = " model image marks toolkit platform "
                split(file, part, "/")
                top = part[3] == ""             # qvr/qvr.h and qvr/export.h belong to no folder
                folder = part[2]
                installed = file ~ /\.h$/ && file !~ /\/detail\//
            }
            function broken(why) { printf "%s:%d: %s: %s\n", file, FNR, $0, why; failed = 1 }
            FNR == 1 && !top && !(folder in may) { broken("folder " folder " is not in the table of this check") }
            /^[ \t]*#[ \t]*include[ \t]*["<]/ {
                name = $0
                sub(/^[ \t]*#[ \t]*include[ \t]*/, "", name)
                quoted = name ~ /^"/
                sub(/^["<]/, "", name)
                sub(/[">].*$/, "", name)
                if (name ~ /^qvr\//) {
                    split(name, wanted, "/")
                    if (installed && name ~ /\/detail\//) broken("an installed header includes one that is not")
                    else if (top || name == "qvr/export.h") next
                    else if (wanted[3] == "") broken("the umbrella header is for hosts")
                    else if (index(may[folder], " " wanted[2] " ") == 0) broken(folder " may not use " wanted[2])
                } else if (quoted) broken("own headers are included as qvr/FOLDER/NAME")
                else if (folder != "platform" && name ~ /[.\/]/ && name !~ /^[a-z]*intrin\.h$/)
                    broken("only qvr/platform uses more than the C++ standard library")
            }
            END { exit failed }
        ' "$file" || bad=$((bad + 1))
    done
    if [ "$seen" -eq 0 ]; then
        echo "includeDirections: no sources found below qvr/"
        exit 1
    fi
    if [ "$bad" -ne 0 ]; then
        echo "includeDirections: $bad of $seen files break the directions (docs/ARCHITECTURE.md)"
        exit 1
    fi
    echo "includeDirections: $seen files"
}
