#!/usr/bin/env bash
# Builds the packages and tests them as their users will: under Wine, in a prefix of their own, with the
# registry compared before and after.
# Usage: scripts/test_package.sh

source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

work=$root/build/package-test
export WINEPREFIX=$work/wine
drive=$WINEPREFIX/drive_c
entry='HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall\TavoResample'
server='HKLM\Software\Classes\CLSID\{80650FA1-6CCB-4807-B027-46AA6BE5BFC9}\InprocServer32'
failures=0

if [ -z "${TAVO_IN_DISPLAY:-}" ]; then
    install_packages "${packages_build[@]}" "${packages_wine[@]}" "${packages_display[@]}" \
        "${packages_packing[@]}" gstreamer1.0-plugins-good gstreamer1.0-libav ffmpeg mono-mcs
    TAVO_IN_DISPLAY=1 exec xvfb-run -a "$0" "$@"
fi

# expect TEXT WANTED FOUND
expect() {
    if [ "$2" = "$3" ]; then
        echo "  ok  $1"
    else
        printf '  FAILED  %s\n    wanted: %s\n    found:  %s\n' "$1" "$2" "$3"
        failures=$((failures + 1))
    fi
}

# on_wine ARGUMENT...: sets code; what the program prints goes to the log.
on_wine() {
    code=0
    WINE_TIME_LIMIT=100 "$root/scripts/wine.sh" "$@" >>"$logs/package-test.log" 2>&1 </dev/null || code=$?
}

# run_in FOLDER ARGUMENT...: as on_wine, in this folder.
run_in() {
    cd "$1" || die "there is no folder $1"
    shift
    on_wine "$@"
    cd "$root"
}

# build_package FOLDER ARGUMENT...: in build/package-test.
build_package() {
    local folder=$1
    shift
    "$root/scripts/package.sh" --out "$work/$folder" "$@" >"$logs/package-$folder.log" 2>&1 ||
        die "scripts/package.sh failed: $(tail -n 1 "$logs/package-$folder.log")"
}

# value KEY NAME VIEW: of the registry.
value() {
    local name=(/v "$2")
    [ -n "$2" ] || name=(/ve)
    "$root/scripts/wine.sh" reg query "$1" "${name[@]}" "/reg:$3" 2>/dev/null |
        tr -d '\r' | sed -n 's/^    .*    REG_[A-Z]*    //p'
}

registered() { echo "$(value "$server" '' 32) $(value "$server" '' 64)"; }

# The registry as Wine writes it when its server ends, in one file. Left out are: the times of keys, and
# the time that Wine notes for its display drivers at each start; the list of files to be deleted at the
# next start of Windows, in which every NSIS uninstaller enters the copy of itself that did the work;
# the colours of consoles, which Wine writes when one has been open for some seconds.
save_registry() {
    timeout 60 wineserver -k || true
    timeout 60 wineserver -w || true
    sed -E -e '/^#time=/d' -e 's/^(\[.*\]) [0-9]+$/\1/' -e '/^"DriverDateData"=/d' \
        -e '/^"PendingFileRenameOperations"=/{/Tavo/!d}' "$WINEPREFIX"/{system,user,userdef}.reg |
        awk 'BEGIN { RS = ""; ORS = "\n\n" } !/^\[Console\]/' >"$1"
}

# expect_registry TEXT: that it is as in the beginning.
expect_registry() {
    save_registry "$work/registry.now"
    expect "$1" "" "$(diff "$work/registry.before" "$work/registry.now" | head -n 20)"
}

tree() { (cd "$1" && find . -type f -exec sha256sum {} + | sort -k 2); }

# scale FOLDER: the filter by its class, in a program of each bitness. (A file that is there before is
# an error of vantrel's.)
scale() {
    local bitness
    for bitness in x86 x64; do
        rm -f "$work/scaled.avi"
        [ -e "$1/$bitness/vantrel.exe" ] || continue
        on_wine "$(windows_path "$1/$bitness/vantrel.exe")" "$(windows_path "$work/clip.avi")" \
            "$(windows_path "$work/scaled.avi")" --registered --size 80x60
        expect "$bitness scales with the registered filter" "0 80,60,300" "$code $(ffprobe -v error \
            -select_streams v:0 -count_packets -show_entries stream=width,height,nb_read_packets \
            -of csv=p=0 "$work/scaled.avi" 2>/dev/null)"
    done
}

