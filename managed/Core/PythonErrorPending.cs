// The exception that unwinds an entry whose Python exception is already set.
using System;

namespace Orvane.WrpGen.Interop
{
    /// <summary>
    /// A Python exception is pending because an element reader refused an element: the entry must return
    /// and leave that exception for the caller, so it is never reported as a proxy error.
    /// </summary>
    public sealed class PythonErrorPending : Exception
    {
        public PythonErrorPending() : base("a Python exception is pending") { }
    }
}
