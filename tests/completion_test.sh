#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# completion_test.sh SOURCE: what bash offers for kvt, and that zsh's functions can be read.
. "$1/packaging/completions/kvt.bash"
status=0

# offers EXPECTED TYPE WORD...: what is offered for the last word after a key of that type, "," between
offers() {
    expected=$1 COMP_TYPE=$2
    shift 2
    COMP_WORDS=(kvt "$@") COMP_CWORD=$#
    _kvt
    got=$(IFS=,; echo "${COMPREPLY[*]}")
    [ "$got" = "$expected" ] && return
    echo "kvt $*: offered \"$got\" instead of \"$expected\""
    status=1
}

tab=9 menu=37
offers '0   -- lower antenna,1   -- upper antenna' $tab 3 3 ''
offers '0,1,2,3,4' $menu 3 3 1 ''
offers '10  -- MBN,11  -- Smart test' $tab 1
offers '10' $tab 5 10
offers '1' $tab 11 5 1
offers '' $tab 4 1 0 ''
if command -v zsh >/dev/null; then
    zsh -n "$1/packaging/completions/_kvt" || status=1
fi
exit $status
