#!/usr/bin/env bash
# The command lines of docs/programming.md that begin with a compiler do what they say, in the folder sdk
# as packages have it.
# Usage: commands_test.sh PROJECT_FOLDER FOLDER COMPILER...    (the compilers' first letters are enough)
set -euo pipefail

root=$1 folder=$2
shift 2

rm -rf "$folder"
mkdir -p "$folder"
cp -r "$root/sdk" "$folder/sdk"
mkdir "$folder/sdk/include"
cp "$root/settings/vantrel_settings.h" "$folder/sdk/include/"
cd "$folder/sdk"
for compiler in "$@"; do
    mapfile -t commands < <(grep "^$compiler" "$root/docs/programming.md")
    [ ${#commands[@]} -gt 0 ] || { echo "no command begins with $compiler"; exit 1; }
    for command in "${commands[@]}"; do
        printf '%s\n' "$command"
        program=$(grep -oE '[A-Za-z_]+\.exe' <<<"$command")
        eval "$command"
        [ -s "$program" ] || { echo "there is no $program"; exit 1; }
        rm "$program"
    done
done
