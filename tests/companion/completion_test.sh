#!/bin/bash
# What the completion for bash offers. Arguments: the completion's file, and the program.
set -u
source "$1"
PATH=$(dirname "$2"):$PATH
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
failed=0

# The words of a command line, the last one unfinished, behind what has to be offered.
offers()
{
    local expected=$1
    shift
    COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
    _iefeatures
    local found
    found=$(printf '%s,' "${COMPREPLY[@]}")
    [ "$found" = "$expected" ] && return
    printf 'behind "%s" there is "%s" and not "%s"\n' "$*" "$found" "$expected"
    failed=1
}

cat > "$folder/hall.toml" <<'TOML'
[line]
name = "hall"
[camera."Gate 1"] # north
[camera."Gate $(touch x)"]
[camera.Roof]
[camera.Roof.x-owner]
TOML

offers "list,line," iefeatures l
offers "init,check,apply,adopt,replace," iefeatures line ""
offers "--file-name,--format," iefeatures export --f
offers "--metrics," iefeatures line check "$folder/hall.toml" --m
offers "Gate\\ 1,Gate\\ \\\$\\(touch\\ x\\),Roof," iefeatures line init "$folder/hall.toml" --refresh ""
offers "Gate\\ 1,Gate\\ \\\$\\(touch\\ x\\)," iefeatures line init "$folder/hall.toml" --refresh Ga
offers "Roof," iefeatures line init "$folder/hall.toml" --camera R
offers "," iefeatures line init "$folder/none.toml" --refresh ""
exit $failed