# run_examples FOLDER: those of its sdk, built as its documents say, with the installed filter.
run_examples() {
    local bits command program
    for bits in x86_64 i686; do
        while read -r command; do
            program=$(grep -oE '[a-z_]+\.exe' <<<"$command")
            (cd "$1/sdk" && eval "${command//x86_64/$bits}" && mv "$program" "$work/$bits-$program") ||
                die "this fails: $command"
        done < <(tr -d '\r' <"$1/docs/programming.md" | grep '^x86_64-w64-mingw32-g')
    done
    (cd "$1/sdk" && mcs -out:"$work/LiveResize.exe" csharp/*.cs) || die "the C# example cannot be built"
    for program in "$work"/{x86_64,i686}-*.exe; do
        "$root/scripts/wine.sh" "$program" "$(windows_path "$work/moving.avi")" 128 96 25 80 60 \
            >"${program%.exe}.txt" 2>/dev/null </dev/null &
    done
    wait
    for program in "$work"/{x86_64,i686}-*.exe; do
        expect "${program##*/} plays in both sizes" "128x96 80x60" \
            "$(sed 's/:.*//' "${program%.exe}.txt" | tr -d '\r' | xargs)"
    done
}

# start_playing PRESET ARGUMENT...: plays the clip, and goes on when its graph is connected; sets player.
start_playing() {
    local program=$root/build/$1/bin/vantrel.exe
    shift
    rm -f "$work/graph.txt"
    # Not by way of wine.sh, which keeps what a program prints until it ends.
    WINEDEBUG=-all WINEDLLOVERRIDES="winedbg.exe,mscoree,mshtml,winealsa.drv,winepulse.drv,wineoss.drv=d" \
        timeout 310 wine "$program" --play "$(windows_path "$work/clip.avi")" --graph "$@" \
        >"$work/graph.txt" 2>/dev/null &
    player=$!
    for _ in $(seq 200); do
        [ ! -s "$work/graph.txt" ] || return 0
        sleep 0.2
    done
    die "vantrel --play does not start"
}

stop_playing() {
    kill "$player" 2>/dev/null || true
    wait "$player" 2>/dev/null || true
}

# await_gone PATH: the uninstaller goes on after its first process has ended.
await_gone() {
    for _ in $(seq 100); do
        [ -e "$1" ] || return 0
        sleep 0.2
    done
}

test_contents() {
    say "What is in the packages"
    local first="$work/new/TavoResample-$version" folder text
    rm -rf "$work/zip" && mkdir -p "$work/zip"
    unzip -q "$first.zip" -d "$work/zip"
    folder=$work/zip/TavoResample-$version
    expect "the zip file has one folder" "TavoResample-$version" "$(ls "$work/zip")"
    expect "modules, programs and texts" \
        "CHANGELOG.md INSTALL.txt README.md install.cmd sdk/include/vantrel_settings.h uninstall.cmd x64/TavoResample.ax x64/vantrel.exe x86/TavoResample.ax x86/vantrel.exe" \
        "$(cd "$folder" && ls {CHANGELOG,README}.md INSTALL.txt {,un}install.cmd x{86,64}/* sdk/include/* | LC_ALL=C sort | xargs)"
    expect "the licence" "Licence: not chosen yet." "$(grep -h '^Licence' "$folder/INSTALL.txt" | tr -d '\r')"
    expect "the symbols are those of these files" "4" "$(unzip -Z1 "$first-symbols.zip" | grep -c '\.debug$')"
    for text in x86/TavoResample.ax x64/TavoResample.ax x86/vantrel.exe x64/vantrel.exe; do
        unzip -p "$first-symbols.zip" "TavoResample-$version-symbols/$text.debug" >"$work/symbols"
        expect "no folder of this machine in $text" "" \
            "$(cat "$folder/$text" "$work/symbols" | grep -a -o -m 1 -F "$root" || true)"
        expect "no time of linking in $text" "00000000 00000000" "$(link_time "$folder/$text") $(link_time "$work/symbols")"
    done
    expect "the version of the installer" "$version" "$(x86_64-w64-mingw32-strings -el "$first-setup.exe" | grep -x -m 1 '[0-9]*\.[0-9]*\.[0-9]*')"
}

# link_time FILE: of its header.
link_time() {
    local header
    header=$(od -An -tu4 -j 60 -N 4 "$1")
    od -An -tx4 -j $((header + 8)) -N 4 "$1" | tr -d ' '
}

test_same_bytes() {
    say "The same bytes again"
    (umask 077 && TZ=Asia/Tokyo LC_ALL=C build_package again)
    expect "another folder, time zone and umask make no difference" \
        "$(cd "$work/new" && sha256sum ./*)" "$(cd "$work/again" && sha256sum ./*)"
}

