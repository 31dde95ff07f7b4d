// The native callbacks handed over at start-up: scalar builders, error hooks and the two callback tables.
using System;

namespace Orvane.WrpGen.Interop
{
    /// <summary>Function pointers into the extension module, set once per module entry.</summary>
    public static unsafe class NativeCallbacks
    {
        internal static delegate* unmanaged<IntPtr, IntPtr, void> RaiseProxyError;
        internal static delegate* unmanaged<IntPtr*, StringArg*, int> CatchAndClearError;
        internal static delegate* unmanaged<char*, int, IntPtr> BuildU16String;
        internal static delegate* unmanaged<char*, int, IntPtr> BuildPyString;
        internal static delegate* unmanaged<char*, int, IntPtr> BuildPyStringQuiet;
        internal static delegate* unmanaged<byte*, int, IntPtr> BuildPyBytes;

        /// <summary>Nine groups of function pointers (values in/out, buffers, references, ...).</summary>
        internal static IntPtr* StaticGroups;
        /// <summary>36 cells, each the address of a function pointer (element accessors).</summary>
        internal static IntPtr* GenericCells;

        internal static bool ServicesReady;

        internal const int GroupReferences = CallbackRows.GroupReferences;

        /// <summary>Drops a Python reference (group references, number 1).</summary>
        public static void DecRef(IntPtr obj)
        {
            if (obj == IntPtr.Zero || StaticGroups == null) return;
            var decref = (delegate* unmanaged<IntPtr, void>)((IntPtr*)StaticGroups[GroupReferences])[CallbackRows.References.Drop];
            decref(obj);
        }

        /// <summary>A new Python str from a managed string (null gives null), leaving an exception on failure.</summary>
        public static IntPtr PyString(string text)
        {
            if (text == null) return IntPtr.Zero;
            fixed (char* p = text) return BuildPyString(p, text.Length);
        }

        /// <summary>A new Python str, or a new reference to None for a null string.</summary>
        public static IntPtr PyStringOrNone(string text)
        {
            if (text != null) return PyString(text);
            var none = (delegate* unmanaged<IntPtr>)((IntPtr*)StaticGroups[GroupReferences])[CallbackRows.References.NewNone];
            return none();
        }

        /// <summary>Like PyString but never leaves a Python exception behind: for texts made while handling errors.</summary>
        internal static IntPtr PyStringQuiet(string text)
        {
            if (text == null || BuildPyStringQuiet == null) return IntPtr.Zero;
            fixed (char* p = text) return BuildPyStringQuiet(p, text.Length);
        }
    }
}
