// Per-thread mark of the entries that hand a stream to System.Drawing.
using System;
using System.Runtime.CompilerServices;

namespace Orvane.WrpGen.Interop
{
    /// <summary>
    /// Set around every generated entry with a Stream parameter. While it is set, a Python file that
    /// fails marks its stream faulted and leaves the Python exception pending, because System.Drawing
    /// may be calling the stream from libgdiplus, where a managed exception would end the process;
    /// the entry then leaves that exception to surface as itself instead of System.Drawing's own failure.
    /// </summary>
    public static class StreamCalls
    {
        [ThreadStatic] private static int t_depth;
        [ThreadStatic] private static bool t_faulted;

        public static bool Active => t_depth > 0;

        /// <summary>A file failed inside the current entry and its error is already set in Python.</summary>
        public static bool Faulted => t_faulted;

        public static void MarkFaulted() => t_faulted = true;

        [MethodImpl(MethodImplOptions.AggressiveInlining)]
        public static void Enter() => t_depth++;

        [MethodImpl(MethodImplOptions.AggressiveInlining)]
        public static void Leave()
        {
            if (--t_depth == 0) t_faulted = false;
        }
    }
}
