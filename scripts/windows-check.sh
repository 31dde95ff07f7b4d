#!/usr/bin/env bash
# Cross-builds the Windows host (mingw-w64), lays out the Windows runtime and interop assembly, and runs
# under wine64: the host tests and runtime_check.exe, which starts coreclr.dll through the loader DLL and
# draws with System.Drawing over Wine's GDI+. The extension module is cross-compiled too (not run).
#   scripts/windows-check.sh [build-dir]      (expects build/gen from `make generate`)
set -euo pipefail
build=${1:-build}
out=$build/windows
JOBS=${JOBS:-2}
PY=${PY:-/usr/bin/python3}
export WINEPREFIX=$(realpath -m "$out/wineprefix") WINEDEBUG=-all
unset DISPLAY  # headless: nothing here opens a window
WINE=/usr/lib/wine/wine64
step() { printf '\n== %s\n' "$*"; }

step "tools"
need=()
for p in mingw-w64 wine64 fonts-dejavu-core; do dpkg -s "$p" >/dev/null 2>&1 || need+=("$p"); done
if [ ${#need[@]} -gt 0 ]; then apt-get install -y --no-install-recommends "${need[@]}" >/dev/null; fi
x86_64-w64-mingw32-g++-posix --version | head -1
$WINE --version

step "CPython 3.11 for Windows: the installed headers with a Windows pyconfig.h, an import library of python311.dll"
# No Windows CPython is at hand: the import library lists what this interpreter exports (functions, and
# data marked DATA), which is the API that python311.dll exports as well.
pyroot=$out/python311
rm -rf "$pyroot" && mkdir -p "$pyroot/include" "$pyroot/libs"
cp -rL "$($PY -c 'import sysconfig; print(sysconfig.get_paths()["include"])')/." "$pyroot/include/"
cp cmake/windows/python/pyconfig.h "$pyroot/include/pyconfig.h"
{
    echo "LIBRARY python311.dll"
    echo "EXPORTS"
    nm -D --defined-only "$(readlink -f "$PY")" | awk '$3 ~ /^_?Py/ {
        if ($2 ~ /[Tt]/) print "    " $3; else if ($2 ~ /[DdBbRrV]/) print "    " $3 " DATA" }'
} > "$pyroot/libs/python311.def"
x86_64-w64-mingw32-dlltool -d "$pyroot/libs/python311.def" -D python311.dll -l "$pyroot/libs/libpython311.dll.a"
echo "python311.def: $(grep -c '^    ' "$pyroot/libs/python311.def") exports"

step "cross build: host core, loader DLL, host tests, runtime_check, the extension modules"
cmake -S cmake/windows -B "$out/native" -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/mingw-w64-x86_64.cmake" \
    -DCMAKE_BUILD_TYPE=Release -DPYTHON_WINDOWS_ROOT="$(realpath "$pyroot")" \
    -DGENERATED_DIR="$(realpath "$build/gen/native")" >/dev/null
cmake --build "$out/native" -j"$JOBS" | grep -E "error|warning|Linking" || true
( cd "$out/native" && ls -1 *.exe *.dll *.pyd fake/*.dll )
for f in orvane.embed.coreclrwrap.dll pyfigura.cp311-win_amd64.pyd pygc.cp311-win_amd64.pyd; do
    echo "$f imports: $(x86_64-w64-mingw32-objdump -p "$out/native/$f" | sed -n 's/^\tDLL Name: //p' | tr '\n' ' ')"
    echo "$f exports: $(x86_64-w64-mingw32-objdump -p "$out/native/$f" | sed -n 's/^\t\[ *[0-9]*\] //p' | grep -v '+base' | tr '\n' ' ')"
done

step "Windows runtime pack and interop assembly (NuGet, win-x64)"
major=$(sed -n 's#.*<TargetFramework>net\([0-9]*\)\.[0-9]*</TargetFramework>.*#\1#p' managed/WrpInterop.Orvane.PyFigura.csproj)
version=$(dotnet --list-runtimes | awk -v m="$major" '$1 == "Microsoft.NETCore.App" && index($2, m ".") == 1 {print $2}' \
    | sort -V | tail -n 1)
mkdir -p "$out/restore"
cp cmake/windows/RuntimePack.csproj "$out/restore/"
env -u COREHOST_TRACE dotnet restore "$out/restore/RuntimePack.csproj" -p:RuntimeVersion="$version" --packages "$out/packages" \
    --nologo -v quiet
pack=$out/packages/microsoft.netcore.app.runtime.win-x64/$version/runtimes/win-x64
layout=$out/layout
runtime_dir=$layout/runtime/netcore$major.$(echo "$version" | cut -d. -f2)
rm -rf "$layout" && mkdir -p "$runtime_dir" "$layout/assemblies"
cp "$pack"/native/* "$pack"/lib/net$major.0/*.dll "$runtime_dir/"
cp "$out/native/orvane.embed.coreclrwrap.dll" "$runtime_dir/"
env -u COREHOST_TRACE dotnet publish managed/WrpInterop.Orvane.PyFigura.csproj -c Release -r win-x64 --self-contained false \
    -p:PublishReadyToRun=false --artifacts-path "$out/artifacts" -o "$layout/assemblies/pyfigura" --nologo -v quiet
echo "runtime $version: $runtime_dir ($(ls "$runtime_dir" | wc -l) files)"
ls "$layout/assemblies/pyfigura"

step "host tests under wine64"
# The host singleton starts once per process: the start-up group runs in a process of its own.
status=0
( cd "$out/native" && $WINE host_tests.exe --gtest_filter=-HostStartWindows.* ) || status=1
( cd "$out/native" && $WINE host_tests.exe --gtest_filter=HostStartWindows.* ) || status=1

step "runtime_check.exe under wine64: coreclr.dll, ExchangeHost, ObjectHost, System.Drawing.Bitmap"
# A generated entry of a System.Drawing type found by its signature, as Key=Namespace.Class::method.
entry() {  # entry <key> <type> <entry-name pattern> <parameters, a grep pattern>
    local file namespace class method
    file=$(grep -rlx "// Interop entries: System.Drawing.$2." "$build/gen/managed")
    namespace=$(sed -n 's/^namespace \([A-Za-z0-9_.]*\)$/\1/p' "$file")
    class=$(sed -n 's/^ *public static unsafe class \([A-Za-z0-9_]*\)$/\1/p' "$file")
    method=$(grep -o "public static [A-Za-z]* $3($4)" "$file" | head -n 1 | sed 's/.* \([A-Za-z0-9_]*\)(.*/\1/')
    echo "$1=$namespace.$class::$method"
}
entries=(
    "$(entry NewBitmap Bitmap 'ctor_[0-9]*_Bitmap' 'int width, int height')"
    "$(entry LoadBitmap Bitmap 'ctor_[0-9]*_Bitmap' 'StringArg\* filename')"
    "$(entry SetPixel Bitmap 'call_[0-9]*_SetPixel' 'IntPtr __self, int x, int y, ColorValue\* color')"
    "$(entry GetPixel Bitmap 'call_[0-9]*_GetPixel' 'IntPtr __self, int x, int y, ColorValue\* __result')"
    "$(entry FromImage Graphics 'call_[0-9]*_FromImage' 'IntPtr image')"
    "$(entry FillRectangle Graphics 'call_[0-9]*_FillRectangle' 'IntPtr __self, IntPtr brush, int x, int y, int width, int height')"
    "$(entry DrawString Graphics 'call_[0-9]*_DrawString' 'IntPtr __self, StringArg\* s, IntPtr font, IntPtr brush, float x, float y')"
    "$(entry NewSolidBrush SolidBrush 'ctor_[0-9]*_SolidBrush' 'ColorValue\* color')"
    "$(entry Save Image 'call_[0-9]*_Save' 'IntPtr __self, StringArg\* filename')"
    "$(entry NewFont Font 'ctor_[0-9]*_Font' 'StringArg\* family_name, float em_size')"
)
NETCORE_WRAPPER_NETCORE_DIR_orvane=$($WINE winepath -w "$layout/runtime" 2>/dev/null) \
NETCORE_WRAPPER_ASSEMBLY_DIR_orvane=$($WINE winepath -w "$layout/assemblies" 2>/dev/null) \
    $WINE "$out/native/runtime_check.exe" "${entries[@]}" || status=1

step "Wine's own GDI+, for comparison: a plain .NET program over System.Drawing (informational)"
env -u COREHOST_TRACE dotnet publish tools/windows/gdiplus-probe/GdiplusProbe.csproj -c Release \
    --artifacts-path "$out/artifacts" -o "$out/gdiplus-probe" --nologo -v quiet
$WINE "$out/gdiplus-probe/GdiplusProbe.exe" || true

exit $status
