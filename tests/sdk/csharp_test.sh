#!/usr/bin/env bash
# The C# example compiles without a warning, as C# 5, which every Windows has a compiler for; each call
# of its declared interface arrives where the C header says.
# Usage: csharp_test.sh PROJECT_FOLDER C_COMPILER FOLDER
set -euo pipefail

root=$1 compiler=$2 folder=$3

for program in mcs mono; do
    command -v $program >/dev/null || { echo "$program is missing: install the package mono-mcs"; exit 1; }
done
rm -rf "$folder"
mkdir -p "$folder"
mcs -langversion:5 -warn:4 -warnaserror+ -out:"$folder/LiveResize.exe" "$root"/sdk/csharp/*.cs
"$compiler" -std=c11 -Wall -Wextra -Werror -shared -fPIC -I "$root" -I "$root/tests/sdk/csharp" \
    "$root/tests/sdk/csharp/settings_mock.c" -o "$folder/libsettings_mock.so"
mcs -langversion:5 -warn:4 -warnaserror+ -out:"$folder/CheckCalls.exe" \
    "$root/sdk/csharp/Vantrel.cs" "$root/tests/sdk/csharp/CheckCalls.cs"
LD_LIBRARY_PATH=$folder timeout 60 mono "$folder/CheckCalls.exe"

# The program itself needs Windows; without arguments it says what it takes.
code=0
said=$(timeout 60 mono "$folder/LiveResize.exe" 2>&1) || code=$?
[ "$code" -eq 2 ] && [[ $said == Usage:* ]] || { echo "without arguments: code $code: $said"; exit 1; }
