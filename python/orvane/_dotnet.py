"""Finds the installed .NET runtime and libgdiplus for an installed orvane package."""
import os
import zlib

_FRAMEWORK = os.path.join("shared", "Microsoft.NETCore.App")
_GDIPLUS_DIRECTORIES = ["/usr/lib", "/usr/lib64", "/usr/lib/x86_64-linux-gnu", "/usr/local/lib"]


class RuntimeMissing(Exception):
    """A sentence naming what to install."""


def dotnet_roots():
    """Where .NET installs live: DOTNET_ROOT, the usual places, and the `dotnet` found on PATH."""
    roots = [os.environ.get("DOTNET_ROOT", ""), "/usr/share/dotnet", "/usr/lib/dotnet"]
    for directory in os.environ.get("PATH", "").split(os.pathsep):
        dotnet = os.path.join(directory, "dotnet")
        if directory and os.path.isfile(dotnet):
            roots.append(os.path.dirname(os.path.realpath(dotnet)))
    return [r for r in dict.fromkeys(roots) if r]


def _version_key(name):
    parts = name.split("-")[0].split(".")
    return tuple(int(p) if p.isdigit() else -1 for p in parts)


def find_runtime_library(major, runtime_library):
    """Path of runtime_library in the newest installed Microsoft.NETCore.App of this major version."""
    found = []
    for root in dotnet_roots():
        framework = os.path.join(root, _FRAMEWORK)
        try:
            versions = os.listdir(framework)
        except OSError:
            continue
        for version in versions:
            library = os.path.join(framework, version, runtime_library)
            if version.split(".")[0] == str(major) and os.path.isfile(library):
                found.append((_version_key(version), library))
    if not found:
        raise RuntimeMissing(
            f"no .NET {major} runtime (Microsoft.NETCore.App {major}.x) under {', '.join(dotnet_roots())}: "
            f"install dotnet-runtime-{major}.0 (or the .NET {major} SDK), or set DOTNET_ROOT to its install")
    return max(found)[1]


def has_gdiplus():
    directories = os.environ.get("LD_LIBRARY_PATH", "").split(os.pathsep) + _GDIPLUS_DIRECTORIES
    return any(os.path.exists(os.path.join(d, name)) for d in directories if d
               for name in ("libgdiplus.so", "libgdiplus.so.0"))


def _place_link(target, link):
    if os.path.islink(link) and os.readlink(link) == target:
        return
    temporary = f"{link}.{os.getpid()}"
    os.symlink(target, temporary)
    os.replace(temporary, link)


def _cache_root():
    base = os.environ.get("XDG_CACHE_HOME") or os.path.join(os.path.expanduser("~"), ".cache")
    return os.path.join(base, "orvane")


def linked_runtime(packaged_directory, loader_library, runtime_library):
    """A runtime root whose netcoreX.Y holds links to the packaged loader and the installed runtime."""
    name = os.path.basename(packaged_directory)  # netcoreX.Y
    major = name[len("netcore"):].split(".")[0]
    runtime = find_runtime_library(major, runtime_library)
    if not has_gdiplus():
        raise RuntimeMissing("libgdiplus is not installed (System.Drawing draws through it): "
                             "install libgdiplus (apt-get install libgdiplus)")
    key = f"{zlib.crc32(f'{packaged_directory}|{runtime}'.encode()):08x}"
    for base in (_cache_root(), os.path.join("/tmp", f"orvane-{os.getuid()}")):
        root = os.path.join(base, f"runtime-{key}")
        directory = os.path.join(root, name)
        try:
            os.makedirs(directory, exist_ok=True)
            _place_link(os.path.join(packaged_directory, loader_library), os.path.join(directory, loader_library))
            _place_link(runtime, os.path.join(directory, runtime_library))
            return root
        except OSError:
            continue
    raise RuntimeMissing(f"no writable place for the runtime links of {packaged_directory}")
