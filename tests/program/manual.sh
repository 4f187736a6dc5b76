#!/usr/bin/env bash
# The commands, their options and the words about them stand in help.txt: the manual page and the completions of shells are made
# of them, word for word. A line is a name, = where it takes a value, what is said of it, and what it is where it is not given.
# usage: manual.sh VARNET
. "$(dirname "$(readlink -f "$0")")/program.sh"
help=$tests/help.txt

version=$("$varnet" --version | cut -d ' ' -f 2)
what=$("$varnet" --help | head -n 1)
[ "$what" = 'Varnet64: reads, repairs, supports, slices and orders the parts of 3D printing.' ] || fail "what it is: $what"
expect 0 "$varnet" manual man
{
    printf '%s\n' ".TH VARNET 1 \"\" \"varnet $version\"" '.SH NAME' "varnet \\- $what" '.SH SYNOPSIS' '.B varnet' \
        '\fIcommand\fR [\fIoptions\fR]' '.SH COMMANDS'
    sed 's/-/\\-/g' "$help" | awk -F'|' '
        !/^ / { print ".SS " $1 "\n" $2 "."; next }
        { sub(/^ +/, ""); value = sub(/=$/, "", $1); print ".TP\n.B " $1 (value ? " \\fIvalue\\fR" : "")
          print $2 ($3 != "" ? " (" $3 ")" : "") }'
    echo '.SH EXIT STATUS'
    printf '%s ' '0 when the work was done; 1 when it could not be done, with a line on standard error that says why;'
    echo '2 when the command line asks for something that there is not.'
} | diff - out || fail "the manual page"
if command -v man >/dev/null && man --version >/dev/null 2>&1; then
    man --warnings -l out >page 2>warnings </dev/null && [ ! -s warnings ] || { cat warnings; fail "roff"; }
fi

commands=$(grep -v '^ ' "$help" | cut -d '|' -f 1)
expect 0 "$varnet" manual bash
cp out completion
{
    printf '_varnet() {\n    local word=${COMP_WORDS[COMP_CWORD]} words="--help --version %s"\n' "$(tr '\n' ' ' <<<"$commands" | sed 's/ $//')"
    printf '    if [ "$COMP_CWORD" -gt 1 ]; then\n        case ${COMP_WORDS[1]} in\n'
    awk -F'[|]' '
        function done() { if (name != "") print "            " name ") words=\"" words "\" ;;" }
        !/^ / { done(); name = $1; words = ""; next }
        { sub(/^ +/, ""); sub(/=$/, "", $1) }
        $1 == "-h,--help" { words = words " --help -h"; next }
        /^-/ { words = words " " $1 }
        END { done() }' "$help"
    cat <<'BASH'
            *) words="" ;;
        esac
        case $word in -*) ;; *) words="" ;; esac
    fi
    COMPREPLY=($(compgen -W "$words" -- "$word"))
    [ ${#COMPREPLY[@]} -gt 0 ] || COMPREPLY=($(compgen -f -- "$word"))
}
complete -o filenames -F _varnet varnet
BASH
} | diff - completion || fail "the completion of bash"
# As the shell has it.
complete_words() { # WORDS...: the last is completed
    (
        # shellcheck disable=SC1091
        . ./completion
        COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) COMPREPLY=()
        _varnet || true
        echo "${COMPREPLY[*]}"
    )
}
touch part.stl parting.stl
[ "$(complete_words varnet jo)" = join ] || fail "a command"
[ "$(complete_words varnet s)" = 'split surfaces support slice selfcheck' ] || fail "several commands"
[ "$(complete_words varnet --v)" = --version ] || fail "an option without a command"
[ "$(complete_words varnet join --j)" = --json ] || fail "an option of a command"
[ "$(complete_words varnet join par)" = 'part.stl parting.stl' ] || fail "files"
[ "$(complete_words varnet slice in.stl -o out.cli --sp)" = --splice ] || fail "an option at the end"
[ "$(complete_words varnet order s)" = '' ] || fail "words where a file is meant"

expect 0 "$varnet" manual zsh
{
    printf '#compdef varnet\n_varnet() {\n    if (( CURRENT == 2 )); then\n        local -a commands=(\n'
    quoted() { sed -E 's/(:|\[|\])/\\\1/g'; }
    quoted <"$help" | awk -F'|' "!/^ / { print \"            '\" \$1 \":\" \$2 \"'\" }"
    printf '        )\n        _describe command commands\n        return\n    fi\n    case $words[2] in\n'
    quoted <"$help" | awk -F'|' -v q="'" '
        function done() { if (any) print " \\\n            " q "*:file:_files" q " ;;" }
        !/^ / { done(); printf "        %s) _arguments", $1; any = 1; next }
        { sub(/^ +(-h,)?/, ""); value = sub(/=$/, "", $1) }
        /^--/ { printf " \\\n            %s%s[%s]%s%s", q, $1, $2, value ? ":value:_files" : "", q }
        END { done() }'
    printf '    esac\n}\n_varnet "$@"\n'
} | diff - out || fail "the completion of zsh"
if command -v zsh >/dev/null; then zsh -n out || fail "zsh does not read it"; fi

# What the program says by itself is the same on standard output, and each command has its own.
expect 0 "$varnet" --help
cp out main
quiet
expect 0 "$varnet"
cmp out main || fail "without a command"
quiet
sed -nE 's/^  ([a-z]+)  .*/\1/p' main | diff - <(printf '%s\n' $commands manual) || fail "the commands"
for command in $commands manual; do
    expect 0 "$varnet" $command --help
    quiet
    cp out told
    expect 0 "$varnet" $command -h
    cmp out told || fail "the short form of help"
    [ "$command" = manual ] || [ "$(head -n 1 told)" = "$(grep "^$command|" "$help" | cut -d '|' -f 2)" ] || fail "the help of $command"
    grep -q "^Usage: varnet $command " told || fail "the usage of $command"
    grep -qE "^  $command +$(head -n 1 told | sed 's/[().]/\\&/g')\$" main || fail "the line of $command"
done
# What there is not: a line that says so, on standard error, and 2.
for wrong in nonsense '--nonsense' 'info' 'info a.stl --nonsense' 'manual' 'manual fish' 'manual man bash' 'info part.stl split part.stl -o x' \
    'join split'; do
    # shellcheck disable=SC2086
    expect 2 "$varnet" $wrong
    [ ! -s out ] && [ -s err ] || fail "the message of $wrong"
done
expect 2 "$varnet" manual fish
messages <<'TEXT'
KIND: fish not in {man,bash,zsh}
Run with --help for more information.
TEXT
