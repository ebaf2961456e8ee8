#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# The names that each of these headers defines are those that the document lists for it:
# listed_names.sh DOCUMENT FOLDER. A list is a table's row: | `HEADER` | `name`, `name` ... |
known='const|char|int|void|unsigned|struct|enum|typedef|extern|bool|uint8_t|uint16_t|uint32_t|pthread_[a-z]*_t'
status=0
for header in "$2"/*.h; do
    name=${header##*/}
    # shellcheck disable=SC2016 # a code mark, not a command
    listed=$(sed -n "s/^| \`$name\` |\(.*\)|\$/\1/p" "$1" | grep -oE '`[^`]*`' | tr -d '`' | sort -u)
    # Without comments, directives but for names of constants, and numbers.
    defined=$(sed 's|//.*||; s|/\*.*\*/||; s/^#define \([A-Za-z_0-9]*\).*/\1/; /^#/d; s/extern "C"//; s/__attribute__.*/;/' "$header" |
        grep -oE '\b[A-Za-z_][A-Za-z0-9_]*' | grep -vxE "$known" | grep -vi '^other' | sort -u)
    if [ "$listed" != "$defined" ]; then
        echo "$name: listed and not defined, or the other way round:"
        printf '%s\n%s\n' "$listed" "$defined" | sort | uniq -u
        status=1
    fi
done
exit $status