test_refusals() {
    say "What is refused"
    on_wine "$work/new/TavoResample-$version-setup.exe" /S /COMPONENTS=filter32,flter64
    expect "a part that does not exist" 3 "$code"
    on_wine "$work/new/TavoResample-$version-setup.exe" /S /COMPONENTS=vantrel,docs
    expect "no filter" 3 "$code"
    on_wine "$work/new/TavoResample-$version-setup.exe" /S /WHAT
    expect "an option that does not exist" 3 "$code"
    on_wine "$work/new/TavoResample-$version-setup.exe" /S '/D=C:\In quotation marks'
    expect "a folder in quotation marks" 3 "$code"
    on_wine "$work/broken/TavoResample-99.0.0-setup.exe" /S
    expect "a module that cannot be registered" 6 "$code"
    mkdir -p "$drive/Taken/README.md"
    echo "the user's" >"$drive/Taken/README.md/mine.txt"
    on_wine "$work/new/TavoResample-$version-setup.exe" /S '/D=C:\Taken'
    expect "a file that cannot be written" "2 README.md/mine.txt" "$code $(cd "$drive/Taken" && find . -type f | sed 's,^\./,,')"
    rm -r "$drive/Taken"
    expect "nothing of these is installed" "no" "$([ -e "$drive/Program Files/TavoResample" ] && echo yes || echo no)"
    expect_registry "the registry is as before"
}

