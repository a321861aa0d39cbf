#!/usr/bin/env bash
# The main job: installs what is missing (Debian 12, as root), builds
# HBAddin.dll for x64 and x86 with MinGW-w64, and runs the Windows
# self-checks under Wine (build/win64/wineprefix; the x86 one too in
# build/win32/wineprefix when Wine's 32-bit side is installed), printing
# what they verified.
# Then the add-in at work: the x64 DLL registered with regsvr32, loaded by
# the stand-in Outlook (standin/) through that registration and driven
# through a user's session under Xvfb; the transcript says what the add-in
# wrote, screenshots go to build/screenshots.
#
#   bash scripts/run.sh
set -uo pipefail
# shellcheck source=scripts/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"
cd "$HB_ROOT" || exit 1

echo "Hourbook for Outlook v4: main job"
hb_say "Debian packages"
# Chromium renders the report's HTML page for its screenshot.
HB_PACKAGES+=(chromium)
hb_ensure_packages || exit 1

hb_say "libxlsxwriter for MinGW, from Debian's source package (the report's XLSX export)"
bash scripts/xlsxwriter.sh x64 | tail -n 1 || exit 1
hb_say "Building HBAddin.dll for 64-bit Outlook (preset win64)"
hb_build win64 HBAddin hb_selfcheck hb_standin HBPersonalSettingsSingle HBReporting || exit 1
hb_say "Building HBAddin.dll for 32-bit Outlook (preset win32)"
# The x86 self-check runs too when Wine's 32-bit side is there already
# (scripts/test.sh installs it); this job installs nothing for it.
x86_mode=none
if hb_wine32_installed; then
    x86_mode=multiarch
elif [ "$(id -u)" = 0 ] && hb_x86_root_ready; then
    x86_mode=root
fi
hb_configure win32 -DHB_WINE_MODE=$x86_mode || exit 1
hb_compile win32 HBAddin hb_selfcheck || exit 1

hb_say "The two DLLs"
for arch in win64 win32; do
    dll="$(hb_build_dir "$arch")/HBAddin.dll"
    triple=x86_64-w64-mingw32
    [ "$arch" = win32 ] && triple=i686-w64-mingw32
    format=$("$triple-objdump" -f "$dll" | sed -n 's/.*file format //p' | head -n 1)
    imports=$("$triple-objdump" -p "$dll" | sed -n 's/^[[:space:]]*DLL Name: //p' | tr '\n' ' ')
    printf '   %-22s %9d bytes, %s; imports only system DLLs: %s\n' "$dll" \
        "$(stat -c %s "$dll")" "$format" "$imports"
done

win64=$(cd "$(hb_build_dir win64)" && pwd)
win32=$(cd "$(hb_build_dir win32)" && pwd)
hb_say "Windows self-check under Wine, x64 (the x86 DLL read as data)"
"$win64/wine-run.sh" "$win64/hb_selfcheck.exe" "$(hb_winpath "$win32/HBAddin.dll")" </dev/null
rc=$?
# The build tree's wineserver would leave by itself in a few seconds.
"$win64/wine-run.sh" --stop
x86_note="x86 self-check not run (no x86 Wine yet: bash scripts/test.sh installs one)"
if [ "$x86_mode" != none ]; then
    hb_say "Windows self-check under Wine, x86 ($x86_mode; the x64 DLL read as data)"
    "$win32/wine-run.sh" "$win32/hb_selfcheck.exe" "$(hb_winpath "$win64/HBAddin.dll")" </dev/null
    rc32=$?
    "$win32/wine-run.sh" --stop
    rc=$((rc + rc32))
    x86_note="x86 self-check run under Wine ($x86_mode)"
fi

# The add-in at work: the x64 DLL registered in the build tree's Wine prefix
# (regsvr32, as its installer does), loaded by the stand-in Outlook through
# that registration, a user's session acted out in real windows on an X
# server of our own, screenshots saved, and the DLL unregistered again.
hb_say "The add-in at work: a session in the stand-in Outlook (x64, under Wine and Xvfb)"
shots="$HB_ROOT/build/screenshots"
session_rc=1
display=""
for n in $(seq 91 140); do
    if [ ! -e "/tmp/.X11-unix/X$n" ] && [ ! -e "/tmp/.X$n-lock" ]; then
        display=":$n"
        break
    fi
done
if [ -z "$display" ]; then
    echo "   no free X display number between :91 and :140"
