"""The orvane package: managed System.Drawing for Python (orvane.pyfigura) and its sister modules.

Importing the package points the .NET host at the runtime and assemblies that ship inside it, unless
the environment already names other places, and checks that layout before the extension is loaded,
so that a broken install raises ImportError instead of ending the process.
"""
import os
import sys

_VENDOR = "orvane"
_RUNTIME_VARIABLE = "NETCORE_WRAPPER_NETCORE_DIR_" + _VENDOR
_ASSEMBLY_VARIABLE = "NETCORE_WRAPPER_ASSEMBLY_DIR_" + _VENDOR
_LOADER_LIBRARY = "orvane.embed.coreclrwrap.dll" if sys.platform == "win32" else "orvane.embed.coreclrwrap.so"
_RUNTIME_LIBRARY = "coreclr.dll" if sys.platform == "win32" else "libcoreclr.so"
_INTEROP_ASSEMBLY = "WrpInterop.Orvane.PyFigura.dll"

_here = os.path.dirname(os.path.abspath(__file__))
_runtime_problem = None  # why an installed package could not reach a .NET runtime, if it could not
for _variable, _default in ((_RUNTIME_VARIABLE, "runtime"), (_ASSEMBLY_VARIABLE, "assemblies")):
    if not os.environ.get(_variable):
        os.environ[_variable] = os.path.join(_here, _default)
    else:
        # The runtime resolves assembly paths as given: a relative root would fail it at start.
        os.environ[_variable] = os.path.abspath(os.environ[_variable])


def _runtime_directories(root):
    """Versioned runtime directories under root ('netcoreX.Y'), newest first."""
    found = []
    try:
        names = os.listdir(root)
    except OSError:
        return found
    for name in names:
        rest = name[len("netcore"):] if name.startswith("netcore") else None
        if rest is None or rest.count(".") != 1:
            continue
        major, minor = rest.split(".")
        if major.isdigit() and minor.isdigit() and os.path.isdir(os.path.join(root, name)):
            found.append(((int(major), int(minor)), os.path.join(root, name)))
    return [path for _, path in sorted(found, reverse=True)]


def _layout_problems():
    """What is missing for the host to start, as a list of sentences (empty when all is there)."""
    if _runtime_problem:
        return [_runtime_problem]
    problems = []
    runtime_root = os.environ.get(_RUNTIME_VARIABLE, "")
    candidates = [d for d in _runtime_directories(runtime_root)
                  if os.path.isfile(os.path.join(d, _LOADER_LIBRARY))]
    if not candidates:
        problems.append(f"no 'netcoreX.Y' directory holding {_LOADER_LIBRARY} under "
                        f"{runtime_root!r} (set by {_RUNTIME_VARIABLE})")
    elif not os.path.isfile(os.path.join(candidates[0], _RUNTIME_LIBRARY)):
        problems.append(f"{_RUNTIME_LIBRARY} is missing or a broken link in {candidates[0]!r}")
    assembly_root = os.environ.get(_ASSEMBLY_VARIABLE, "")
    try:
        subdirs = [os.path.join(assembly_root, n) for n in os.listdir(assembly_root)]
    except OSError:
        subdirs = []
    if not any(os.path.isfile(os.path.join(d, _INTEROP_ASSEMBLY)) for d in subdirs):
        problems.append(f"no sub-directory of {assembly_root!r} (set by {_ASSEMBLY_VARIABLE}) "
                        f"holds {_INTEROP_ASSEMBLY}")
    return problems


class _LayoutCheck:
    """Refuses to load orvane.pyfigura when the runtime layout is incomplete.

    A meta path finder by protocol (find_spec); importlib.abc is not imported for it, as that
    alone costs more than the rest of the package's start-up.
    """

    def find_spec(self, fullname, path, target=None):
        if fullname != __name__ + ".pyfigura":
            return None
        problems = _layout_problems()
        if problems:
            raise ImportError("cannot load orvane.pyfigura: " + "; ".join(problems), name=fullname)
        return None


def _use_installed_runtime():
    """An installed package ships the loader library without the runtime: link it to the machine's.

    The loader expects libcoreclr.so beside it, so a directory of two links (kept in the user's cache,
    as site-packages may be read-only) joins the packaged loader to the installed runtime.
    """
    global _runtime_problem
    own = os.path.join(_here, "runtime")
    if os.environ[_RUNTIME_VARIABLE] != own:
        return  # the environment chose the runtime
    directories = _runtime_directories(own)
    if not directories or os.path.isfile(os.path.join(directories[0], _RUNTIME_LIBRARY)):
        return  # a build tree, or no loader at all (reported by the layout check)
    from orvane import _dotnet
    try:
        os.environ[_RUNTIME_VARIABLE] = _dotnet.linked_runtime(directories[0], _LOADER_LIBRARY, _RUNTIME_LIBRARY)
    except _dotnet.RuntimeMissing as missing:
        _runtime_problem = str(missing)


_use_installed_runtime()

if not any(isinstance(f, _LayoutCheck) for f in sys.meta_path):
    sys.meta_path.insert(0, _LayoutCheck())


def _collect_managed_too(phase, info):
    """gc.collect() also runs a full managed collection once orvane.pyfigura is loaded.

    Images that Python dropped without disposing then give their native pixel memory back at once,
    instead of when the managed collector next decides to run.
    """
    if phase != "stop" or info.get("generation") != 2:
        return
    module = sys.modules.get(__name__ + ".pyfigura")
    if module is not None:
        module._wrpgen._interop._collect_managed()


import gc as _gc  # noqa: E402  (already loaded by the interpreter; costs nothing)
import faulthandler as _faulthandler  # noqa: E402  (built in)

if _collect_managed_too not in _gc.callbacks:
    _gc.callbacks.append(_collect_managed_too)


def _keep_runtime_fault_handlers(switch, turns_on):
    """faulthandler.enable() after the runtime started would put its handler over the runtime's, and
    every managed null reference (a SIGSEGV the runtime turns into NullReferenceException) would end the
    process. After each enable or disable the runtime's handlers go back on top; faulthandler's then
    receive the faults that managed code did not raise, and still report them. An enable while enabled
    (or a disable while disabled) installs nothing, and would look like a handler that went away."""
    def switched(*args, **kwargs):
        module = sys.modules.get(__name__ + ".pyfigura")
        if module is None or _faulthandler.is_enabled() == turns_on:
            return switch(*args, **kwargs)
        interop = module._wrpgen._interop
        interop._yield_fault_handlers()
        try:
            return switch(*args, **kwargs)
        finally:
            interop._reassert_fault_handlers()

    switched.__wrapped__ = switch
    for attribute in ("__name__", "__qualname__", "__doc__", "__module__"):
        setattr(switched, attribute, getattr(switch, attribute))
    return switched


if not hasattr(_faulthandler.enable, "__wrapped__"):
    _faulthandler.enable = _keep_runtime_fault_handlers(_faulthandler.enable, True)
    _faulthandler.disable = _keep_runtime_fault_handlers(_faulthandler.disable, False)
