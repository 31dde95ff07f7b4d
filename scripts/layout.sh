#!/usr/bin/env bash
# Lays out the importable package tree build/python/orvane from the native and managed build outputs:
#   orvane/{__init__,pyio}.py, the extension modules, runtime/netcoreX.Y/ (loader library and a link to
#   the runtime's libcoreclr.so), assemblies/pyfigura/ (interop assembly and its dependencies) and the
#   typing stubs pyfigura/*.pyi with the py.typed marker.
set -euo pipefail
build=${1:-build}
PY=${PY:-/usr/bin/python3}
pkg=$build/python/orvane

# The newest installed Microsoft.NETCore.App of the major version the assembly targets.
major=$(sed -n 's#.*<TargetFramework>net\([0-9]*\)\.[0-9]*</TargetFramework>.*#\1#p' managed/WrpInterop.Orvane.PyFigura.csproj)
runtime_line=$(dotnet --list-runtimes | grep "^Microsoft.NETCore.App $major\." | sort -V -k2 | tail -n 1)
[ -n "$runtime_line" ] || { echo "no Microsoft.NETCore.App $major.x runtime found" >&2; exit 1; }
version=$(echo "$runtime_line" | awk '{print $2}')
root=$(echo "$runtime_line" | sed 's/.*\[\(.*\)\]/\1/')
framework_dir=$root/$version
minor=$(echo "$version" | cut -d. -f2)

rm -rf "$pkg"
mkdir -p "$pkg/runtime/netcore$major.$minor" "$pkg/assemblies"
cp python/orvane/*.py "$pkg/"
ext=$($PY -c 'import sysconfig; print(sysconfig.get_config_var("EXT_SUFFIX"))')
cp "$build/native/pyfigura$ext" "$build/native/pygc$ext" "$pkg/"
cp "$build/native/orvane.embed.coreclrwrap.so" "$pkg/runtime/netcore$major.$minor/"
ln -s "$framework_dir/libcoreclr.so" "$pkg/runtime/netcore$major.$minor/libcoreclr.so"
cp -r "$build/managed/pyfigura" "$pkg/assemblies/pyfigura"
cp -r "$build/gen/stubs/orvane/pyfigura" "$pkg/pyfigura"
touch "$pkg/py.typed"
echo "package tree: $pkg (runtime $version)"