else
    Xvfb "$display" -screen 0 1280x1024x24 -nolisten tcp >/dev/null 2>&1 &
    xvfb_pid=$!
    for _ in $(seq 50); do
        [ -e "/tmp/.X11-unix/X${display#:}" ] && break
        sleep 0.1
    done
    # The build tree's wine-run.sh runs programs without a display: the
    # session runs in the same prefix with the display set.
    standin_wine() {
        WINEPREFIX="$win64/wineprefix" WINEDEBUG=-all WINEDLLOVERRIDES='mscoree,mshtml=' \
            WINEARCH=win64 DISPLAY="$display" wine "$@" </dev/null
    }
    # Wine draws the windows' frames itself: there is no window manager.
    standin_wine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f >/dev/null 2>&1
    dll_win=$(hb_winpath "$win64/HBAddin.dll")
    addin_key='HKLM\Software\Microsoft\Office\Outlook\Addins\HBAddin.Connect'
    if standin_wine regsvr32 /s "$dll_win" && standin_wine reg query "$addin_key" >/dev/null 2>&1; then
        echo "   regsvr32 HBAddin.dll: registered; Outlook's add-in key $addin_key"
        rm -rf "$shots"
        mkdir -p "$shots"
        echo
        standin_wine "$win64/hb_standin.exe" --version 12 --shots "$(hb_winpath "$shots")" 2>&1 |
            tr -d '\r' | sed 's/^/   /'
        session_rc=${PIPESTATUS[0]}
        # A screenshot the stand-in saved as BMP, kept as PNG.
        save_shot() {
            if [ -f "$shots/$1.bmp" ] && convert "$shots/$1.bmp" "$shots/$1.png"; then
                rm -f "$shots/$1.bmp"
                echo "   screenshot: build/screenshots/$1.png"
            else
                echo "   screenshot of the $1 window: not taken"
                return 1
            fi
        }
        for shot in calendar appointment report pivot; do
            save_shot "$shot" || session_rc=1
        done
        # An HTML page the session wrote (the scheduled report's, Cubelens's
        # pivot page), as a browser shows it.
        page_shot() {
            local page="$shots/$1.html" png="$shots/$2.png" profile
            profile=$(mktemp -d)
            if [ -s "$page" ] && chromium --headless --no-sandbox --disable-gpu --no-first-run \
                --disable-background-networking --disable-component-update --disable-sync \
                --user-data-dir="$profile" --window-size="$3" \
                --screenshot="$png" "file://$page" >/dev/null 2>&1 </dev/null &&
                [ -s "$png" ]; then
                echo "   screenshot: build/screenshots/$2.png ($1.html in Chromium)"
            else
                echo "   screenshot of $1.html: not taken"
                rm -rf "$profile"
                return 1
            fi
            rm -rf "$profile"
        }
        page_shot report report-page 1000,900 || session_rc=1
        page_shot pivot pivot-page 1200,800 || session_rc=1
        echo
        echo "   The same session under Outlook 16: the ribbon group on the calendar's Home tab"
        echo "   instead of the toolbar:"
        standin_wine "$win64/hb_standin.exe" --version 16 --shots "$(hb_winpath "$shots")" 2>&1 |
            tr -d '\r' | sed 's/^/   /'
        [ "${PIPESTATUS[0]}" -eq 0 ] || session_rc=1
        save_shot ribbon || session_rc=1
        echo
        echo "   The appointment window under Outlook 11 (the toolbar instead of the task pane):"
        standin_wine "$win64/hb_standin.exe" --version 11 2>&1 | tr -d '\r' |
            sed -n '/opens "Code review"/,/closes the appointment/p' | sed 's/^/   /'
        [ "${PIPESTATUS[0]}" -eq 0 ] || session_rc=1
        echo
        echo "   Start-up and shutdown on every Outlook version:"
        for v in 9 10 11 12 14 15 16; do
            standin_wine "$win64/hb_standin.exe" --version "$v" --startup-only 2>&1 | tr -d '\r' |
                awk '/start-up, from/ { sub(/.*toolbar: /, ""); t = $0 }
                     /^Reference census/ { sub(/.*OnDisconnection: /, ""); c = $0 }
                     / session: / { sub(/ session:/, ":"); o = $0 }
                     END { printf "     %s; start-up %s; census %s\n", o, t, c }'
            [ "${PIPESTATUS[0]}" -eq 0 ] || session_rc=1
        done
        standin_wine regsvr32 /u /s "$dll_win"
        if standin_wine reg query "$addin_key" >/dev/null 2>&1; then
            echo "   regsvr32 /u HBAddin.dll: the add-in key is still there"
            session_rc=1
        else
            echo "   regsvr32 /u HBAddin.dll: unregistered, the add-in key is gone"
        fi
    else
        echo "   regsvr32 HBAddin.dll failed"
    fi
    WINEPREFIX="$win64/wineprefix" wineserver -k >/dev/null 2>&1
    kill "$xvfb_pid" 2>/dev/null
    wait "$xvfb_pid" 2>/dev/null
fi

hb_say "Result"
if [ $rc -eq 0 ]; then
    echo "   main job: both DLLs built, Windows self-checks passed under Wine; $x86_note"
else
    echo "   main job: Windows self-checks FAILED ($rc failed checks)"
fi
if [ $session_rc -eq 0 ]; then
    echo "   the add-in's session in the stand-in Outlook: every check held (screenshots in build/screenshots)"
else
    echo "   the add-in's session in the stand-in Outlook: FAILED"
fi
exit $((rc + session_rc))
