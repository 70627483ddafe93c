#!/usr/bin/env bash
# Builds the product for Windows and packs it, in build/package: a zip file, an installer, and a zip
# file with the symbols. The same sources give the same bytes, on any day and in any folder.
# Usage: scripts/package.sh [--out FOLDER] [--version X.Y.Z] [--put PATH=FILE]...
#   --out FOLDER       another folder for the packages
#   --version X.Y.Z    what the packages call themselves; for tests, which need an older one
#   --put PATH=FILE    packs this file at this path, in place of the one that is there, if any; for tests

source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

usage() { die "usage: scripts/package.sh [--out FOLDER] [--version X.Y.Z] [--put PATH=FILE]..."; }

# The version stands in CMakeLists.txt and nowhere else.
version=$(sed -n 's/^project(TavoResample VERSION \([0-9.]*\).*/\1/p' "$root/CMakeLists.txt")
out=$root/build/package
put=()
while [ $# -gt 0 ]; do
    [ $# -ge 2 ] || usage
    case $1 in
        --out) out=$(realpath -m "$2") ;;
        --version) version=$2 ;;
        --put) put+=("$2") ;;
        *) usage ;;
    esac
    shift 2
done
[[ $version =~ ^[0-9]+\.[0-9]+\.[0-9]+$ ]] || die "\"$version\" is no version X.Y.Z"

has_git() { [ -e "$root/.git" ]; }

# The time that packed files bear: that of the last commit, else that of the newest version in
# CHANGELOG.md, else the first that a zip file can hold.
source_date() {
    local day
    if [ -n "${SOURCE_DATE_EPOCH:-}" ]; then
        echo "$SOURCE_DATE_EPOCH"
    elif has_git; then
        git -C "$root" log -1 --format=%ct
    else
        day=$(sed -n 's/^## .*(\([0-9]\{4\}-[0-9][0-9]-[0-9][0-9]\))$/\1/p' "$root/CHANGELOG.md" | head -n 1)
        date -u -d "${day:-1980-01-01}" +%s
    fi
}

# sources FOLDER: its files, without what lies there uncommitted.
sources() {
    if has_git; then git -C "$root" ls-files -- "$1"; else (cd "$root" && find "$1" -type f); fi
}

# test_settings PRESET: keeps the tests that this build has.
test_settings() {
    sed -n 's/^\(TAVO_BUILD_[A-Z]*\):BOOL=ON$/-D\1=ON/p' "$root/build/$1/CMakeCache.txt" 2>/dev/null || true
}

# stage FILE PATH: a text that Windows' own programs show gets their line ends.
stage() {
    mkdir -p "$files/$(dirname "$2")"
    case $2 in
        *.md | *.txt | *.cmd) sed 's/\r*$/\r/' "$1" >"$files/$2" ;;
        *) cp "$1" "$files/$2" ;;
    esac
}

# Links of the documents to what lies elsewhere in a package, or is not in it: those become plain text.
mend_links() {
    local file
    while IFS= read -r file; do
        (cd "$files/$(dirname "$file")" && perl -0777 -pi -e '
            s{\]\(((\.\./)*)settings/vantrel_settings\.h\)}{]($1sdk/include/vantrel_settings.h)}g;
            s{(?<!!)\[([^\]]*)\]\(([^)#:\s]+)(#[^)\s]*)?\)}{-e $2 ? $& : $1}ge;' "$(basename "$file")")
    done < <(listed "$files" | grep '\.md$')
}

# What is packed, under the names that it has there.
stage_all() {
    local preset folder file
    for preset in win32:x86 win64:x64; do
        for file in TavoResample.ax vantrel.exe; do
            stage "$root/build/${preset%:*}/bin/$file" "${preset#*:}/$file"
        done
    done
    for folder in docs sdk completion; do
        for file in $(sources "$folder"); do
            case $file in docs/release.md | docs/architecture.* | docs/decisions.md | docs/windows.md) continue ;; esac
            stage "$root/$file" "$file"
        done
    done
    stage "$root/settings/vantrel_settings.h" sdk/include/vantrel_settings.h
    stage "$root/CHANGELOG.md" CHANGELOG.md
    for file in README.md INSTALL.txt install.cmd uninstall.cmd; do stage "$root/packaging/$file" "$file"; done
    sed -i 's,](\.\./,](,g' "$files/README.md"
    mend_links
    for file in "${put[@]}"; do stage "${file#*=}" "${file%%=*}"; done
}