test_installer() {
    # A folder with all that is awkward, in one that is not there yet.
    local folder="$drive/Video (all) & [more] 100%/Tavo Resample"
    local place='C:\Video (all) & [more] 100%\Tavo Resample' before
    say "An older version"
    # Unquoted, as the installer wants it.
    on_wine "$work/older/TavoResample-0.0.9-setup.exe" /S '/D=C:\Video' '(all)' '&' '[more]' '100%\Tavo' Resample
    expect "is installed" "0 0.0.9" "$code $(value "$entry" DisplayVersion 64)"
    expect "with its own file" "old" "$(tr -d '\r' <"$folder/docs/old/page.txt")"
    echo "the user's" >"$folder/docs/mine.txt"
    on_wine "$work/older/TavoResample-0.0.9-setup.exe" /S '/D=C:\Elsewhere'
    expect "is not installed twice" 3 "$code"

    say "The upgrade"
    on_wine "$work/new/TavoResample-$version-setup.exe" /S
    expect "replaces it where it is" "0 $version $place" \
        "$code $(value "$entry" DisplayVersion 64) $(value "$entry" InstallLocation 64)"
    expect "without the older one's file" "no" "$([ -e "$folder/docs/old" ] && echo yes || echo no)"
    expect "with the user's" "the user's" "$(cat "$folder/docs/mine.txt")"
    rm "$folder/docs/mine.txt"
    expect "the files are those of the zip file" \
        "$(tree "$work/zip/TavoResample-$version" | grep -v 'install\.cmd$')" \
        "$(tree "$folder" | grep -v -e ' \./uninstall\.exe$' -e ' \./installed\.txt$')"
    expect "both are registered" "$place\\x86\\TavoResample.ax $place\\x64\\TavoResample.ax" "$(registered)"
    scale "$folder"
    run_examples "$folder"

    say "While it is in use"
    before=$(tree "$folder")
    for preset in win32 win64; do
        start_playing "$preset" --registered
        on_wine "$work/new/TavoResample-$version-setup.exe" /S
        expect "$preset: the installer refuses" 5 "$code"
        on_wine "$folder/uninstall.exe" /S '_?=C:\Video' '(all)' '&' '[more]' '100%\Tavo' Resample
        expect "$preset: the uninstaller refuses" 5 "$code"
        stop_playing
    done
    expect "nothing has changed" "$before" "$(tree "$folder")"

    say "An upgrade that fails"
    save_registry "$work/registry.installed"
    on_wine "$work/broken/TavoResample-99.0.0-setup.exe" /S
    expect "says so" 6 "$code"
    save_registry "$work/registry.now"
    expect "the registry is as before" "" "$(diff "$work/registry.installed" "$work/registry.now" | head)"
    expect "so are the files" "$before" "$(tree "$folder")"
    scale "$folder"

    say "The uninstaller"
    on_wine "$folder/uninstall.exe" /S
    await_gone "${folder%/*}"
    expect "takes the folders away that the installer made" "no" "$([ -e "${folder%/*}" ] && echo yes || echo no)"
    expect_registry "the registry is as before"
}

test_parts() {
    local place folder="$drive/Program Files/TavoResample"
    say "Some parts"
    on_wine "$work/new/TavoResample-$version-setup.exe" /S /what
    expect "a wrong option is refused" "3 no" "$code $([ -e "$folder" ] && echo yes || echo no)"
    on_wine "$work/new/TavoResample-$version-setup.exe" /S /COMPONENTS=filter64,vantrel
    expect "are installed, and no others" \
        "0 CHANGELOG.md INSTALL.txt README.md installed.txt uninstall.exe x64/TavoResample.ax x64/vantrel.exe" \
        "$code $(cd "$folder" && find . -type f | sed 's,^\./,,' | LC_ALL=C sort | xargs)"
    scale "$folder"
    on_wine "$work/new/TavoResample-$version-setup.exe" /S
    expect "stay chosen" "0 filter64,vantrel" "$code $(value "$entry" Components 64)"
    echo "the user's" >"$folder/mine.txt"
    on_wine "$folder/uninstall.exe" /S /COMPONENTS=vantrel '_?=C:\Program' 'Files\TavoResample'
    expect "a wrong option is refused by the uninstaller" "3 yes" \
        "$code $([ -e "$folder/x64/vantrel.exe" ] && echo yes || echo no)"
    # A filter that was registered from elsewhere in the meantime is not the uninstaller's.
    run_in "$work/zip/TavoResample-$version" cmd /c install.cmd /quiet
    on_wine "$folder/uninstall.exe" /S '_?=C:\Program' 'Files\TavoResample'
    expect "go, but for the user's" "0 mine.txt uninstall.exe" "$code $(ls "$folder" | xargs)"
    place=$(windows_path "$work/zip/TavoResample-$version")
    expect "what is registered from elsewhere stays" \
        "$place\\x86\\TavoResample.ax $place\\x64\\TavoResample.ax" "$(registered)"
    rm -r "$folder"
    run_in "$work/zip/TavoResample-$version" cmd /c uninstall.cmd /quiet
    expect_registry "the registry is as before"
}

test_zip() {
    local file folder="$drive/un (zip) & [x]" place='C:\un (zip) & [x]' # Wine's cmd loses a %
    say "The zip file"
    cp -r "$work/zip/TavoResample-$version" "$folder"
    run_in "$folder" cmd /c install.cmd /what
    expect "a wrong option is refused" 3 "$code"
    run_in "$folder" cmd /c install.cmd
    expect "install.cmd registers both" "0 $place\\x86\\TavoResample.ax $place\\x64\\TavoResample.ax" "$code $(registered)"
    scale "$folder"
    run_in "$work/zip/TavoResample-$version" cmd /c uninstall.cmd
    expect "uninstall.cmd of another folder leaves them" "0 $place\\x86\\TavoResample.ax $place\\x64\\TavoResample.ax" \
        "$code $(registered)"
    run_in "$folder" cmd /c uninstall.cmd /quiet
    expect "uninstall.cmd unregisters both" "0  " "$code $(registered)"
    run_in "$folder" cmd /c uninstall.cmd
    expect "and again does no harm" 0 "$code"
    for file in install uninstall; do
        run_in "$folder" start /wait 'C:\windows\sysnative\cmd.exe' /c "$file.cmd" /quiet
        expect "$file.cmd in a 64-bit prompt" "0" "$code"
    done
    expect "leaves nothing registered" " " "$(registered)"
    echo "broken" >"$folder/x64/TavoResample.ax"
    run_in "$folder" cmd /c install.cmd
    expect "a failed registration is undone" "6  " "$code $(registered)"
    rm "$folder/x64/TavoResample.ax"
    run_in "$folder" cmd /c install.cmd /quiet
    expect "a file that is missing is told" 2 "$code"
    rm -r "$folder"
    expect_registry "the registry is as before"
}

version=$(sed -n 's/^project(TavoResample VERSION \([0-9.]*\).*/\1/p' "$root/CMakeLists.txt")
rm -rf "$work"
mkdir -p "$work"
: >"$logs/package-test.log"
start=$SECONDS
say "Building the packages, and those for the tests"
echo "old" >"$work/page.txt"
echo "broken" >"$work/broken.ax"
build_package new
build_package older --version 0.0.9 --put docs/old/page.txt="$work/page.txt"
build_package broken --version 99.0.0 --put x64/TavoResample.ax="$work/broken.ax"
test_contents
test_same_bytes

say "Starting Wine"
"$root/scripts/wine.sh" cmd /c exit || die "Wine does not start"
# The uninstaller's parent ends before it: the server must not stay beyond this script.
trap 'wineserver -k 2>/dev/null || true' EXIT
ffmpeg -v error -f lavfi -i testsrc2=size=160x120:rate=1:duration=300 -c:v rawvideo -pix_fmt yuv420p \
    "$work/clip.avi"
ffmpeg -v error -f lavfi -i testsrc2=size=160x120:rate=25:duration=8 -c:v rawvideo -pix_fmt bgr24 \
    "$work/moving.avi"
# At its first use of a filter graph, Wine makes keys of its own.
start_playing win32
stop_playing
save_registry "$work/registry.before"
test_refusals
test_installer
test_parts
test_zip

say "Result"
[ "$failures" -eq 0 ] || die "$failures checks of the packages failed (build/logs/package-test.log)"
echo "All checks of the packages passed, in $((SECONDS - start)) s"