# fix_times FOLDER: times and modes that are the same everywhere.
fix_times() {
    find "$1" -exec touch -h -d "@$epoch" {} +
    find "$1" -type d -exec chmod 755 {} + -o -exec chmod 644 {} +
}

listed() { (cd "$1" && find . -type f | sed 's,^\./,,' | LC_ALL=C sort); }

# pack FOLDER ZIP
pack() {
    fix_times "$1"
    rm -f "$2"
    (cd "$1" && listed . | TZ=UTC zip -q -9 -X -D "$2" -@) || die "cannot write $2"
}

part_of() {
    case $1 in
        x86/TavoResample.ax) echo filter32 ;;
        x64/TavoResample.ax) echo filter64 ;;
        x86/*) echo vantrel32 ;;
        x64/*) echo vantrel64 ;;
        sdk/*) echo sdk ;;
        docs/* | completion/*) echo docs ;;
        install.cmd | uninstall.cmd) echo none ;;
        *) echo core ;;
    esac
}

# installer_files: for each part, a macro with its files.
installer_files() {
    local part file folder
    for part in core filter32 filter64 vantrel32 vantrel64 sdk docs; do
        echo "!macro Files_$part"
        while IFS= read -r file; do
            [ "$(part_of "$file")" = "$part" ] || continue
            folder=/$(dirname "$file")
            [ "$folder" != /. ] || folder=
            printf '    !insertmacro Put "%s" "%s"\n' "${folder//\//\\}" "$(basename "$file")"
        done < <(listed "$files")
        echo '!macroend'
    done
}

make_installer() {
    installer_files >"$work/files.nsh"
    # Where the name of a packed file comes from, the separator is that of Windows.
    (cd "$files" && SOURCE_DATE_EPOCH=$epoch makensis -V2 -NOCD -DVERSION="$version" -DSTAGE=. \
        -DFILES="$work/files.nsh" -DOUT="$out/$name-setup.exe" "$root/packaging/TavoResample.nsi") \
        >"$logs/installer.log" 2>&1 || die "makensis failed: $(tail -n 3 "$logs/installer.log")"
    [ ! -s "$logs/installer.log" ] || die "makensis warns: $(cat "$logs/installer.log")"
}

make_symbols() {
    local preset symbols=$work/symbols/$name-symbols
    for preset in win32:x86 win64:x64; do
        mkdir -p "$symbols/${preset#*:}"
        cp "$root/build/${preset%:*}/bin"/{TavoResample.ax,vantrel.exe}.debug "$symbols/${preset#*:}"
    done
    pack "$work/symbols" "$out/$name-symbols.zip"
}

install_packages "${packages_build[@]}" "${packages_packing[@]}"
for preset in win32 win64; do
    # shellcheck disable=SC2046
    build "$preset" $(test_settings "$preset") TavoResample vantrel
done

say "Packing version $version"
epoch=$(source_date)
name=TavoResample-$version
mkdir -p "$out"
work=$(mktemp -d "$out/work.XXXXXX")
trap 'rm -rf "$work"' EXIT
files=$work/zip/$name
stage_all
bad=$(listed "$files" | grep -v -x '[A-Za-z0-9_./+-]*' || true)
[ -z "$bad" ] || die "names that not every system takes: $bad"
pack "$work/zip" "$out/$name.zip"
make_installer
make_symbols
chmod 644 "$out/$name"*

say "Made"
(cd "$out" && sha256sum "$name.zip" "$name-setup.exe" "$name-symbols.zip")
echo "in ${out#"$root"/}"
